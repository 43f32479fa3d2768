#include "pdf_document.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <utility>

#include "flate.h"
#include "formats/icc.h"
#include "image_source.h"
#include "text.h"

namespace pictures::tool {
namespace {

// Of the profiles that are remembered; one that is forgotten and comes again is written again.
constexpr size_t kMostProfiles = 4 * kMostProfile;

int32_t WriteToOutput(void* output, const char* data, size_t size) {
  static_cast<Output*>(output)->CheckRoom(size);
  return static_cast<Output*>(output)->Write(data, size);
}

}  // namespace

PdfDocument::PdfDocument(Output& output, const Metadata& metadata, int compression)
    : output_(output),
      compression_(compression),
      document_(CreateCallbackPdfDoc(PDFCoordinateUnitPoint, WriteToOutput, &output)) {
  const std::pair<const char*, const std::wstring&> items[] = {
      {"Title", metadata.title},     {"Author", metadata.author},
      {"Subject", metadata.subject}, {"Keywords", metadata.keywords},
      {"Creator", metadata.creator}, {"CreationDate", metadata.creationDate},
      {"ModDate", metadata.modDate}};
  for (const auto& [key, value] : items) {
    if (!value.empty()) SetPdfInfoItem(document_.get(), key, WithRoomForPairs(value).c_str());
  }
  errno = 0;
  Check(InitPdfDoc(document_.get()));
}

void PdfDocument::Check(int32_t code) {
  if (code == 0) return;
  // What was to be written is no longer there: the rest of a mapped file.
  if (code == EFAULT) throw InputChanged();
  throw OutputError(WriteProblem(code));
}

int PdfDocument::ColorSpaceOf(Bytes profile) {
  const auto known = std::find_if(profiles_.begin(), profiles_.end(), [&](const Profile& p) {
    return std::ranges::equal(p.bytes.View(), profile);
  });
  if (known != profiles_.end()) return known->colorSpace;
  const Buffer packed = Deflate(profile, compression_);
  int colorSpace = 0;
  errno = 0;
  Check(WritePdfICCProfile(document_.get(), reinterpret_cast<const char*>(packed.Data()),
                           static_cast<unsigned>(packed.Size()), kPdfCompressionFlate,
                           &colorSpace));
  profiles_.push_back({Buffer::CopyOf(profile), colorSpace});
  profileBytes_ += profile.size();
  for (; profileBytes_ > kMostProfiles; profiles_.pop_front()) {
    profileBytes_ -= profiles_.front().bytes.Size();
  }
  return colorSpace;
}

TPdfImageDescriptor PdfDocument::Describe(const EncodedStream& stream, int colorSpace) const {
  const TPdfColorSpace device = stream.colour == Colour::kGrey  ? kPdfColorSpaceGray
                                : stream.colour == Colour::kRgb ? kPdfColorSpaceRGB
                                                                : kPdfColorSpaceCMYK;
  return {reinterpret_cast<const char*>(stream.data.data()),
          static_cast<uint32_t>(stream.data.size()),
          stream.compression,
          static_cast<int32_t>(stream.width),
          static_cast<int32_t>(stream.height),
          stream.bits,
          colorSpace != 0 ? kPdfColorSpaceICC : device,
          colorSpace};
}

int PdfDocument::WriteImage(const EncodedImage& image, TPdfImageRole role,
                            const std::wstring& name) {
  const int colorSpace = image.profile.Empty() ? 0 : ColorSpaceOf(image.profile.View());
  // Before the first byte of it is written.
  output_.CheckRoom(image.pixels.data.size() + (image.alpha ? image.alpha->data.size() : 0));
  const TPdfImageDescriptor pixels = Describe(image.pixels, colorSpace);
  const std::wstring recorded = WithRoomForPairs(name);
  int number = 0;
  errno = 0;
  if (pixels.compression == kPdfCompressionJPEG2000) {
    Check(WritePdfImageJPEG2000(document_.get(), &pixels, role, recorded.c_str(), 0, nullptr,
                                &number));
  } else {
    TPdfImageDescriptor alpha = {};
    if (image.alpha) alpha = Describe(*image.alpha, 0);
    Check(WritePdfImageWithAlpha(document_.get(), &pixels, image.alpha ? &alpha : nullptr, role,
                                 recorded.c_str(), 0, nullptr, &number));
  }
  return number;
}

void PdfDocument::AddPage(int image, const PageLayout& layout) {
  SetPdfCanvasBoundingBox(document_.get(), layout.page);
  DrawPdfImageInRect(document_.get(), image, layout.image);
  int form = 0;
  errno = 0;
  Check(WritePdfCanvas(document_.get(), &form));
  errno = 0;
  Check(WritePdfPage(document_.get(), form, layout.crop, layout.page));
}

void PdfDocument::Finish() {
  errno = 0;
  Check(FinalizePdfDoc(document_.get(), nullptr));
  document_.reset();
}

}  // namespace pictures::tool
