// Numbered objects, each written whole as it is called for:
//
//     7 0 obj
//     <<
//     /Type /XObject
//     /Length 7
//     >>
//     stream
//     /GS0 gs
//     endstream
//     endobj

#include "document/document.h"
#include "objects/text_buffer.h"

int JTPDFDocument::BeginObject() {
  MakeRoom(xref);
  TextBuffer<128> line;
  line << NextObject() << " 0 obj";
  return AddToXRef(WriteLn(line));
}

void JTPDFDocument::BeginStream(std::size_t size) {
  TextBuffer<128> line;
  line << "/Length " << static_cast<long long>(size);
  WriteLn(line);
  WriteLn(">>");
  WriteLn("stream");
}

void JTPDFDocument::EndObject() {
  WriteLn("endobj");
  FlushLines();
}

int JTPDFDocument::WriteDict(std::string const& dict) {
  return WriteDict(dict, std::string(), true);
}

int JTPDFDocument::WriteDict(std::string const& dict, std::string const& stream,
                             bool noStreamIfEmpty) {
  const int number = BeginObject();
  WriteLn("<<");
  WriteLn(dict);
  if (stream.empty() && noStreamIfEmpty) {
    WriteLn(">>");
  } else {
    BeginStream(stream.size());
    WriteLn(stream);  // its line end is not part of the stream's length
    WriteLn("endstream");
  }
  EndObject();
  return number;
}

int JTPDFDocument::WriteDict(std::string const& dict, JTPDFStringList const& stream) {
  const int number = BeginObject();
  WriteLn("<<");
  WriteLn(dict);
  BeginStream(stream.TextSize());
  for (std::string const& line : stream.Lines()) AppendLine(line);
  WriteLn("endstream");
  EndObject();
  return number;
}

// The one graphics state, "/GS0" of every form (ISO 32000-1, 8.4.5).
void JTPDFDocument::InitializeGraphicsStateDict() {
  graphicsStateObject = BeginObject();
  // In this order, neither sorted nor grouped (kept).
  for (const std::string_view line :
       {"<<", "/AIS false", "/BM /Normal", "/ca 1.0", "/CA 1.0", "/OP false", "/op false", "/OPM 1",
        "/SA true", "/SMask /None", "/Type /ExtGState", ">>"}) {
    WriteLn(line);
  }
  EndObject();
}
