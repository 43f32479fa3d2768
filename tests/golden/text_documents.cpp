// Text strings and the dictionaries that they stand in.

#include <string>

#include "drawings.h"
#include "image_data.h"

namespace golden {
namespace {

constexpr JTPDFRect kSheet = {0, 0, 100, 50, 0};

Image Labelled(const wchar_t* name, std::vector<JTPDFDictionaryItem> items) {
  return {.data = GrayJpeg(),
          .compression = kPdfCompressionJPEG,
          .colorSpace = kPdfColorSpaceGray,
          .name = name,
          .items = std::move(items)};
}

}  // namespace

void Texts(Host& host) {
  std::wstring all;  // every byte value but NUL, as a character
  for (wchar_t c = 1; c < 256; ++c) all += c;
  SetPdfInfoItem(host.doc, "Title", all.c_str());
  SetPdfInfoItem(host.doc, "/Subject", L"A(b) a\\b \u010A \u20AC \u4E2D\u6587 \uFFFD");
  SetPdfInfoItem(host.doc, "Keywords", L"a\U0001F600");            // room for the first only
  SetPdfInfoItem(host.doc, "OnlyAstral", L"\U0001F600");           // room for nothing
  SetPdfInfoItem(host.doc, "Astral", L"\U0001F600aa\U0001F600b");  // room for "aa" behind the first
  SetPdfInfoItem(host.doc, "Empty", L"");
  SetPdfInfoItem(host.doc, "Null", nullptr);
  // What is no text, be wide text UTF-32 or UTF-16.
  const wchar_t surrogates[] = {L'a', 0xDE00, 0xD83D, 0};
  SetPdfInfoItem(host.doc, "Surrogates", surrogates);
  const wchar_t beyond[] = {L'a', static_cast<wchar_t>(sizeof(wchar_t) == 4 ? 0x110000 : 0xD800),
                            0};
  SetPdfInfoItem(host.doc, "Beyond", beyond);
  const std::wstring behind = std::wstring(L"a\U0001F600\U0001F600") + wchar_t(0xDC00);
  SetPdfInfoItem(host.doc, "Behind", behind.c_str());  // behind the room that is left
  SetPdfInfoItem(host.doc, "Highest", L"aa\U0010FFFF");
  SetPdfInfoItem(host.doc, "Producer", L"never written");
  SetPdfInfoItem(host.doc, "MGmk", L"never written");
  SetPdfInfoItem(host.doc, "Twice", L"first");
  SetPdfInfoItem(host.doc, "/Twice", L"second");
  SetPdfMgMk(host.doc, true);
  for (const wchar_t* name : {L"scan", L"", L"\u0428\u0438\u0444\u0440 (\u03B1\\\u03B2)"}) {
    host.Write(Labelled(name, {}));
  }
  SetPdfCanvasBoundingBox(host.doc, kSheet);
  host.Page(host.Form(), kSheet);
}

// Keys are paths. Entries under one parent share its opening, and what a path has in common with
// the one before is not opened again, even behind the point where the two differ.
void Dictionaries(Host& host) {
  const std::vector<std::vector<JTPDFDictionaryItem>> tables = {
      {},
      {{"Plain", L"1"}, {"/Solidus", L"2"}, {" /My Key\t", L"3"}, {"", L"4"}, {"\x80\xFF", L"5"}},
      {{"/R/A", L"1"}, {"/R/B", L"2"}, {"R/C", nullptr}},
      {{"/A/B/x", L"1"}, {"/A/C/y", L"2"}},
      {{"/A/k", L"1"}, {"/B/A/x", L"2"}},
      {{"/A/B/C/D", L"deep"}, {"/A/B/E", L"less"}, {"/A/F", L"least"}, {"/Z", L"none"}},
      {{"/Type", L"x"}, {"Subtype", L"x"}, {"/Filter", L"x"}, {"Intent", L"x"}, {"Width", L"x"}},
      {{"/Length", L"never"}, {"/Stream", L"never"}, {"/Stream/Inner", L"1"}},
      {{"/Decode", L"kept"}, {"/Mask", L"kept"}, {"/SMask", L"kept"}},
      {{"/Same", L"first"}, {" Same", L"second"}},
      {{"#20", L"1"}, {"~", L"2"}, {"!", L"3"}, {"a/b", L"4"}, {"/a//c", L"5"}, {"/a/", L"6"}},
  };
  for (const auto& items : tables) host.Write(Labelled(L"table", items));
  Image unknown = Labelled(L"no colour space of its own", {{"/ColorSpace", L"kept"}});
  unknown.colorSpace = static_cast<TPdfColorSpace>(9);
  host.Write(unknown);
  Image jpeg2000 = Labelled(L"", {{"/ColorSpace", L"kept"}, {"/Filter", L"lost"}});
  jpeg2000.data = RgbJp2();
  jpeg2000.compression = kPdfCompressionJPEG2000;
  host.Write(jpeg2000);

  SetPdfInfoItem(host.doc, "/Nested/One", L"1");
  SetPdfInfoItem(host.doc, "/Nested/Two", L"2");
  SetPdfInfoItem(host.doc, "/Apart/Nested/Three", L"3");
  SetPdfInfoItem(host.doc, "", L"dummy");
  SetPdfCanvasBoundingBox(host.doc, kSheet);
  host.Page(host.Form(), kSheet);
}

// Kept: a key that is never written moves the open path on all the same, so a dictionary that is
// open before it is not closed. No page: readers would stumble over the image.
void UnclosedDictionary(Host& host) {
  host.Write(Labelled(L"unclosed", {{"/L/Inner", L"1"}, {"/Length", L"never"}}));
}

}  // namespace golden
