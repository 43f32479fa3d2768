// decoder.cpp - the list of formats, and what they have in common.
#include "formats/decoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

#include "flate.h"
#include "formats/icc.h"

namespace pictures {
namespace {

constexpr std::array kDecoders{&kJpegDecoder, &kPngDecoder, &kJpeg2000Decoder, &kTiffDecoder,
                               &kWebpDecoder};

Colour ColourOf(const Raster& raster) {
  return raster.channels == 1 ? Colour::kGrey : raster.channels == 3 ? Colour::kRgb : Colour::kCmyk;
}

// Decoded inks are inverted throughout, as JPEG files with an Adobe marker have them.
void DeclareInks(EncodedStream* stream) {
  if (stream->colour == Colour::kCmyk) stream->decode = {1, 0, 1, 0, 1, 0, 1, 0};
}

constexpr uint64_t kMostStored = std::numeric_limits<uint32_t>::max();

EncodedStream Compress(Raster raster, int level) {
  EncodedStream stream;
  stream.Own(Deflate(raster.bytes.View(), level));
  if (stream.Size() > kMostStored) {
    throw ImageError("compresses to more than 4 GiB, the most one PDF image can hold; scale it");
  }
  stream.colour = ColourOf(raster);
  DeclareInks(&stream);
  stream.width = raster.width;
  stream.height = raster.height;
  stream.bits = raster.bits;
  return stream;
}

// Rows are padded with ones where the alpha is opaque, so whole bytes can be looked at.
bool OpaqueThroughout(const Raster& alpha) {
  const Bytes bytes = alpha.bytes.View();
  return std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte == 0xFF; });
}

}  // namespace

const Decoder* Recognise(Bytes head) {
  const auto it = std::find_if(kDecoders.begin(), kDecoders.end(),
                               [&](const Decoder* decoder) { return decoder->recognises(head); });
  return it == kDecoders.end() ? nullptr : *it;
}

const Decoder& RecogniseOrThrow(Bytes head) {
  const Decoder* decoder = Recognise(head);
  if (decoder == nullptr) {
    throw ImageError(
        "is no picture of a known kind; convert it to JPEG, JPEG 2000, PNG, TIFF or WebP");
  }
  return *decoder;
}

const Decoder& DecoderOf(Format format) {
  return **std::find_if(kDecoders.begin(), kDecoders.end(),
                        [&](const Decoder* decoder) { return decoder->format == format; });
}

void CheckSize(uint64_t width, uint64_t height, const ReadLimits& limits) {
  const std::string size = std::to_string(width) + " x " + std::to_string(height) + " pixels";
  if (width == 0 || height == 0) {
    throw ImageError("has no pixels (" + size + "); the file is damaged, save the picture again");
  }
  constexpr uint64_t kMost = std::numeric_limits<int32_t>::max();
  if (width > kMost || height > kMost || width > limits.maxPixels / height) {
    throw ImageError("claims " + size + ", more than the " + std::to_string(limits.maxPixels) +
                     " allowed; if that is right, allow it with " + limits.option);
  }
}

void CheckStored(const ImagePlan& plan) {
  if (!plan.PassesThrough() || plan.size <= kMostStored) return;
  throw ImageError("holds " + std::to_string(plan.size) + " bytes, more than the " +
                   std::to_string(kMostStored) +
                   " that one PDF image can hold; save it smaller, or in pieces");
}

void SetMemory(double bytes, const ReadLimits& limits, ImagePlan* plan) {
  const auto most = static_cast<double>(limits.MostBytes());
  if (!(bytes <= most)) {
    char text[256];
    std::snprintf(text, sizeof text,
                  "would take %.0f MB of memory to decode, more than the %.0f MB allowed; if that "
                  "is right, allow it with %s %.0f",
                  bytes / 1e6, most / 1e6, limits.option, std::ceil(bytes / 4));
    throw ImageError(text);
  }
  plan->memory = static_cast<uint64_t>(bytes);
}

EncodedImage Encode(const ImagePlan& plan, Bytes file, int level) {
  EncodedImage image;
  if (plan.PassesThrough()) {
    image = DecoderOf(plan.format).passThrough(plan, file);
  } else {
    std::vector<Note> notes;
    image = EncodeDecoded(DecoderOf(plan.format).decode(plan, file, &notes), level);
    image.notes = std::move(notes);
  }
  // A JPEG 2000 file that passes through keeps its profile inside.
  if (plan.profile == ProfileUse::kUsed && image.pixels.filter != Filter::kJpx &&
      image.pixels.colour == Colour::kRgb) {
    image.profile = DecoderOf(plan.format).profile(plan, file);
  }
  return image;
}

EncodedImage PassThrough(const ImagePlan& plan, Bytes file, Filter filter) {
  EncodedImage image;
  EncodedStream& pixels = image.pixels;
  pixels.pieces = {Slice(file, plan.place, plan.size)};
  pixels.filter = filter;
  pixels.colour = plan.colour;
  DeclareInks(&pixels);
  pixels.width = plan.width;
  pixels.height = plan.height;
  pixels.bits = plan.depth;
  return image;
}

EncodedImage EncodeDecoded(DecodedImage decoded, int level) {
  EncodedImage image;
  if (decoded.alpha && !OpaqueThroughout(*decoded.alpha)) {
    image.alpha = Compress(std::move(*decoded.alpha), level);
  }
  decoded.alpha.reset();
  image.pixels = Compress(std::move(decoded.pixels), level);
  return image;
}

void LeaveProfileOut(ImagePlan* plan, bool tooLarge) {
  plan->profile = ProfileUse::kLeftOut;
  if (tooLarge) {
    plan->notes.push_back({true, "its colour profile was left out: it is larger than " +
                                     std::to_string(kMostProfile >> 20) + " MiB"});
  } else {
    plan->notes.push_back({false, "its colour profile is damaged and was left out"});
  }
}

void JudgeProfile(ImagePlan* plan, Bytes profile) {
  if (profile.empty()) return;
  const ProfileFacts facts = ReadProfile(profile);
  if (!facts.valid || profile.size() > kMostProfile) {
    LeaveProfileOut(plan, facts.valid);
  } else if (facts.space != "RGB " || plan->colour != Colour::kRgb) {
    plan->profile = ProfileUse::kLeftOut;
    plan->notes.push_back({false, "its colour profile (" + facts.Describe() +
                                      ") was left out: only RGB profiles of RGB pictures can be "
                                      "declared"});
  } else {
    plan->profile = ProfileUse::kUsed;
    plan->profileSize = profile.size();
  }
}

}  // namespace pictures
