// Lines, numbers, positions and streams.

#include "output/object_writer.h"

#include <cerrno>
#include <utility>

namespace {

constexpr std::streamoff kReserved = -2;

}  // namespace

void Refuse(const char* message) {
  throw std::ios_base::failure(message, std::io_errc::stream);
}

void RefuseArgument(const char* message) {
  errno = EINVAL;
  Refuse(message);
}

ObjectWriter::ObjectWriter(std::unique_ptr<Sink> sink) : sink(std::move(sink)) {}

void ObjectWriter::OpenSink() {
  lines = std::make_unique<LineBuffer>();
  positions.reserve(8);
  sink->Open();
  opened = true;
}

void ObjectWriter::CloseSink() {
  FlushLines();
  sink->Close();
  written = 0;
  lines.reset();
  positions = {};
}

void ObjectWriter::AbandonSink() noexcept {
  sink->Abandon(lines == nullptr ? std::string_view() : std::string_view(*lines));
}

void ObjectWriter::RequireOpened() const {
  if (!opened) Refuse("Cannot write to a non-initialized document");
}

void ObjectWriter::RequireWritable(int objects) {
  RequireOpened();
  if (!sink->IsGood()) ThrowSinkFailure();
  if (lines == nullptr) lines = std::make_unique<LineBuffer>();  // written to a closed memory sink
  const std::size_t needed = positions.size() + static_cast<std::size_t>(objects);
  if (needed > positions.capacity()) positions.reserve(2 * needed);
}

std::streampos ObjectWriter::WriteLn(std::string_view line) {
  RequireOpened();
  if (line.empty() && !sink->IsGood()) return std::streamoff(-1);
  RequireWritable(0);
  const std::streamoff position = written + static_cast<std::streamoff>(lines->Size());
  if (!line.empty()) {
    Append(line);
    Append(kLineEnd);
  }
  return position;
}

int ObjectWriter::AddToXRef(std::streampos position) {
  positions.push_back(position);
  return nextObject++;
}

TextWriter& ObjectWriter::Compose() {
  if (lines->Room() < kMostComposed) FlushLines();
  return *lines;
}

void ObjectWriter::Append(std::string_view text) {
  if (text.size() > lines->Room()) FlushLines();
  if (text.size() <= lines->Room()) {
    *lines << text;
  } else {
    FlushLines(text);
  }
}

int ObjectWriter::BeginObject() {
  RequireWritable();
  const std::streamoff position = written + static_cast<std::streamoff>(lines->Size());
  Compose() << nextObject << " 0 obj\r\n";
  return AddToXRef(position);
}

int ObjectWriter::ReserveObject() {
  RequireWritable();
  ++reserved;
  return AddToXRef(kReserved);
}

bool ObjectWriter::IsReserved(int object) const {
  return object >= 0 && static_cast<std::size_t>(object) < positions.size() &&
         positions[static_cast<std::size_t>(object)] == kReserved;
}

void ObjectWriter::BeginReserved(int object) {
  RequireWritable(0);
  positions[static_cast<std::size_t>(object)] =
      written + static_cast<std::streamoff>(lines->Size());
  --reserved;
  Compose() << object << " 0 obj\r\n";
}

void ObjectWriter::BeginStream(std::size_t size) {
  Compose() << "/Length " << static_cast<long long>(size) << "\r\n>>\r\nstream\r\n";
}

void ObjectWriter::WriteRaw(const char* data, std::size_t size) {
  FlushLines({data, size});
}

void ObjectWriter::WriteStream(std::string_view text) {
  BeginStream(text.size());
  if (!text.empty()) {
    Append(text);
    Compose() << kLineEnd;
  }
  Compose() << "endstream\r\n";
}

void ObjectWriter::EndObject() {
  Compose() << "endobj\r\n";
  FlushLines();
}

void ObjectWriter::FlushLines(std::string_view data) {
  const std::string_view text = *lines;
  if (text.empty() && data.empty()) return;
  sink->Write(text, data);
  written += static_cast<std::streamoff>(text.size() + data.size());
  lines->Clear();
}

int ObjectWriter::WriteDict(std::string_view dict) {
  return WriteDict(dict, {}, true);
}

int ObjectWriter::WriteDict(std::string_view dict, std::string_view stream, bool noStreamIfEmpty) {
  const int number = BeginObject();
  Compose() << "<<\r\n";
  if (!dict.empty()) {
    Append(dict);
    Compose() << kLineEnd;
  }
  if (stream.empty() && noStreamIfEmpty) {
    Compose() << ">>\r\n";
  } else {
    WriteStream(stream);
  }
  EndObject();
  return number;
}
