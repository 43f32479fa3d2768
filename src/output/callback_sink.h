// callback_sink - a document's bytes handed to a function of the host's.
#ifndef JTPDF_OUTPUT_CALLBACK_SINK_H
#define JTPDF_OUTPUT_CALLBACK_SINK_H

#include "jtpdf/types.h"
#include "objects/byte_buffer.h"
#include "output/sink.h"

// Gathers small texts into pieces of kPieceSize bytes and more. What is that large itself is handed
// on as it is and never read, behind a piece of what came before.
class CallbackSink final : public Sink {
 public:
  CallbackSink(JTPDFWriteFunction write, void* context) : write(write), context(context) {}

  void Open() override;
  void Write(std::string_view text, std::string_view data) override;
  void Close() override;
  bool IsGood() const override { return state == State::kOpen; }
  bool IsUnfinished() const override { return state == State::kOpen || state == State::kFailed; }
  // Calls nobody: a host that gives its document up does not wait for more of it.
  void Abandon(std::string_view) noexcept override {}

 private:
  static constexpr std::size_t kPieceSize = 32768;

  enum class State { kCreated, kOpen, kFailed, kClosed };

  void HandOn(std::string_view piece);
  void HandOnWhatWaits();

  const JTPDFWriteFunction write;
  void* const context;
  State state = State::kCreated;
  ByteBuffer waiting;
};

#endif  // JTPDF_OUTPUT_CALLBACK_SINK_H
