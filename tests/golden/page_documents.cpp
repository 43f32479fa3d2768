// Documents that are about the page tree: as little on each page as there can be.

#include "drawings.h"

namespace golden {
namespace {

constexpr JTPDFRect kSheet = {0, 0, 100, 50, 0};

}  // namespace

void NoPage(Host&) {}

void OnePage(Host& host) {
  SetPdfCanvasBoundingBox(host.doc, kSheet);
  FillPdfRectangle(host.doc, {10, 10, 80, 30, 0}, kRed);
  host.Page(host.Form(), kSheet);
}

// Page i is i points wider than the first, so that their order shows in readers.
void NumberedPages(Host& host, int count) {
  SetPdfCanvasBoundingBox(host.doc, kSheet);
  const int form = host.Form();
  for (int i = 0; i < count; ++i) {
    host.Page(form, {0, 0, 100.0 + i, 50, 0});
  }
}

}  // namespace golden
