#include "packing.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "ccitt.h"
#include "flate.h"
#include "reduction.h"
#include "row_filters.h"

namespace pictures {
namespace {

// Data of less than this is packed in every way; of more, a part of it tells which one to take.
constexpr size_t kSmall = size_t{256} << 10;

bool CanBeFiltered(const Samples& samples) {
  return samples.raster.bits >= 8 && (samples.palette.Empty() || samples.ramp);
}

size_t PixelSize(const Raster& raster) {
  return static_cast<size_t>(raster.bits * raster.channels / 8);
}

// Whether filters help, by rows from four places of the picture.
bool FiltersHelp(const Raster& raster) {
  constexpr size_t kPlaces = 4;
  constexpr int kLevel = 6;
  const size_t stride = raster.Stride();
  const size_t rows = std::max<size_t>(kSmall / kPlaces / stride, 2);
  size_t filtered = 0, plain = 0;
  for (size_t place = 0; place < kPlaces; ++place) {
    const size_t first = raster.height / kPlaces * place;
    const size_t count = std::min(rows, raster.height - first);
    const Bytes part = raster.bytes.View().subspan(first * stride, count * stride);
    plain += Deflate(part, kLevel).Size();
    const Buffer rowsFiltered =
        FilterRows(part, stride, count, PixelSize(raster), BestRow::kSmallest);
    filtered += Deflate(rowsFiltered.View(), kLevel).Size();
  }
  return filtered < plain;
}

// Filtered rows have few repetitions: libdeflate finds as many of them as zlib only a level
// further.
int LevelOfFiltered(int level) {
  return level == 0 ? 0 : std::min(level + 1, kHardestLevel);
}

void TakeIfSmaller(Buffer data, Filter filter, int predictor, EncodedStream* stream) {
  if (!stream->pieces.empty() && data.Size() >= stream->Size()) return;
  stream->Own(std::move(data));
  stream->filter = filter;
  stream->predictor = predictor;
}

// Compresses the samples in the way that makes them smallest.
void Compress(Raster raster, bool canBeFiltered, int level, EncodedStream* stream) {
#ifdef JTPDF_WITH_TIFF
  if (raster.bits == 1 && raster.channels == 1) {
    TakeIfSmaller(EncodeGroup4(raster), Filter::kCcitt, 1, stream);
  }
#endif
  const bool small = raster.bytes.Size() <= kSmall;
  const bool filter = canBeFiltered && (small || FiltersHelp(raster));
  if (!filter || small) {
    TakeIfSmaller(Deflate(raster.bytes.View(), level), Filter::kFlate, 1, stream);
  }
  if (filter) {
    const Buffer filtered =
        FilterRows(raster.bytes.View(), raster.Stride(), raster.height, PixelSize(raster),
                   level < kHardestLevel ? BestRow::kSmallest : BestRow::kMostRepetitive);
    raster = {};
    TakeIfSmaller(Deflate(filtered.View(), LevelOfFiltered(level)), Filter::kFlate, 15, stream);
  }
}

// Rows are padded with ones where the alpha is opaque, so whole bytes can be looked at.
bool OpaqueThroughout(const Raster& alpha) {
  const Bytes bytes = alpha.bytes.View();
  return std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte == 0xFF; });
}

}  // namespace

EncodedStream Pack(Raster raster, int level, Purpose purpose) {
  EncodedStream stream;
  stream.width = raster.width;
  stream.height = raster.height;
  Samples samples = Reduce(std::move(raster), purpose);
  const bool canBeFiltered = CanBeFiltered(samples);
  stream.colour = samples.colour;
  stream.bits = samples.raster.bits;
  stream.palette = std::move(samples.palette);
  if (stream.colour == Colour::kCmyk) stream.DeclareInverted();
  Compress(std::move(samples.raster), canBeFiltered, level, &stream);
  if (stream.Size() > kMostStored) {
    throw ImageError("compresses to more than 4 GiB, the most one PDF image can hold; scale it");
  }
  return stream;
}

std::optional<EncodedStream> PackAlpha(Raster alpha, int level) {
  if (OpaqueThroughout(alpha)) return {};
  return Pack(std::move(alpha), level, Purpose::kMask);
}

EncodedImage Pack(DecodedImage decoded, int level, Purpose purpose) {
  EncodedImage image;
  if (decoded.alpha) image.alpha = PackAlpha(std::move(*decoded.alpha), level);
  decoded.alpha.reset();
  image.pixels = Pack(std::move(decoded.pixels), level, purpose);
  return image;
}

}  // namespace pictures
