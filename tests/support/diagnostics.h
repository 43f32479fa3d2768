// diagnostics - what the library prints on the standard error stream.
#ifndef JTPDF_TESTS_SUPPORT_DIAGNOSTICS_H
#define JTPDF_TESTS_SUPPORT_DIAGNOSTICS_H

#include <iostream>
#include <sstream>
#include <string>

// Keeps what goes to std::cerr while it lives, in diagnostic mode or not.
class Diagnostics {
 public:
  explicit Diagnostics(bool mode = true);
  Diagnostics(Diagnostics const&) = delete;
  Diagnostics& operator=(Diagnostics const&) = delete;
  ~Diagnostics();

  // What was printed and flushed since the last call; text that was not flushed is missing.
  std::string Take();

 private:
  class Buffer : public std::stringbuf {
   public:
    std::string flushed;

   protected:
    int sync() override {
      flushed += str();
      str(std::string());
      return 0;
    }
  };

  Buffer buffer;
  std::streambuf* saved;
};

// The message of the stream failure that body raises with the code std::io_errc::stream, without
// the standard library's own words behind it; says so if there is none.
std::string MessageOfFailure(std::ios_base::failure const& failure);

template <typename Body>
std::string Refusal(Body const& body) {
  try {
    body();
  } catch (std::ios_base::failure const& failure) {
    return MessageOfFailure(failure);
  }
  return "(no failure)";
}

// The line that a refused call prints when errno is 0.
std::string RefusalLine(std::string const& function, std::string const& message);

// The line that a call failing with errno code prints.
std::string ErrorLine(std::string const& function, int code);

#endif  // JTPDF_TESTS_SUPPORT_DIAGNOSTICS_H
