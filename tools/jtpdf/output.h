// output.h - where the PDF goes: a file that appears whole or not at all, or standard output.
#ifndef JTPDF_TOOL_OUTPUT_H
#define JTPDF_TOOL_OUTPUT_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

namespace pictures::tool {

// Why the output cannot be written; the text is ready to print behind the output's name.
struct OutputError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// "No space left on device" and the like, with what to do where there is something to do.
std::string WriteProblem(int code);

// A cross-reference table gives positions ten digits.
inline constexpr uint64_t kMostBytesOfPdf = 10'000'000'000;

class Output {
 public:
  virtual ~Output() = default;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  // Throws an OutputError where so many bytes more make a PDF that readers cannot find their way
  // in.
  void CheckRoom(uint64_t size) const;
  // Writes the next bytes, all of them; gives the system's code where that fails.
  int Write(const char* data, size_t size);
  // Makes the output final once the PDF is complete. Without it nothing is left behind. Throws
  // OutputError.
  virtual void Commit() = 0;

 protected:
  explicit Output(uint64_t most) : most_(most) {}
  // Throws an OutputError where the system says only now that it did not keep the bytes.
  void CheckKept() const;

  int descriptor_ = -1;

 private:
  uint64_t most_;
  uint64_t written_ = 0;
};

// Writes a file without a name beside `file`, or a hidden one where there is none without, which
// Commit puts in its place; what is no regular file (a device, a FIFO) is written to directly.
// Takes `most` bytes. Throws OutputError.
std::unique_ptr<Output> OpenFileOutput(const std::string& file, uint64_t most = kMostBytesOfPdf);

// Writes to standard output, whatever it is: a pipe, a file in the middle, a socket.
std::unique_ptr<Output> OpenStandardOutput();

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_OUTPUT_H
