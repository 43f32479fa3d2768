// sink - where a document's bytes go: a file, memory, or a function of the host's.
#ifndef JTPDF_OUTPUT_SINK_H
#define JTPDF_OUTPUT_SINK_H

#include <cstddef>
#include <string_view>

// Bytes come in order, once, and are never asked for again. Failures are std::ios_base::failure
// with the reason in errno; behind the first one the sink is not good any more.
class Sink {
 public:
  Sink() = default;
  Sink(const Sink&) = delete;
  Sink& operator=(const Sink&) = delete;
  virtual ~Sink() = default;

  // Gets ready for the first byte. After a failure it may be called again.
  virtual void Open() = 0;

  // Takes text and, behind it, data. The sink may keep a copy of them for a while, or hand data on
  // as it is.
  virtual void Write(std::string_view text, std::string_view data) = 0;

  // Takes the last bytes that were kept to where they belong. The sink is closed, whatever happens.
  virtual void Close() = 0;

  // Whether it is open and has not failed, so that Write is worth the try.
  virtual bool IsGood() const = 0;

  // Whether what it was opened for stays incomplete without Close.
  virtual bool IsUnfinished() const = 0;
  // Closes such a sink behind a last text, as far as that goes.
  virtual void Abandon(std::string_view text) noexcept = 0;

  // The bytes of a closed sink that keeps them, with a NUL behind them; else no bytes, and null.
  virtual std::string_view Data() const { return {}; }
};

// Throws the failure of a sink. errno stays.
[[noreturn]] void ThrowSinkFailure();

#endif  // JTPDF_OUTPUT_SINK_H
