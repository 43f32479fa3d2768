// The end of the file: the information dictionary, the cross-reference table and the trailer.
//
//     xref
//     0 5
//     0000000000 65535 f
//     0000000017 00000 n
//     ...
//     trailer
//     <<
//     /Size 5
//     /Root 3 0 R
//     /Info 4 0 R
//     >>
//     startxref
//     431
//     %%EOF

#include "document/document.h"
#include "objects/text_string.h"
#include "objects/value_format.h"

void JTPDFDocument::SetInfoItem(char const* key, wchar_t const* value) {
  std::string literal = PsString(TextOrEmpty(value));
  infoDict[JTPDFDict::ValidKey(key)] = std::move(literal);
}

JTPDFDict JTPDFDocument::MakeInfoDict() {
  JTPDFDict info = infoDict;
  // The document's own texts win over the caller's items (kept).
  if (!author.empty()) info["/Author"] = PsString(author);
  if (!creator.empty()) info["/Creator"] = PsString(creator);
  info["/Producer"] = PsString(producer);
  info["/MGmk"] = PsString(mgmk ? L"true" : L"false");
  return info;
}

void JTPDFDocument::FinalizeTrailer(int infoObject, int rootObject) {
  const long long start = std::streamoff(WriteLn("xref"));
  const long long size = NextObject();
  TextBuffer<512> text;
  text << "0 " << size;
  WriteLn(text);
  // Each entry is 20 bytes with its line end (ISO 32000-1, 7.5.4). A position has ten digits, and
  // more only where the file has them.
  for (std::size_t i = 0; i < xref.size(); ++i) {
    text.Clear();
    text.PaddedInteger(std::streamoff(xref[i]), 10) << (i == 0 ? " 65535 f" : " 00000 n");
    WriteLn(text);
  }
  text.Clear();
  text << "trailer\r\n<<\r\n/Size " << size << "\r\n/Root " << rootObject << " 0 R";
  if (infoObject != 0) text << "\r\n/Info " << infoObject << " 0 R";
  text << "\r\n>>\r\nstartxref\r\n" << start << "\r\n%%EOF";
  WriteLn(text);
}
