// The page tree of a whole document, made through the exports.

#include <string>

#include <jtpdf/jtpdf.h>

#include "generators.h"
#include "models.h"

namespace {

constexpr JTPDFRect kSheet = {0, 0, 20, 10, 0};
constexpr int kForm = 2;  // behind the graphics state

std::string Document(int pages, int queuedBefore) {
  JTPDFDocument* const doc = CreateMemoryPdfDoc(1.0);
  RC_ASSERT(InitPdfDoc(doc) == 0);
  int form = 0;
  RC_ASSERT(WritePdfCanvas(doc, &form) == 0);
  RC_ASSERT(form == kForm);
  for (int i = 0; i < pages; ++i) {
    // Objects between the pages move every number behind them.
    if (i == queuedBefore) RC_ASSERT(WritePdfCanvas(doc, &form) == 0);
    RC_ASSERT(WritePdfPage(doc, kForm, kSheet, kSheet) == 0);
  }
  RC_ASSERT(FinalizePdfDoc(doc, nullptr) == 0);
  std::string bytes(GetPdfData(doc), GetPdfDataSize(doc));
  DestroyPdfDoc(doc);
  return bytes;
}

std::string Page(const model::TreeObject& page, int contents) {
  return std::to_string(page.number) + " 0 obj\r\n<<\r\n/Contents " + model::Reference(contents) +
         "\r\n/CropBox [0.0000 0.0000 20.0000 10.0000]\r\n"
         "/MediaBox [0.0000 0.0000 20.0000 10.0000]\r\n/Parent " +
         model::Reference(page.parent) +
         "\r\n/Resources\r\n<<\r\n/ProcSet [/PDF /ImageB /ImageC]\r\n/XObject\r\n<<\r\n/Fm2 2 0 R"
         "\r\n>>\r\n>>\r\n/Type /Page\r\n/Group\r\n<<\r\n"
         "/CS /DeviceRGB /I false /K false /S /Transparency\r\n>>\r\n>>\r\nendobj\r\n";
}

std::string Node(const model::TreeObject& node) {
  std::string kids = "[";
  for (const int kid : node.kids) kids += model::Reference(kid) + " ";
  kids.back() = ']';
  std::string text = std::to_string(node.number) + " 0 obj\r\n<<\r\n/Count " +
                     std::to_string(node.count) + "\r\n/Kids " + kids + "\r\n";
  if (node.parent != 0) text += "/Parent " + model::Reference(node.parent) + "\r\n";
  return text + "/Type /Pages\r\n>>\r\nendobj\r\n";
}

RC_GTEST_PROP(PageTreeProperties, AnyNumberOfPagesStandsInTheModelsTree, ()) {
  const int pages = *rc::gen::oneOf(
      rc::gen::inRange(0, 130), rc::gen::inRange(0, 1300),
      rc::gen::element(0, 1, 9, 10, 11, 90, 91, 99, 100, 101, 110, 191, 990, 995, 1000, 1001));
  const int queuedBefore = *rc::gen::inRange(-1, 20);
  const bool extra = queuedBefore >= 0 && queuedBefore < pages;
  const int firstPage = 3 + pages + (extra ? 1 : 0);

  std::string expected;
  int contents = 3;
  for (const model::TreeObject& object : model::PageTree(pages, firstPage)) {
    if (!object.kids.empty() || object.number - firstPage >= pages) {
      expected += Node(object);
      continue;
    }
    if (extra && object.number - firstPage == queuedBefore) ++contents;
    expected += Page(object, contents++);
  }

  const std::string bytes = Document(pages, queuedBefore);
  const std::string head = "\r\n" + std::to_string(firstPage) + " 0 obj\r\n";
  const std::size_t start = bytes.find(head);
  RC_ASSERT(start != std::string::npos);
  RC_ASSERT(bytes.substr(start + 2, expected.size()) == expected);
  const int root = firstPage + static_cast<int>(model::PageTree(pages, firstPage).size()) - 1;
  const std::string catalog = std::to_string(root + 1) + " 0 obj\r\n<<\r\n/Pages " +
                              model::Reference(root) + "\r\n/Type /Catalog\r\n";
  RC_ASSERT(bytes.substr(start + 2 + expected.size(), catalog.size()) == catalog);
}

}  // namespace
