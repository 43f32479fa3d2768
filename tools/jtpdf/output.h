// output.h - where the PDF goes: a file that appears whole or not at all, or standard output.
#ifndef JTPDF_TOOL_OUTPUT_H
#define JTPDF_TOOL_OUTPUT_H

#include <memory>
#include <stdexcept>
#include <string>

namespace tool {

// Why the output cannot be written; the text is ready to print behind the output's name.
struct OutputError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// "No space left on device" and the like, with what to do where there is something to do.
std::string WriteProblem(int code);

class Output {
 public:
  virtual ~Output() = default;
  // The path for CreateFilePdfDoc.
  virtual const std::wstring& Path() const = 0;
  // Makes the output final once the PDF is complete. Without it nothing is left behind. Throws
  // OutputError.
  virtual void Commit() = 0;
  // Why writing to Path() failed, where this knows better than the library's code.
  virtual int Problem() { return 0; }

 protected:
  Output() = default;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
};

// Writes beside `file` under a temporary name that Commit renames; what is no regular file (a
// device, a FIFO) is written to directly. Throws OutputError.
std::unique_ptr<Output> OpenFileOutput(const std::string& file);

// Writes to standard output, whatever it is: a pipe, a file in the middle, a socket.
std::unique_ptr<Output> OpenStandardOutput();

// Makes SIGINT, SIGTERM and SIGHUP remove the temporary file on their way out, and a closed pipe an
// error like any other.
void InstallSignalHandlers();

}  // namespace tool

#endif  // JTPDF_TOOL_OUTPUT_H
