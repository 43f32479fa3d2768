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
  TextBuffer<128> head;
  head << "/Length " << static_cast<long long>(size) << "\r\n>>\r\nstream";
  WriteLn(head);
}

void JTPDFDocument::EndObject() {
  WriteLn("endobj");
  if (outputKind == kOutputFile) FlushLines();
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
  WriteLn(
      "<<\r\n"
      "/AIS false\r\n"
      "/BM /Normal\r\n"
      "/ca 1.0\r\n"
      "/CA 1.0\r\n"
      "/OP false\r\n"
      "/op false\r\n"
      "/OPM 1\r\n"
      "/SA true\r\n"
      "/SMask /None\r\n"
      "/Type /ExtGState\r\n"
      ">>");
  EndObject();
}
