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
  Diagnostics(const Diagnostics&) = delete;
  Diagnostics& operator=(const Diagnostics&) = delete;
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
std::string MessageOfFailure(const std::ios_base::failure& failure);

template <typename Body>
std::string Refusal(const Body& body) {
  try {
    body();
  } catch (const std::ios_base::failure& failure) {
    return MessageOfFailure(failure);
  }
  return "(no failure)";
}

// The line that a refused call prints when errno is 0.
std::string RefusalLine(const std::string& function, const std::string& message);

// The line that a call failing with errno code prints.
std::string ErrorLine(const std::string& function, int code);

#endif  // JTPDF_TESTS_SUPPORT_DIAGNOSTICS_H
