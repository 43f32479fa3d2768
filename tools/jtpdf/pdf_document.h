// pdf_document.h - the PDF being written: images by number, pages of one image each.
#ifndef JTPDF_TOOL_PDF_DOCUMENT_H
#define JTPDF_TOOL_PDF_DOCUMENT_H

#include <jtpdf/jtpdf.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "image.h"
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
  struct Profile {
    Buffer bytes;
    int colorSpace;
  };

  // Throws what a result code other than 0 stands for.
  void Check(int32_t code);
  int ColorSpaceOf(Bytes profile);
  TPdfImageDescriptor Describe(const EncodedStream& stream, int colorSpace) const;

  Output& output_;
  int compression_;
  std::unique_ptr<JTPDFDocument, Destroy> document_;
  std::deque<Profile> profiles_;  // the last ones, that each distinct one is written once
  size_t profileBytes_ = 0;       // of all of them
};

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_PDF_DOCUMENT_H
