// jxl_decoder.cpp - JPEG XL: the JPEG that a file was made of passes through, the rest is decoded.
#include <optional>
#include <string>
#include <utility>

#include "formats/decoder.h"
#include "formats/film.h"
#include "formats/jxl_file.h"
#include "formats/planes.h"

namespace pictures {
namespace {

using namespace std::string_view_literals;

int DepthOf(const JxlBasicInfo& info) {
  return info.bits_per_sample <= 8 && info.exponent_bits_per_sample == 0 ? 8 : 16;
}

int ChannelsOf(const JxlBasicInfo& info) {
  return static_cast<int>(info.num_color_channels) + (info.alpha_bits > 0 ? 1 : 0);
}

// The plan of the JPEG is that of the file; it is looked at again when the page is made.
ImagePlan PlanJpegOf(const Buffer& jpeg, ReadLimits limits) {
  limits.allFrames = false;
  ImagePlan plan = kJpegDecoder.plan(jpeg.View(), limits).front();
  plan.format = Format::kJxl;
  return plan;
}

ImagePlan AsJpegPlan(ImagePlan plan) {
  plan.format = Format::kJpeg;
  return plan;
}

// Floats and wide integers, in which libjxl works, beside the result, which a film has once more.
double DecodingMemory(const JxlBasicInfo& info, bool film) {
  const double pixels = static_cast<double>(info.xsize) * info.ysize;
  const double channels = info.num_color_channels + info.num_extra_channels;
  const int bytes = ChannelsOf(info) * (DepthOf(info) / 8);  // of a pixel of the result
  return pixels * (8 * channels + (film ? 3 : 2) * bytes);
}

std::vector<ImagePlan> PlanJxl(Bytes file, const ReadLimits& limits) {
  const JxlFacts facts = ReadJxlFacts(file);
  const JxlBasicInfo& info = facts.info;
  CheckSize(info.xsize, info.ysize, limits);
  if (facts.inks) {
    throw ImageError("is JPEG XL with inks (CMYK), which is not known here; save it as TIFF");
  }
  ImagePlan plan;
  const bool film = limits.allFrames && facts.frames > 1;
  const double itsFile = film ? static_cast<double>(file.size()) : 0;
  SetMemory(DecodingMemory(info, film) + itsFile, limits, &plan);
  if (facts.jpeg) return {PlanJpegOf(ReconstructJpeg(file), limits)};
  plan.format = Format::kJxl;
  plan.width = info.xsize;
  plan.height = info.ysize;
  plan.depth = DepthOf(info);
  plan.colour = info.num_color_channels == 1 ? Colour::kGrey : Colour::kRgb;
  plan.alpha = info.alpha_bits > 0;
  plan.orientation = info.orientation;
  plan.resolution = ReadJxlExif(file).resolution;
  plan.decodeReason = "JPEG XL, which PDF does not know";
  JudgeProfile(&plan, ReadJxlProfile(file).View());
  std::vector<ImagePlan> plans;
  for (unsigned i = 0; i < (limits.allFrames ? facts.frames : 1); ++i) {
    plan.place = i;
    plans.push_back(plan);
  }
  NumberFrames(facts.frames, &plans);
  ShareFilms(&plans);
  return plans;
}

class JxlFilm : public Film {
 public:
  JxlFilm(const ImagePlan& plan, Bytes file)
      : Film(file),
        frames_(File()),
        pixels_(plan.width, plan.height, plan.depth, ChannelsOf(ReadJxlFacts(File()).info)) {}

 private:
  void DrawNext() override { frames_.DecodeNext(&pixels_); }
  DecodedImage Seen() const override {
    if (pixels_.channels % 2 == 0) return SplitAlpha(pixels_);
    DecodedImage image;
    image.pixels = pixels_.Copy();
    return image;
  }

  JxlFrames frames_;
  Raster pixels_;
};

DecodedImage DecodeJxl(const ImagePlan& plan, Bytes file, std::vector<Note>* notes) {
  if (plan.films) return DecodeFrame<JxlFilm>(plan, file, plan.place);
  const JxlFacts facts = ReadJxlFacts(file);
  if (facts.jpeg) return kJpegDecoder.decode(AsJpegPlan(plan), ReconstructJpeg(file).View(), notes);
  Raster pixels(plan.width, plan.height, plan.depth, ChannelsOf(facts.info));
  JxlFrames(file).DecodeNext(&pixels);
  if (plan.alpha) return SplitAlpha(pixels);
  return {std::move(pixels), {}};
}

std::optional<EncodedImage> PassJxlThrough(const ImagePlan& plan, Bytes file, int level) {
  Buffer jpeg = ReconstructJpeg(file);
  std::optional<EncodedImage> image =
      kJpegDecoder.passThrough(AsJpegPlan(plan), jpeg.View(), level);
  image.value().pixels.owned = std::move(jpeg);
  return image;
}

Buffer JxlProfile(const ImagePlan& plan, Bytes file) {
  const bool jpeg = plan.PassesThrough() || ReadJxlFacts(file).jpeg;
  return jpeg ? kJpegDecoder.profile(AsJpegPlan(plan), ReconstructJpeg(file).View())
              : ReadJxlProfile(file);
}

bool IsJxl(Bytes head) {
  return StartsWith(head, "\xFF\x0A"sv) || StartsWith(head, "\0\0\0\x0CJXL \r\n\x87\n"sv);
}

}  // namespace

const Decoder kJxlDecoder{Format::kJxl, "JPEG XL",  IsJxl,         PlanJxl,
                          DecodeJxl,    JxlProfile, PassJxlThrough};

}  // namespace pictures
