// api_fuzzer.cpp - any bytes through the C interface: opened, asked, written and laid out by
// options that the first bytes choose.
//
// Whatever comes in, no call throws, a failure has a message and a success none, a picture that
// cannot be used leaves the document as it was, and the document ends as a whole file.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "jtpdf/pictures.h"

namespace {

struct Reader {
  const uint8_t* data;
  size_t left;
  size_t piece;

  static int32_t Read(void* context, char* buffer, size_t size, size_t* count) {
    Reader& self = *static_cast<Reader*>(context);
    *count = std::min({size, self.left, self.piece});
    if (*count > 0) std::memcpy(buffer, self.data, *count);
    self.data += *count;
    self.left -= *count;
    return 0;
  }
};

void Require(bool holds) {
  if (!holds) abort();
}

void RequireTold(int32_t result, const JTPDFPictureError& error) {
  Require(result == error.result && (result != 0) == (error.message[0] != '\0'));
}

constexpr const char* kPages[] = {nullptr, "A4", "A5^T", "10cmx", "3x3", "nonsense", "20in"};
constexpr const char* kImages[] = {nullptr, "50%", "300dpi", "10cmx1cm", "x5cm", "0", "1e9"};
constexpr const char* kBorders[] = {nullptr, "1cm", "5mm:30cm", "-1"};

void UseFrame(JTPDFPictureWriter* writer, const JTPDFPicture* picture, unsigned frame,
              const JTPDFPicturePage& page, int* pages) {
  JTPDFPictureError error;
  JTPDFPictureInfo info;
  RequireTold(JTPDFGetPictureInfo(picture, frame, &info, &error), error);
  Require(info.orientation >= 1 && info.orientation <= 8 && info.reason != nullptr);
  int number = 0;
  const int32_t result = JTPDFAddPicturePage(writer, picture, frame, &page, &number, &error);
  RequireTold(result, error);
  Require((result == 0) == (number != 0) && result != kJTPDFPictureDocument);
  *pages += result == 0 ? 1 : 0;
}

// What is fitted into a box stays inside of it, whatever its file says of its shape.
void FitFrame(const JTPDFPictureWriter* writer, const JTPDFPicture* picture, unsigned frame,
              const JTPDFPicturePage& page) {
  constexpr double kWidth = 30, kHeight = 40, kSlack = 1e-6;
  JTPDFPictureError error;
  JTPDFRect image;
  const JTPDFRect box = {1, 2, kWidth, kHeight, 10};
  const int32_t result =
      JTPDFFitPicture(writer, picture, frame, box, page.fit, page.turn, &image, &error);
  RequireTold(result, error);
  if (result != 0) return;
  const JTPDFRect upright = JTPDFUprightPicture(image);
  Require(upright.width >= 0 && upright.height >= 0 && upright.angle <= 45);
  if (page.fit != kJTPDFPictureInto) return;
  Require(upright.width <= kWidth + kSlack && upright.height <= kHeight + kSlack);
  Require(upright.left >= box.left - kSlack && upright.bottom >= box.bottom - kSlack);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 4) return 0;
  const uint8_t* chosen = data;
  const JTPDFPicturePage page = {kPages[chosen[0] % std::size(kPages)],
                                 kImages[chosen[1] % std::size(kImages)],
                                 kBorders[chosen[2] % std::size(kBorders)],
                                 chosen[3] % 6,
                                 90 * (chosen[3] / 8 % 6),
                                 chosen[3] >= 128};
  const JTPDFPictureLimits limits = {1 << 18, 1 << 20, chosen[2] >= 128};
  JTPDFPictureError error;
  Reader reader{data + 4, size - 4, size_t{1} + chosen[2]};
  JTPDFPicture* picture = chosen[1] < 128
                              ? JTPDFOpenPictureMemory(data + 4, size - 4, &limits, &error)
                              : JTPDFOpenPictureStream(Reader::Read, &reader, &limits, &error);
  Require((picture == nullptr) == (error.result != 0));
  if (picture == nullptr) {
    RequireTold(error.result, error);
    return 0;
  }
  JTPDFDocument* doc = CreateMemoryPdfDoc(PDFCoordinateUnitMillimeter);
  Require(InitPdfDoc(doc) == 0);
  const int level = chosen[0] < 192 ? 1 : JTPDF_PICTURE_SMALLEST;
  JTPDFPictureWriter* writer =
      JTPDFCreatePictureWriter(doc, PDFCoordinateUnitMillimeter, level, &error);
  const unsigned frames = std::min(JTPDFCountPictureFrames(picture), 4U);
  int pages = 0;
  for (unsigned frame = 0; frame < frames; ++frame) {
    UseFrame(writer, picture, frame, page, &pages);
    FitFrame(writer, picture, frame, page);
  }
  JTPDFDestroyPictureWriter(writer);
  JTPDFClosePicture(picture);
  Require(FinalizePdfDoc(doc, nullptr) == 0);
  const std::string bytes(GetPdfData(doc), GetPdfDataSize(doc));
  Require(bytes.find("/Count " + std::to_string(pages) + "\r\n") != std::string::npos);
  DestroyPdfDoc(doc);
  return 0;
}
