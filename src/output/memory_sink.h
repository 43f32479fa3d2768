// memory_sink - a document's bytes in memory, for the host to fetch.
#ifndef JTPDF_OUTPUT_MEMORY_SINK_H
#define JTPDF_OUTPUT_MEMORY_SINK_H

#include "objects/byte_buffer.h"
#include "output/sink.h"

// What is written to the closed sink is lost: the bytes of a finalised document stay as they are.
class MemorySink final : public Sink {
 public:
  void Open() override {}
  void Write(std::string_view text, std::string_view data) override;
  void Close() override;
  bool IsGood() const override { return good; }
  bool IsUnfinished() const override { return false; }
  void Abandon(std::string_view) noexcept override {}
  std::string_view Data() const override { return closed ? data : std::string_view(); }

 private:
  ByteBuffer bytes;
  std::string_view data;  // of bytes, without the NUL behind
  bool good = true;
  bool closed = false;
};

#endif  // JTPDF_OUTPUT_MEMORY_SINK_H
