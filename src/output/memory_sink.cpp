// Bytes in memory.

#include "output/memory_sink.h"

void MemorySink::Write(std::string_view text, std::string_view data) {
  if (!good) ThrowSinkFailure();
  if (closed) return;
  good = false;  // unless there is memory for both
  bytes.Reserve(text.size() + data.size());
  bytes.Append(text);
  bytes.Append(data);
  good = true;
}

void MemorySink::Close() {
  if (closed) return;
  constexpr char kNul = '\0';
  bytes.Append({&kNul, 1});
  bytes.Trim();
  data = std::string_view(bytes).substr(0, bytes.Size() - 1);
  closed = true;
}
