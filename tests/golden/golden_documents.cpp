// The table of documents, and their writing to memory and to files.

#include "golden_documents.h"

#include <cwchar>
#include <memory>
#include <stdexcept>

#include "drawings.h"
#include "host.h"

namespace golden {
namespace {

struct Destroy {
  void operator()(JTPDFDocument* doc) const { DestroyPdfDoc(doc); }
};
using Handle = std::unique_ptr<JTPDFDocument, Destroy>;

template <int kCount>
void Pages(Host& host) {
  NumberedPages(host, kCount);
}

void Write(JTPDFDocument* doc, const Document& document, Facts* facts) {
  Facts unused;
  Host host(doc, document.unit, facts != nullptr ? *facts : unused);
  Host::Check(InitPdfDoc(doc), "InitPdfDoc");
  document.draw(host);
  if (document.finished) Host::Check(FinalizePdfDoc(doc, document.closing), "FinalizePdfDoc");
}

Handle OpenFile(const Document& document, const std::string& path) {
  std::wstring wide;
  for (const char c : path) {
    if (static_cast<unsigned char>(c) > 0x7F) {
      throw std::runtime_error("the golden documents are written to ASCII paths only: " + path);
    }
    wide += static_cast<wchar_t>(c);
  }
  return Handle(CreateFilePdfDoc(document.unit, wide.c_str(), document.creator, document.author));
}

}  // namespace

const std::vector<Document>& Documents() {
  static const std::vector<Document> documents = {
      {.name = "empty", .draw = NoPage},
      {.name = "one_page", .draw = OnePage},
      {.name = "pages_10", .draw = Pages<10>},
      {.name = "pages_11", .draw = Pages<11>},
      {.name = "pages_101", .draw = Pages<101>},
      {.name = "pages_191", .draw = Pages<191>},
      {.name = "images", .draw = Images},
      {.name = "images_unknown", .draw = UnknownEnumerations},
      {.name = "jpeg2000", .draw = Jpeg2000},
      {.name = "jpeg2000_alpha", .draw = Jpeg2000WithAlpha},
      {.name = "rectangles", .draw = Rectangles},
      {.name = "circles", .draw = Circles},
      {.name = "numbers", .draw = Numbers},
      {.name = "canvas", .draw = Canvas, .unit = PDFCoordinateUnitCentimeter},
      {.name = "texts", .draw = Texts, .creator = L"Cre(at)or \u20AC", .author = L"\u00C5sa"},
      {.name = "dictionaries", .draw = Dictionaries},
      {.name = "dictionary_unclosed",
       .draw = UnclosedDictionary,
       .damage = "\"<<\" without \">>\""},
      {.name = "pixels", .draw = Pixels},
      {.name = "open_objects", .draw = OpenObjects, .open = true},
      {.name = "bookmarks", .draw = Bookmarks, .open = true},
      {.name = "everything",
       .draw = Everything,
       .unit = PDFCoordinateUnitMillimeter,
       .creator = L"golden",
       .author = L"the JTPDF authors"},
      {.name = "closing_text",
       .draw = OnePage,
       .closing = "% closing text \x01\xFF (kept as it is)"},
      {.name = "closing_text_empty", .draw = NoPage, .closing = ""},
      {.name = "unfinished",
       .draw = OnePage,
       .finished = false,
       .damage = "the last object is the information dictionary"},
  };
  return documents;
}

const Document& FindDocument(const std::string& name) {
  for (const Document& document : Documents()) {
    if (name == document.name) return document;
  }
  throw std::runtime_error("no golden document is named " + name);
}

std::string WriteToMemory(const Document& document, Facts* facts) {
  const Handle doc(CreateMemoryPdfDoc(document.unit));
  // Only the file document takes these when it is created; the items are the same.
  if (document.creator != nullptr) SetPdfInfoItem(doc.get(), "Creator", document.creator);
  if (document.author != nullptr) SetPdfInfoItem(doc.get(), "Author", document.author);
  Write(doc.get(), document, facts);
  const char* data = GetPdfData(doc.get());
  return data == nullptr ? std::string() : std::string(data, GetPdfDataSize(doc.get()));
}

void WriteToFile(const Document& document, const std::string& path, Facts* facts) {
  const Handle doc = OpenFile(document, path);
  Write(doc.get(), document, facts);
}

void WriteGenerated(unsigned seed, const std::string& path) {
  const Handle doc = OpenFile({}, path);
  Facts unused;
  Host host(doc.get(), PDFCoordinateUnitPoint, unused);
  Host::Check(InitPdfDoc(doc.get()), "InitPdfDoc");
  Generated(host, seed);
  Host::Check(FinalizePdfDoc(doc.get(), nullptr), "FinalizePdfDoc");
}

}  // namespace golden
