// jpeg_decoder.cpp - JPEG: passes through byte for byte wherever PDF can say what the file means.
//
// The header is read by a walk of our own over the marker segments: it touches only the pages of
// the file that hold headers, which is what makes thousands of photographs a matter of moments.
// libjpeg-turbo decodes the few files that cannot pass through.
#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>

#include "formats/decoder.h"
#include "formats/exif.h"
#include "formats/jpeg_failure.h"
#include "formats/jpeg_segments.h"
#include "formats/multi_picture.h"

namespace pictures {
namespace {

using namespace std::string_view_literals;

// What the segments before the first scan say.
struct JpegFacts {
  uint8_t frame = 0;  // the SOFn marker
  Bytes sof;
  std::optional<uint8_t> adobeTransform;
  Resolution jfif;
  ExifFacts exif;
  bool profile = false;
  Bytes index;  // of a file with several pictures
  size_t stray = 0;
  size_t firstScan = 0;  // where the entropy-coded data begins
};

void ReadSegment(uint8_t marker, Bytes data, JpegFacts* facts) {
  if (marker == kApp0 && StartsWith(data, "JFIF\0"sv) && data.size() >= 12) {
    const double inches = data[7] == 1 ? 1 : data[7] == 2 ? 2.54 : 0;
    facts->jfif = {Be16(&data[8]) * inches, Be16(&data[10]) * inches};
  } else if (marker == kApp1 && StartsWith(data, "Exif\0"sv) && data.size() > 6) {
    facts->exif = ReadExif(data.subspan(6));
  } else if (marker == kApp2) {
    facts->profile = facts->profile || StartsWith(data, "ICC_PROFILE\0"sv);
    if (facts->index.empty() && StartsWith(data, kIndexName)) facts->index = data;
  } else if (marker == kApp14 && StartsWith(data, "Adobe") && data.size() >= 12) {
    facts->adobeTransform = data[11];
  } else if (IsFrame(marker)) {
    if (facts->frame != 0) throw Damaged("it has two JPEG frames");
    facts->frame = marker;
    facts->sof = data;
  }
}

JpegFacts ReadFacts(Bytes file) {
  JpegFacts facts;
  JpegSegments walk(file);
  while (walk.Next()) {
    ReadSegment(walk.marker, walk.data, &facts);
    if (walk.marker == kSos) facts.firstScan = walk.Position();
  }
  facts.stray = walk.stray;
  if (facts.frame == 0 || facts.firstScan == 0) {
    throw ImageError("is a JPEG file without a picture; save or export it again");
  }
  if (facts.sof.size() < 6 || facts.sof.size() < 6 + 3u * facts.sof[5]) throw CutOff();
  return facts;
}

// The picture's end: where the file ends in a marker for that, that is it, unless more pictures
// follow the first; else the scans are searched.
size_t FindEnd(Bytes file, const JpegFacts& facts) {
  const size_t size = file.size();
  if (facts.index.empty() && file[size - 2] == 0xFF && file[size - 1] == kEoi) return size;
  const std::optional<size_t> end = FindJpegEnd(file, facts.firstScan);
  if (!end) throw CutOff();
  return *end;
}

bool NamedRgb(const JpegFacts& facts) {
  return facts.sof[6] == 'R' && facts.sof[9] == 'G' && facts.sof[12] == 'B';
}

bool IsArithmetic(const JpegFacts& facts) {
  return facts.frame == kSof9 || facts.frame == kSof10;
}

void CheckKind(const JpegFacts& facts) {
  const int depth = facts.sof[0], components = facts.sof[5];
  if ((facts.frame > kSof2 && !IsArithmetic(facts)) || depth != 8) {
    throw ImageError("is a JPEG of a rare kind (lossless, hierarchical or " +
                     std::to_string(depth) +
                     "-bit) that PDF readers cannot show; save it as an "
                     "ordinary 8-bit JPEG or as PNG");
  }
  if (components != 1 && components != 3 && components != 4) {
    throw ImageError("has " + std::to_string(components) +
                     " colour components; save it as grey, RGB or CMYK");
  }
}

// Why it must be decoded; empty where it passes through.
std::string DecodeReason(const JpegFacts& facts, Colour colour) {
  if (IsArithmetic(facts)) return "arithmetic coding, which PDF does not know";
  if (colour == Colour::kCmyk && !facts.adobeTransform) return "CMYK that is not stored inverted";
  if (colour == Colour::kRgb && !facts.adobeTransform && NamedRgb(facts)) {
    return "RGB by component names, which PDF readers take for YCbCr";
  }
  return {};
}

void AddNotes(const JpegFacts& facts, ImagePlan* plan) {
  if (plan->colour == Colour::kCmyk && !facts.adobeTransform && !IsArithmetic(facts)) {
    plan->notes.push_back({true,
                           "is CMYK without the Adobe marker, so its inks are not stored "
                           "inverted as PDF declares them here; it was decoded and stored "
                           "without loss"});
  }
  if (facts.stray > 0) {
    plan->notes.push_back(
        {true, "holds " + std::to_string(facts.stray) +
                   " stray bytes between its segments, which decoders pass over"});
  }
}

ImagePlan PlanPicture(Bytes file, const JpegFacts& facts, const ReadLimits& limits) {
  ImagePlan plan;
  plan.format = Format::kJpeg;
  plan.width = Be16(&facts.sof[3]);
  plan.height = Be16(&facts.sof[1]);
  plan.depth = facts.sof[0];
  CheckSize(plan.width, plan.height, limits);
  CheckKind(facts);
  const int components = facts.sof[5];
  plan.colour = components == 1 ? Colour::kGrey : components == 3 ? Colour::kRgb : Colour::kCmyk;
  plan.decodeReason = DecodeReason(facts, plan.colour);
  plan.resolution = facts.jfif;
  ApplyExif(facts.exif, &plan);
  AddNotes(facts, &plan);
  plan.size = FindEnd(file, facts);
  if (plan.PassesThrough()) {
    CheckStored(plan);
  } else {  // a progressive file is held as coefficients until its last scan
    const bool progressive = facts.frame == kSof2 || facts.frame == kSof10;
    SetMemory(static_cast<double>(plan.width) * plan.height * components * (progressive ? 3 : 1),
              limits, &plan);
  }
  if (facts.profile) JudgeProfile(&plan, kJpegDecoder.profile(plan, file).View());
  return plan;
}

// One of several, or why it cannot be used: the others may be good.
ImagePlan PlanOneOf(Bytes file, const PicturePlace& place, const ReadLimits& limits) {
  ImagePlan plan;
  try {
    const Bytes picture = Slice(file, place.begin, place.size);
    plan = PlanPicture(picture, ReadFacts(picture), limits);
  } catch (const ImageError& error) {
    plan.error = error.what();
  }
  plan.place = place.begin;
  return plan;
}

std::vector<ImagePlan> PlanJpeg(Bytes file, const ReadLimits& limits) {
  const JpegFacts facts = ReadFacts(file);
  std::vector<PicturePlace> places;
  if (limits.allFrames) places = FindPictures(file, facts.index);
  if (places.size() > 1) {
    std::vector<ImagePlan> plans;
    plans.reserve(places.size());
    for (const PicturePlace& place : places) plans.push_back(PlanOneOf(file, place, limits));
    NumberPages(&plans);
    return plans;
  }
  ImagePlan plan = PlanPicture(file, facts, limits);
  if (plan.size != file.size()) {
    plan.notes.push_back({!facts.index.empty(), "only its first picture was used; " +
                                                    std::to_string(file.size() - plan.size) +
                                                    " bytes behind it were left out"});
  }
  return OnlyPage(std::move(plan));
}

// Joins the chunks of the APP2 segments in the order of their numbers; empty unless all are there.
Buffer JpegProfile(const ImagePlan& plan, Bytes file) {
  constexpr size_t kHead = 14;  // "ICC_PROFILE\0", chunk number from 1, number of chunks
  std::array<Bytes, 256> chunks{};
  unsigned count = 0, found = 0;
  JpegSegments walk(file.subspan(plan.place));
  while (walk.Next()) {
    if (walk.marker != kApp2 || !StartsWith(walk.data, "ICC_PROFILE\0"sv) ||
        walk.data.size() <= kHead) {
      continue;
    }
    const uint8_t number = walk.data[12];
    if (number == 0 || !chunks[number].empty()) return {};
    count = walk.data[13];
    chunks[number] = walk.data.subspan(kHead);
    ++found;
  }
  if (found == 0 || found != count) return {};
  const auto all = std::span<const Bytes>(chunks).subspan(1, count);
  const bool whole = std::none_of(all.begin(), all.end(), [](Bytes part) { return part.empty(); });
  return whole ? Join(all) : Buffer();
}

// Decodes into `raster`; false with failure->text set. Holds nothing with a destructor, for the
// jump passes through it.
bool ReadPixels(Bytes file, Raster* raster, JpegFailure* failure) {
  jpeg_decompress_struct decoder;
  jpeg_progress_mgr progress = LimitedScans();
  decoder.err = JumpOnErrors(failure);
  jpeg_create_decompress(&decoder);
  if (setjmp(failure->back) != 0) {
    jpeg_destroy_decompress(&decoder);
    return false;
  }
  decoder.progress = &progress;
  jpeg_mem_src(&decoder, file.data(), file.size());
  jpeg_read_header(&decoder, TRUE);
  decoder.out_color_space = raster->channels == 1   ? JCS_GRAYSCALE
                            : raster->channels == 3 ? JCS_RGB
                                                    : JCS_CMYK;
  jpeg_start_decompress(&decoder);
  if (decoder.output_width != raster->width || decoder.output_height != raster->height) {
    FailWith(failure, "two sizes");
  }
  while (decoder.output_scanline < decoder.output_height) {
    JSAMPROW row = raster->Row(decoder.output_scanline);
    jpeg_read_scanlines(&decoder, &row, 1);
  }
  jpeg_finish_decompress(&decoder);
  jpeg_destroy_decompress(&decoder);
  return true;
}

DecodedImage DecodeJpeg(const ImagePlan& plan, Bytes file, std::vector<Note>* notes) {
  DecodedImage image;
  image.pixels = Raster(plan.width, plan.height, 8, Channels(plan.colour));
  const Bytes picture = Slice(file, plan.place, plan.size);
  JpegFailure failure = {};
  if (!ReadPixels(picture, &image.pixels, &failure)) {
    throw Undecodable(std::string("libjpeg: ") + failure.text);
  }
  if (failure.manager.num_warnings > 0) {
    notes->push_back(
        {true, std::string("is damaged and may show faults (libjpeg: ") + failure.text + ")"});
  }
  // Inks of files with the Adobe marker come out inverted already, as the PDF declares them.
  if (plan.colour == Colour::kCmyk && !ReadFacts(picture).adobeTransform) {
    uint8_t* bytes = image.pixels.bytes.Data();
    for (size_t i = 0; i < image.pixels.bytes.Size(); ++i) bytes[i] = ~bytes[i];
  }
  return image;
}

std::optional<EncodedImage> PassJpegThrough(const ImagePlan& plan, Bytes file, int) {
  return PassThrough(plan, file, Filter::kDct);
}

bool IsJpeg(Bytes head) {
  return StartsWith(head, "\xFF\xD8\xFF");
}

}  // namespace

const Decoder kJpegDecoder{Format::kJpeg, "JPEG",      IsJpeg,         PlanJpeg,
                           DecodeJpeg,    JpegProfile, PassJpegThrough};

}  // namespace pictures
