// pdf_document.h - the PDF being written: images by number, pages.
#ifndef JTPDF_TOOL_PDF_DOCUMENT_H
#define JTPDF_TOOL_PDF_DOCUMENT_H

#include <jtpdf/objects.h>

#include <cstdint>
#include <memory>
#include <string>

#include "image.h"
#include "image_writer.h"
#include "layout.h"
#include "output.h"
#include "viewer.h"

namespace pictures::tool {

struct Metadata {
  std::wstring title, author, subject, keywords, creator, creationDate, modDate;
};

class PdfDocument {
 public:
  // Begins the document; failures here and below are OutputErrors.
  PdfDocument(Output& output, const Metadata& metadata, int compression);

  // Writes the image, with its soft mask and its colour space, and returns its number.
  int WriteImage(const EncodedImage& image, TPdfImageRole role, const std::wstring& name);
  // Draws the image on the page at hand, and adds that page.
  void Draw(int image, const PageLayout& layout);
  void AddPage(const PageLayout& layout);
  // Adds a bookmark that leads to the page at hand.
  void AddBookmark(int level, std::string_view title);
  void SetViewer(const Viewer& viewer);
  // Compresses what pages draw from now on, which pays where that is more than an image.
  void CompressContents();
  void Finish();

 private:
  struct Destroy {
    void operator()(JTPDFDocument* document) const { DestroyPdfDoc(document); }
  };

  // Throws what a result code other than 0 stands for.
  void Check(int32_t code);
  static int32_t EncodeContent(void* document, const char* data, size_t size, const char** encoded,
                               size_t* encodedSize);

  // What the library writes to, and how much went there since maps were forgotten.
  struct Sink {
    Output& output;
    size_t remembered;
  };
  static int32_t WriteToOutput(void* sink, const char* data, size_t size);

  Sink sink_;
  int compression_;
  int pages_ = 0;
  Viewer viewer_;
  Buffer content_;  // of a page, compressed
  std::unique_ptr<JTPDFDocument, Destroy> document_;
  ImageWriter images_;
};

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_PDF_DOCUMENT_H
