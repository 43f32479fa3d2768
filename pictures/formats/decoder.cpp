// decoder.cpp - the list of formats, and what they have in common.
#include "formats/decoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string_view>
#include <utility>

#include "formats/icc.h"
#include "packing.h"

namespace pictures {
namespace {

constexpr std::array kDecoders{JTPDF_DECODERS};  // those whose libraries the build found

// As profiles name it.
std::string_view SpaceOf(Colour colour) {
  return colour == Colour::kGrey ? "GRAY" : colour == Colour::kRgb ? "RGB " : "CMYK";
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
    throw ImageError("is no picture of a known kind; convert it to JPEG, PNG or TIFF");
  }
  return *decoder;
}

std::span<const Decoder* const> Decoders() {
  return kDecoders;
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

std::vector<ImagePlan> OnlyPage(ImagePlan plan) {
  std::vector<ImagePlan> plans;  // (an initialiser list would copy)
  plans.push_back(std::move(plan));
  return plans;
}

void NumberPages(std::vector<ImagePlan>* plans) {
  if (plans->size() > kMostPages) {
    throw ImageError("has more than " + std::to_string(kMostPages) + " pages; split it");
  }
  for (size_t i = 0; i < plans->size(); ++i) {
    (*plans)[i].page = static_cast<unsigned>(i + 1);
    (*plans)[i].pages = static_cast<unsigned>(plans->size());
  }
}

void NumberFrames(unsigned frames, std::vector<ImagePlan>* plans) {
  if (plans->size() == 1 && frames > 1) {
    plans->front().notes.push_back(
        {true, "only the first of its " + std::to_string(frames) + " frames was used"});
  }
  NumberPages(plans);
}

Resolution PerMetre(uint32_t x, uint32_t y) {
  Resolution resolution{x * 0.0254, y * 0.0254};
  // 300 dpi is 11811.02 pixels per metre, of which the file keeps the whole ones.
  for (double* dpi : {&resolution.x, &resolution.y}) {
    const double whole = std::floor(*dpi + 0.5);
    if (whole > 0 && std::max(*dpi - whole, whole - *dpi) <= 0.0254 / 2) *dpi = whole;
  }
  return resolution;
}

EncodedImage Encode(const ImagePlan& plan, Bytes file, int level) {
  const Decoder& decoder = DecoderOf(plan.format);
  EncodedImage image;
  std::optional<EncodedImage> stored;
  if (plan.PassesThrough()) stored = decoder.passThrough(plan, file, level);
  if (stored) {
    image = std::move(*stored);
  } else {
    std::vector<Note> notes;
    const bool profiled = plan.profile == ProfileUse::kUsed;
    image = Pack(decoder.decode(plan, file, &notes), level,
                 profiled ? Purpose::kProfiled : Purpose::kPicture);
    image.notes = std::move(notes);
  }
  // A JPEG 2000 file that passes through keeps its profile inside.
  if (plan.profile == ProfileUse::kUsed && image.pixels.filter != Filter::kJpx &&
      image.pixels.colour == plan.colour) {
    image.profile = decoder.profile(plan, file);
  }
  return image;
}

EncodedImage PassThrough(const ImagePlan& plan, Bytes file, Filter filter) {
  EncodedImage image;
  EncodedStream& pixels = image.pixels;
  pixels.pieces = {Slice(file, plan.place, plan.size)};
  pixels.filter = filter;
  pixels.colour = plan.colour;
  if (plan.colour == Colour::kCmyk) pixels.DeclareInverted();
  pixels.width = plan.width;
  pixels.height = plan.height;
  pixels.bits = plan.depth;
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
  } else if (facts.space != SpaceOf(plan->colour)) {
    plan->profile = ProfileUse::kLeftOut;
    plan->notes.push_back({false, "its colour profile (" + facts.Describe() +
                                      ") was left out: the picture has other components"});
  } else {
    plan->profile = ProfileUse::kUsed;
    plan->profileSize = profile.size();
  }
}

}  // namespace pictures
