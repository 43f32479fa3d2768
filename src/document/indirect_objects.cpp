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
#include "objects/value_format.h"

int JTPDFDocument::BeginObject() {
  return AddToXRef(WriteLn(IntToStr(NextObject(), 0) + " 0 obj"));
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
    WriteLn("/Length " + IntToStr(static_cast<long long>(stream.size()), 0));
    WriteLn(">>");
    WriteLn("stream");
    WriteLn(stream);  // its line end is not part of the stream's length
    WriteLn("endstream");
  }
  WriteLn("endobj");
  return number;
}

// The one graphics state, "/GS0" of every form (ISO 32000-1, 8.4.5).
void JTPDFDocument::InitializeGraphicsStateDict() {
  graphicsStateObject = BeginObject();
  // In this order, neither sorted nor grouped (kept).
  for (char const* line :
       {"<<", "/AIS false", "/BM /Normal", "/ca 1.0", "/CA 1.0", "/OP false", "/op false", "/OPM 1",
        "/SA true", "/SMask /None", "/Type /ExtGState", ">>", "endobj"}) {
    WriteLn(line);
  }
}
