// Bytes handed to a function of the host's.

#include "output/callback_sink.h"

#include <cerrno>

void CallbackSink::Open() {
  // All the memory that it takes: less than a piece waits, and less than a piece is added to it.
  waiting.Reserve(2 * kPieceSize);
  state = State::kOpen;
}

void CallbackSink::Write(std::string_view text, std::string_view data) {
  if (!IsGood()) ThrowSinkFailure();
  for (const std::string_view part : {text, data}) {
    if (part.size() < kPieceSize) {
      waiting.Append(part);
      if (waiting.Size() >= kPieceSize) HandOnWhatWaits();
    } else {
      HandOnWhatWaits();
      HandOn(part);
    }
  }
}

void CallbackSink::HandOn(std::string_view piece) {
  state = State::kFailed;  // even where the function throws
  const std::int32_t code = write(context, piece.data(), piece.size());
  if (code != 0) {
    errno = code;
    ThrowSinkFailure();
  }
  state = State::kOpen;
}

void CallbackSink::HandOnWhatWaits() {
  if (waiting.Size() != 0) HandOn(waiting);
  waiting.Clear();
}

void CallbackSink::Close() {
  if (state == State::kClosed) return;
  if (!IsGood()) ThrowSinkFailure();
  HandOnWhatWaits();
  waiting.Release();
  state = State::kClosed;
}
