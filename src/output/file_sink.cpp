// Bytes in a file.

#include "output/file_sink.h"

#include <algorithm>
#include <cerrno>

void FileSink::Open() {
  if (!file.Open(fileName.c_str())) ThrowSinkFailure();
}

void FileSink::Write(std::string_view text, std::string_view data) {
  if (!IsGood()) ThrowSinkFailure();
  if (std::max(text.size(), data.size()) < kWrittenAtOnce &&
      text.size() + data.size() <= waiting.Room()) {
    waiting << text << data;
    return;
  }
  good = file.Write({waiting, text, data});
  if (!good) ThrowSinkFailure();
  waiting.Clear();
}

void FileSink::Close() {
  if (!file.IsOpen()) return;
  good = good && file.Write({waiting});
  const int writeError = errno;
  const bool closed = file.Close();
  if (!good) errno = writeError;  // and not that of closing: "no space left" and not nothing
  good = good && closed;
  if (!good) ThrowSinkFailure();
}

void FileSink::Abandon(std::string_view text) noexcept {
  if (good) file.Write({waiting, text});
  file.Close();
}
