// tiff_decoder.cpp - TIFF: every page of it, as it is stored or decoded by libtiff.
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "formats/decoder.h"
#include "formats/exif.h"
#include "formats/tiff_file.h"
#include "formats/tiff_page.h"
#include "formats/tiff_stored.h"

namespace pictures {
namespace {

using namespace std::string_view_literals;

// What libtiff may take at once: as much as the pixels twice over, for codecs that work on wider
// samples; what a file holds besides pixels; and some room for tables.
uint64_t MostAtOnce(Bytes file, uint64_t pixelBytes) {
  constexpr uint64_t kRoom = uint64_t{16} << 20;
  return 2 * pixelBytes + file.size() + kRoom;
}

Resolution ReadResolution(TIFF* tiff) {
  float x = 0, y = 0;
  if (TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x) != 1) x = 0;
  if (TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y) != 1) y = x;
  uint16_t unit = RESUNIT_INCH;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
  const double inches = unit == RESUNIT_INCH ? 1 : unit == RESUNIT_CENTIMETER ? 2.54 : 0;
  return {x * inches, y * inches};
}

Bytes ReadProfile(TIFF* tiff) {
  uint32_t size = 0;
  void* data = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &size, &data) != 1) return {};
  return {static_cast<const uint8_t*>(data), size};
}

void PlanPage(TiffFile& file, Bytes bytes, const ReadLimits& limits, ImagePlan* plan) {
  TIFF* tiff = file.Get();
  const TiffPage page = ReadTiffPage(file, &plan->notes);
  CheckSize(page.width, page.height, limits);
  if (TIFFIsTiled(tiff) != 0) {
    uint32_t width = 0, height = 0;
    TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_TILELENGTH, &height);
    CheckSize(width, height, limits);
  }
  if (TIFFIsCODECConfigured(page.compression) == 0) {
    throw ImageError("has a TIFF compression that is not known here (" +
                     std::to_string(page.compression) + "); save it with LZW or Deflate");
  }
  plan->width = page.width;
  plan->height = page.height;
  plan->depth = page.converted ? 8 : page.bits;
  plan->colour = page.colour;
  plan->palette = page.IsPalette();
  plan->alpha = page.alpha != TiffPage::Alpha::kNone;
  plan->resolution = ReadResolution(tiff);
  plan->place = TIFFCurrentDirOffset(tiff);
  plan->decodeReason = WhyDecodeTiff(file, page, bytes);
  const double memory = DecodingMemory(page, tiff);
  if (!plan->PassesThrough()) {
    SetMemory(memory, limits, plan);
  } else {  // unless it turns out to be damaged, and then only where it may be
    plan->size = static_cast<size_t>(StoredTiffSize(tiff));
    CheckStored(*plan);
    plan->fax = FindFax(file, page);
    if (memory <= static_cast<double>(limits.MostBytes())) SetMemory(memory, limits, plan);
  }
  uint16_t orientation = 1;
  if (TIFFGetField(tiff, TIFFTAG_ORIENTATION, &orientation) == 1) {
    ApplyExif({int{orientation}, {}}, plan);
  }
  JudgeProfile(plan, ReadProfile(tiff));
}

// The current page, or why it cannot be used: the others may be good.
ImagePlan TryPlanPage(TiffFile& file, Bytes bytes, const ReadLimits& limits) {
  ImagePlan plan;
  plan.format = Format::kTiff;
  try {
    if (file.HasError()) file.ThrowDamaged();
    PlanPage(file, bytes, limits, &plan);
    if (file.HasError()) file.ThrowDamaged();
  } catch (const ImageError& error) {
    plan.error = error.what();
  }
  file.TakeError();
  return plan;
}

bool IsPreviewOrMask(TIFF* tiff) {
  uint32_t kind = 0;
  TIFFGetField(tiff, TIFFTAG_SUBFILETYPE, &kind);
  return (kind & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) != 0;
}

std::vector<ImagePlan> PlanTiff(Bytes bytes, const ReadLimits& limits) {
  TiffFile file(bytes, MostAtOnce(bytes, limits.MostBytes()));
  std::vector<ImagePlan> plans;
  size_t leftOut = 0;
  for (bool read = true;;) {
    if (read && IsPreviewOrMask(file.Get())) {
      ++leftOut;
      file.TakeError();
    } else {
      plans.push_back(TryPlanPage(file, bytes, limits));
    }
    if (plans.size() > kMostPages) break;  // its directories may go on in a circle
    // A directory that cannot be read may still say where the next one is.
    const uint64_t place = TIFFCurrentDirOffset(file.Get());
    read = TIFFReadDirectory(file.Get()) == 1;
    if (!read && (!file.HasError() || TIFFCurrentDirOffset(file.Get()) == place)) break;
  }
  if (plans.empty()) throw ImageError("holds previews only, no picture; save or export it again");
  NumberPages(&plans);
  if (leftOut > 0) {
    plans[0].notes.push_back(
        {false, "its " + std::to_string(leftOut) + " previews or masks were left out"});
  }
  const std::string warning = file.TakeWarning();
  if (!warning.empty()) plans[0].notes.push_back({false, "libtiff: " + warning});
  return plans;
}

// The page of the plan, which has said its notes.
TiffPage ReadPlannedPage(TiffFile& file, const ImagePlan& plan) {
  std::vector<Note> said;
  const TiffPage page = ReadTiffPage(file, &said);
  if (page.width != plan.width || page.height != plan.height) file.ThrowDamaged();
  return page;
}

std::optional<EncodedStream> PlannedStream(const ImagePlan& plan, Bytes bytes) {
  if (std::optional<EncodedStream> fax = StoredFaxStream(plan, bytes)) return fax;
  TiffFile file(bytes, MostAtOnce(bytes, plan.memory), plan.place);
  const TiffPage page = ReadPlannedPage(file, plan);
  if (!WhyDecodeTiff(file, page, bytes).empty()) return std::nullopt;
  return StoredTiffStream(file, page, bytes);
}

std::optional<EncodedImage> PassTiffThrough(const ImagePlan& plan, Bytes bytes, int) {
  std::optional<EncodedStream> stream = PlannedStream(plan, bytes);
  if (!stream) return std::nullopt;
  EncodedImage image;
  image.pixels = std::move(*stream);
  return image;
}

DecodedImage DecodeTiff(const ImagePlan& plan, Bytes bytes, std::vector<Note>* notes) {
  TiffFile file(bytes, MostAtOnce(bytes, plan.memory), plan.place);
  const TiffPage page = ReadPlannedPage(file, plan);
  if (plan.memory == 0) file.ThrowDamaged();  // it should have passed through
  DecodedImage image = DecodeTiffPage(file, page);
  if (file.HasError()) file.ThrowDamaged();
  const std::string warning = file.TakeWarning();
  if (page.IsFax() && !warning.empty()) {
    notes->push_back({true, "is damaged and may show faults (libtiff: " + warning + ")"});
  } else if (!warning.empty()) {
    notes->push_back({false, "libtiff: " + warning});
  }
  return image;
}

Buffer TiffProfile(const ImagePlan& plan, Bytes bytes) {
  const TiffFile file(bytes, MostAtOnce(bytes, plan.memory), plan.place);
  return Buffer::CopyOf(ReadProfile(file.Get()));
}

bool IsTiff(Bytes head) {
  return StartsWith(head, "II*\0"sv) || StartsWith(head, "MM\0*"sv) ||
         StartsWith(head, "II+\0"sv) || StartsWith(head, "MM\0+"sv);  // the two with 64 bits
}

}  // namespace

const Decoder kTiffDecoder{Format::kTiff, "TIFF",      IsTiff,         PlanTiff,
                           DecodeTiff,    TiffProfile, PassTiffThrough};

}  // namespace pictures
