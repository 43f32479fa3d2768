// pages - pages that paint one form each, and the tree above them (ISO 32000-1, 7.7.3).
#ifndef JTPDF_DOCUMENT_PAGES_H
#define JTPDF_DOCUMENT_PAGES_H

#include "graphics/box.h"
#include "output/object_writer.h"

// A page that waits for the end of the document, where its parent gets its number.
struct QueuedPage {
  int form;
  int contents;  // the content stream that paints the form
  JTPDFBox cropBox;
  JTPDFBox mediaBox;  // both in points
};

// Writes the content stream that paints form, "q 1 0 0 1 0 0 cm /Fm12 Do Q"; returns its number.
int WritePageContents(ObjectWriter& out, int form);

void WritePage(ObjectWriter& out, QueuedPage const& page, int parent);

#endif  // JTPDF_DOCUMENT_PAGES_H
