#include "optimisation.h"

#include <cstring>
#include <utility>
#include <vector>

#include "flate.h"
#include "formats/jpeg_recoding.h"

namespace pictures {
namespace {

void Recode(EncodedStream* stream) {
  const Buffer joined = stream->pieces.size() == 1 ? Buffer() : Join(stream->pieces);
  Buffer smaller = RecodeJpeg(joined.Empty() ? stream->pieces[0] : joined.View());
  if (!smaller.Empty() && smaller.Size() < stream->Size()) stream->Own(std::move(smaller));
}

size_t SizeOf(const EncodedImage& image) {
  return image.pixels.Size() + image.pixels.palette.Size() +
         (image.alpha ? image.alpha->Size() : 0);
}

// A TIFF page that is too much to decode has no memory in its plan.
bool MayDecode(const ImagePlan& plan, const ReadLimits& limits) {
  if (plan.format == Format::kTiff && plan.memory == 0) return false;
  const double samples = static_cast<double>(plan.width) * plan.height * Channels(plan.colour);
  return samples * (plan.depth > 8 ? 2 : 1) <= static_cast<double>(limits.MostBytes());
}

}  // namespace

EncodedImage EncodeSmallest(const ImagePlan& plan, Bytes file, const ReadLimits& limits) {
  EncodedImage image = Encode(plan, file, kHardestLevel);
  if (image.pixels.filter == Filter::kDct) {
    Recode(&image.pixels);
  } else if (plan.PassesThrough() && image.pixels.filter != Filter::kJpx &&
             MayDecode(plan, limits)) {
    ImagePlan decoded = plan;
    decoded.decodeReason = "made smaller";
    EncodedImage packed = Encode(decoded, file, kHardestLevel);
    if (SizeOf(packed) < SizeOf(image)) return packed;
  }
  return image;
}

}  // namespace pictures
