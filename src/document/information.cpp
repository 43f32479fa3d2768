// The information dictionary:
//
//     /Author (...)
//     /Creator (...)
//     /MGmk (...)
//     /Producer (...)

#include "document/information.h"

#include "objects/text_string.h"

namespace {

constexpr wchar_t cPdfProducer[] = L"JTPDF 2.1.6";

}  // namespace

DocumentInformation::DocumentInformation(const wchar_t* creator, const wchar_t* author)
    : creator(TextOrEmpty(creator)), author(TextOrEmpty(author)) {}

void DocumentInformation::SetItem(const char* key, const wchar_t* value) {
  std::string literal = PsString(TextOrEmpty(value));
  items[JTPDFDict::ValidKey(key)] = std::move(literal);
}

JTPDFDict DocumentInformation::MakeDict() const {
  JTPDFDict info = items;
  if (!author.empty()) info["/Author"] = PsString(author);
  if (!creator.empty()) info["/Creator"] = PsString(creator);
  info["/Producer"] = PsString(cPdfProducer);
  info["/MGmk"] = PsString(mark ? L"true" : L"false");
  return info;
}

int DocumentInformation::Write(ObjectWriter& out) const {
  if (!items.empty()) return out.WriteDict(MakeDict().AsString());
  std::string text;
  const auto add = [&](std::string_view key, const std::wstring& value) {
    if (!text.empty()) text += "\r\n";
    text.append(key).append(" ").append(PsString(value));
  };
  if (!author.empty()) add("/Author", author);
  if (!creator.empty()) add("/Creator", creator);
  add("/MGmk", mark ? L"true" : L"false");
  add("/Producer", cPdfProducer);
  return out.WriteDict(text);
}
