// object_writer - lines, numbered objects and streams, and where each object begins.
//
//     7 0 obj            BeginObject
//     <<
//     /Type /XObject
//     /Length 7          BeginStream
//     >>
//     stream
//     /GS0 gs            WriteRaw, or from BeginStream on WriteStream
//     endstream
//     endobj             EndObject
//
// It knows a sink, and nothing of what the objects are for.
#ifndef JTPDF_OUTPUT_OBJECT_WRITER_H
#define JTPDF_OUTPUT_OBJECT_WRITER_H

#include <cstddef>
#include <ios>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "objects/text_buffer.h"
#include "output/sink.h"

// Throws std::ios_base::failure with message, for a call that the state of the document forbids.
[[noreturn]] void Refuse(const char* message);
// The same for a host's argument that cannot be written, with EINVAL.
[[noreturn]] void RefuseArgument(const char* message);

// Every member that writes is refused before the sink is open and fails behind a failure of it.
// Nothing is rolled back then. Memory that runs out never leaves half an object in the sink:
// whatever an object needs is allocated before it begins.
class ObjectWriter {
 public:
  explicit ObjectWriter(std::unique_ptr<Sink> sink);
  ObjectWriter(const ObjectWriter&) = delete;
  ObjectWriter& operator=(const ObjectWriter&) = delete;

  // Writes line and "\r\n" and returns the position at which the line begins, -1 on a failed sink.
  // An empty line writes nothing at all. Lines reach the sink together at the end of their object.
  std::streampos WriteLn(std::string_view line);

  // Appends the position of an object that begins, for which there is room; returns its index, the
  // object's number.
  int AddToXRef(std::streampos position);

  // Write an object: a dictionary of the body text dict, and the stream behind it. With
  // noStreamIfEmpty an empty stream is left out, else it is written with length 0.
  int WriteDict(std::string_view dict);
  int WriteDict(std::string_view dict, std::string_view stream, bool noStreamIfEmpty);

  // Gives out the number of an object that is written later.
  int ReserveObject();
  bool IsReserved(int object) const;
  bool HasReserved() const { return reserved != 0; }

  // The parts of an object that WriteDict does not fit. BeginObject writes the line "N 0 obj" of
  // the next object; what it needs to begin is there once RequireWritable has returned.
  void RequireWritable(int objects = 1);
  int NextObject() const { return nextObject; }
  int BeginObject();
  // The same for an object whose number was given out before.
  void BeginReserved(int object);
  // Room for a text of at most kMostComposed bytes, to be added at once.
  TextWriter& Compose();
  // Adds text as it is.
  void Append(std::string_view text);
  // Adds the lines from a stream's length to its data.
  void BeginStream(std::size_t size);
  // Adds size bytes of data (may be null for 0) as they are, without a copy where they are many.
  void WriteRaw(const char* data, std::size_t size);
  // Adds the lines from the length of a stream of text to its end; the line end behind the text is
  // no part of it.
  void WriteStream(std::string_view text);
  // Adds the line "endobj" and hands the object to the sink.
  void EndObject();

  // Where the objects begin, by their number; entry 0 is the header's.
  const std::vector<std::streamoff>& Positions() const { return positions; }

  // The bytes that a closed sink keeps; null where there are none.
  std::string_view Data() const { return sink->Data(); }

  static constexpr std::size_t kMostComposed = 2048;

 protected:
  ~ObjectWriter() = default;

  void OpenSink();
  // Hands what is left to the sink and closes it. What is written afterwards, where that does not
  // fail, begins at position 0 again.
  void CloseSink();
  bool IsSinkOpened() const { return opened; }
  bool IsSinkGood() const { return sink->IsGood(); }
  bool IsSinkUnfinished() const { return sink->IsUnfinished(); }
  void AbandonSink() noexcept;

 private:
  // One call of the sink for each line would add a third to the instructions of a small document.
  using LineBuffer = TextBuffer<32768>;

  void RequireOpened() const;
  // Hands the lines, and data behind them, to the sink.
  void FlushLines(std::string_view data = {});

  const std::unique_ptr<Sink> sink;
  bool opened = false;
  int nextObject = 0;
  int reserved = 0;  // how many numbers wait for their objects
  std::vector<std::streamoff> positions;
  std::unique_ptr<LineBuffer> lines;  // none before the sink is open, and once it is closed
  // Bytes handed to the sink. Counted, because a sink that cannot seek does not know its position.
  std::streamoff written = 0;
};

#endif  // JTPDF_OUTPUT_OBJECT_WRITER_H
