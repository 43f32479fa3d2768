// file_sink - a document's bytes in a file, or in whatever a file name stands for: a pipe, a
// device.
#ifndef JTPDF_OUTPUT_FILE_SINK_H
#define JTPDF_OUTPUT_FILE_SINK_H

#include <string>

#include "objects/platform_text.h"
#include "objects/text_buffer.h"
#include "output/sink.h"

class FileSink final : public Sink {
 public:
  // Opens nothing yet.
  explicit FileSink(const wchar_t* fileName) : fileName(fileName) {}

  void Open() override;
  void Write(std::string_view text, std::string_view data) override;
  void Close() override;
  bool IsGood() const override { return good && file.IsOpen(); }
  bool IsUnfinished() const override { return file.IsOpen(); }
  void Abandon(std::string_view text) noexcept override;

 private:
  // Small objects wait for more. When a full disk shows depends on this size and on the least size
  // of what goes to the file at once; both are those of the standard library's file streams (kept).
  static constexpr std::size_t kBufferSize = 8191;
  static constexpr std::size_t kWrittenAtOnce = 1024;

  std::wstring fileName;
  PlatformFile file;
  bool good = true;
  TextBuffer<kBufferSize> waiting;
};

#endif  // JTPDF_OUTPUT_FILE_SINK_H
