// pdf_document.h - the PDF being written: images by number, pages of one image each.
#ifndef JTPDF_TOOL_PDF_DOCUMENT_H
#define JTPDF_TOOL_PDF_DOCUMENT_H

#include <jtpdf/jtpdf.h>

#include <cstdint>
#include <memory>
#include <string>

#include "image.h"
#include "image_writer.h"
#include "layout.h"
#include "output.h"

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
  void AddPage(int image, const PageLayout& layout);
  void Finish();

 private:
  struct Destroy {
    void operator()(JTPDFDocument* document) const { DestroyPdfDoc(document); }
  };

  // Throws what a result code other than 0 stands for.
  void Check(int32_t code);

  Output& output_;
  std::unique_ptr<JTPDFDocument, Destroy> document_;
  ImageWriter images_;
};

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_PDF_DOCUMENT_H
