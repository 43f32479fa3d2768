// The vocabulary of the golden documents: every call through the public header, checked, and
// counted in Facts.

#ifndef JTPDF_TESTS_GOLDEN_HOST_H
#define JTPDF_TESTS_GOLDEN_HOST_H

#include <jtpdf/objects.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "golden_documents.h"

namespace golden {

constexpr JTPDFRGBColor kNone = {255, 255, 255, 0};
constexpr JTPDFRGBColor kWhite = {255, 255, 255, 255};
constexpr JTPDFRGBColor kBlack = {0, 0, 0, 255};
constexpr JTPDFRGBColor kRed = {255, 0, 0, 255};
constexpr JTPDFRGBColor kGreen = {0, 128, 0, 255};
constexpr JTPDFRGBColor kBlue = {0, 0, 255, 255};
constexpr JTPDFRGBColor kYellow = {255, 255, 0, 255};

// One image to write; everything beyond the data has the usual value.
struct Image {
  std::string data;
  TPdfCompression compression = kPdfCompressionFlate;
  TPdfColorSpace colorSpace = kPdfColorSpaceRGB;
  int colorSpaceObject = 0;
  int bits = 8;
  int width = 16;
  int height = 16;
  bool maskWhite = false;
  TPdfImageRole role = kPdfImageRolePhoto;
  const wchar_t* name = nullptr;
  std::vector<JTPDFDictionaryItem> items = {};

  TPdfImageDescriptor Descriptor() const {
    return {data.data(), static_cast<uint32_t>(data.size()),
            compression, width,
            height,      bits,
            colorSpace,  colorSpaceObject};
  }
};

class Host {
 public:
  Host(JTPDFDocument* document, double unit, Facts& facts)
      : doc(document), unit_(unit), facts_(facts) {}

  int Write(const Image& image) {
    const TPdfImageDescriptor descriptor = image.Descriptor();
    int number = 0;
    Check(WritePdfImage(doc, &descriptor, image.maskWhite, image.role, image.name,
                        static_cast<unsigned>(image.items.size()), image.items.data(), &number),
          "WritePdfImage");
    ++facts_.images;
    return number;
  }

  int WriteWithAlpha(const Image& image, const Image* alpha) {
    const TPdfImageDescriptor descriptor = image.Descriptor();
    const TPdfImageDescriptor mask = alpha != nullptr ? alpha->Descriptor() : descriptor;
    int number = 0;
    Check(WritePdfImageWithAlpha(doc, &descriptor, alpha != nullptr ? &mask : nullptr, image.role,
                                 image.name, static_cast<unsigned>(image.items.size()),
                                 image.items.data(), &number),
          "WritePdfImageWithAlpha");
    facts_.images += alpha != nullptr ? 2 : 1;
    return number;
  }

  int WriteJpeg2000(const Image& image) {
    const TPdfImageDescriptor descriptor = image.Descriptor();
    int number = 0;
    Check(WritePdfImageJPEG2000(doc, &descriptor, image.role, image.name,
                                static_cast<unsigned>(image.items.size()), image.items.data(),
                                &number),
          "WritePdfImageJPEG2000");
    ++facts_.images;
    return number;
  }

  int WriteProfile(const std::string& data, TPdfCompression compression) {
    int number = 0;
    Check(WritePdfICCProfile(doc, data.data(), static_cast<unsigned>(data.size()), compression,
                             &number),
          "WritePdfICCProfile");
    return number;
  }

  int Stream(const std::vector<JTPDFEntry>& entries, const std::string& data) {
    int number = 0;
    Check(WritePdfStream(doc, static_cast<unsigned>(entries.size()), entries.data(), data.data(),
                         data.size(), &number),
          "WritePdfStream");
    for (const JTPDFEntry& entry : entries) {
      if (entry.value == std::string("/Image")) CountImage();
    }
    return number;
  }
  void CountImage() { ++facts_.images; }

  int Object(const char* value) {
    int number = 0;
    Check(WritePdfObject(doc, value, &number), "WritePdfObject");
    return number;
  }

  int Reserve() {
    int number = 0;
    Check(ReservePdfObject(doc, &number), "ReservePdfObject");
    return number;
  }

  void CatalogEntry(const char* key, const char* value) {
    Check(SetPdfCatalogEntry(doc, key, value), "SetPdfCatalogEntry");
  }
  void PageEntry(const char* key, const char* value) {
    Check(SetPdfPageEntry(doc, key, value), "SetPdfPageEntry");
  }
  void CanvasEntry(const char* key, const char* value) {
    Check(SetPdfCanvasEntry(doc, key, value), "SetPdfCanvasEntry");
  }

  int Form() {
    int number = 0;
    Check(WritePdfCanvas(doc, &number), "WritePdfCanvas");
    ++facts_.forms;
    return number;
  }

  void Page(int form, JTPDFRect crop, JTPDFRect media) {
    Check(WritePdfPage(doc, form, crop, media), "WritePdfPage");
    facts_.pages.push_back({Points(crop), Points(media)});
  }
  void Page(int form, JTPDFRect sheet) { Page(form, sheet, sheet); }

  static void Check(int32_t code, const char* call) {
    if (code != 0) throw std::runtime_error(std::string(call) + ": " + std::to_string(code));
  }

  JTPDFDocument* const doc;

 private:
  JTPDFRect Points(JTPDFRect box) const {
    return {box.left * unit_, box.bottom * unit_, box.width * unit_, box.height * unit_, 0};
  }

  double unit_;
  Facts& facts_;
};

}  // namespace golden

#endif  // JTPDF_TESTS_GOLDEN_HOST_H
