// heif_decoder.cpp - HEIF, HEIC and AVIF, decoded by libheif, which turns pictures upright itself.
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "formats/boxes.h"
#include "formats/decoder.h"
#include "formats/exif.h"
#include "formats/heif_library.h"
#include "formats/icc.h"
#include "formats/planes.h"
#include "formats/samples.h"

namespace pictures {
namespace {

using namespace std::string_view_literals;

struct FreeContext {
  void operator()(heif_context* context) const { Heif().heif_context_free(context); }
};
struct FreeHandle {
  void operator()(const heif_image_handle* handle) const {
    Heif().heif_image_handle_release(handle);
  }
};
struct FreeHeifImage {
  void operator()(const heif_image* image) const { Heif().heif_image_release(image); }
};
using Handle = std::unique_ptr<heif_image_handle, FreeHandle>;
using HeifImage = std::unique_ptr<heif_image, FreeHeifImage>;

void Require(const heif_error& error) {
  if (error.code == heif_error_Ok) return;
  throw ImageError(std::string("cannot be decoded (libheif: ") + error.message +
                   "); the file is damaged or of a kind that is not known here, save it as JPEG "
                   "or PNG");
}

class HeifFile {
 public:
  HeifFile(Bytes file, uint64_t maxPixels) : context_(Heif().heif_context_alloc()) {
    if (!context_) throw std::bad_alloc();
    const double side = std::ceil(std::sqrt(static_cast<double>(maxPixels)));
    Heif().heif_context_set_maximum_image_size_limit(context_.get(),
                                                     static_cast<int>(std::min(side, 65535.0)));
    Heif().heif_context_set_max_decoding_threads(context_.get(), 0);
    Require(Heif().heif_context_read_from_memory_without_copy(context_.get(), file.data(),
                                                              file.size(), nullptr));
  }
  heif_item_id MainPicture() const {
    heif_item_id id = 0;
    Require(Heif().heif_context_get_primary_image_ID(context_.get(), &id));
    return id;
  }
  // All that stand for themselves, thumbnails and the like left out.
  std::vector<heif_item_id> Pictures() const {
    const int count = Heif().heif_context_get_number_of_top_level_images(context_.get());
    std::vector<heif_item_id> ids(static_cast<size_t>(count));
    Heif().heif_context_get_list_of_top_level_image_IDs(context_.get(), ids.data(), count);
    return ids;
  }
  Handle Open(heif_item_id id) const {
    heif_image_handle* handle = nullptr;
    Require(Heif().heif_context_get_image_handle(context_.get(), id, &handle));
    return Handle(handle);
  }

 private:
  std::unique_ptr<heif_context, FreeContext> context_;
};

bool HasAlpha(const heif_image_handle* handle) {
  return Heif().heif_image_handle_has_alpha_channel(handle) != 0;
}

// Where it is upright already, EXIF's orientation is none.
Resolution ReadResolution(const heif_image_handle* handle) {
  heif_item_id id = 0;
  if (Heif().heif_image_handle_get_list_of_metadata_block_IDs(handle, "Exif", &id, 1) != 1)
    return {};
  const size_t size = Heif().heif_image_handle_get_metadata_size(handle, id);
  if (size < 4) return {};
  Buffer block(size);
  if (Heif().heif_image_handle_get_metadata(handle, id, block.Data()).code != heif_error_Ok)
    return {};
  const uint64_t begin = uint64_t{4} + Be32(block.Data());
  return ReadExif(Slice(block.View(), begin, size - std::min<uint64_t>(begin, size))).resolution;
}

Buffer ReadProfile(const heif_image_handle* handle) {
  const heif_color_profile_type type = Heif().heif_image_handle_get_color_profile_type(handle);
  if (type != heif_color_profile_type_rICC && type != heif_color_profile_type_prof) return {};
  Buffer profile(Heif().heif_image_handle_get_raw_color_profile_size(handle));
  Require(Heif().heif_image_handle_get_raw_color_profile(handle, profile.Data()));
  return profile;
}

// Colours by numbers (ITU-T H.273) that are not about those of sRGB.
void NoteOtherColours(const heif_image_handle* handle, ImagePlan* plan) {
  if (plan->profile != ProfileUse::kNone) return;
  heif_color_profile_nclx* found = nullptr;
  const heif_error error = Heif().heif_image_handle_get_nclx_color_profile(handle, &found);
  const std::unique_ptr<heif_color_profile_nclx, decltype(Heif().heif_nclx_color_profile_free)>
      colours(found, Heif().heif_nclx_color_profile_free);
  if (error.code != heif_error_Ok) return;
  const bool wide = colours->color_primaries >= heif_color_primaries_ITU_R_BT_2020_2_and_2100_0;
  const bool bright =
      colours->transfer_characteristics == heif_transfer_characteristic_ITU_R_BT_2100_0_PQ ||
      colours->transfer_characteristics == heif_transfer_characteristic_ITU_R_BT_2100_0_HLG;
  if (!wide && !bright) return;
  plan->notes.push_back({true,
                         "its colours are wider or brighter than sRGB's and have no profile: "
                         "they will look duller than they are; save it with a profile"});
}

bool HasFilm(Bytes file) {
  BoxWalk walk(file);
  while (walk.Next()) {
    if (walk.type == "moov") return true;
  }
  return false;
}

ImagePlan PlanPicture(const HeifFile& file, heif_item_id id, const ReadLimits& limits) {
  const Handle handle = file.Open(id);
  ImagePlan plan;
  plan.format = Format::kHeif;
  plan.width = static_cast<uint32_t>(Heif().heif_image_handle_get_width(handle.get()));
  plan.height = static_cast<uint32_t>(Heif().heif_image_handle_get_height(handle.get()));
  plan.depth = Heif().heif_image_handle_get_luma_bits_per_pixel(handle.get());
  plan.place = id;
  plan.alpha = HasAlpha(handle.get());
  plan.decodeReason = "HEIF, which PDF does not know";
  CheckSize(plan.width, plan.height, limits);
  if (plan.depth < 1 || plan.depth > 16) {
    throw ImageError("has no samples that are known here; save it as JPEG or PNG");
  }
  // The codec's planes, libheif's pixels, and those of the result.
  const int samples = 4 + 4 + Channels(plan.colour) + (plan.alpha ? 1 : 0);
  SetMemory(static_cast<double>(plan.width) * plan.height * samples * (plan.depth > 8 ? 2 : 1),
            limits, &plan);
  plan.resolution = ReadResolution(handle.get());
  JudgeProfile(&plan, ReadProfile(handle.get()).View());
  NoteOtherColours(handle.get(), &plan);
  return plan;
}

std::vector<ImagePlan> PlanHeif(Bytes bytes, const ReadLimits& limits) {
  const HeifFile file(bytes, limits.maxPixels);
  const std::vector<heif_item_id> all = file.Pictures();
  std::vector<ImagePlan> plans;
  if (limits.allFrames) {
    for (const heif_item_id id : all) plans.push_back(PlanPicture(file, id, limits));
    NumberPages(&plans);
  }
  if (plans.empty()) plans.push_back(PlanPicture(file, file.MainPicture(), limits));
  std::vector<Note>& notes = plans[0].notes;
  if (plans.size() < all.size()) {
    notes.push_back(
        {true, "only the main one of its " + std::to_string(all.size()) + " pictures was used"});
  }
  if (HasFilm(bytes)) notes.push_back({true, "its film was left out, all but its pictures"});
  return plans;
}

// Samples of 16 bits, first as many as the codec has, over the whole range; colours as they are
// without their opacity.
void Widen(int bits, Raster* pixels) {
  uint8_t* at = pixels->bytes.Data();
  for (size_t i = pixels->bytes.Size() / 2; i > 0; --i, at += 2) {
    const unsigned sample = Rescale(std::min(Be16(at), MaxSample(bits)), bits, 16);
    at[0] = static_cast<uint8_t>(sample >> 8);
    at[1] = static_cast<uint8_t>(sample);
  }
}

void DivideByAlpha(const Raster& alpha, Raster* pixels) {
  const auto channels = static_cast<size_t>(pixels->channels);
  for (uint32_t y = 0; y < pixels->height; ++y) {
    SampleWriter to(pixels->Row(y), pixels->bits);
    for (size_t i = 0; i < pixels->width * channels; ++i) {
      const unsigned opacity = SampleAt(alpha.Row(y), i / channels, alpha.bits);
      const unsigned stored = SampleAt(pixels->Row(y), i, pixels->bits);
      to.Put(Unpremultiply(stored, pixels->bits, opacity, alpha.bits));
    }
  }
}

DecodedImage DecodeHeif(const ImagePlan& plan, Bytes bytes, std::vector<Note>*) {
  constexpr uint64_t kMargin = uint64_t{1} << 22;  // pictures are coded in blocks
  const HeifFile file(bytes, 2 * uint64_t{plan.width} * plan.height + kMargin);
  const Handle handle = file.Open(static_cast<heif_item_id>(plan.place));
  const bool alpha = HasAlpha(handle.get()), deep = plan.depth > 8;
  const heif_chroma chroma =
      deep ? (alpha ? heif_chroma_interleaved_RRGGBBAA_BE : heif_chroma_interleaved_RRGGBB_BE)
           : (alpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB);
  heif_image* decoded = nullptr;
  Require(Heif().heif_decode_image(handle.get(), &decoded, heif_colorspace_RGB, chroma, nullptr));
  const HeifImage image(decoded);
  int stride = 0;
  const uint8_t* from =
      Heif().heif_image_get_plane_readonly(decoded, heif_channel_interleaved, &stride);
  Raster pixels(plan.width, plan.height, deep ? 16 : 8, alpha ? 4 : 3);
  if (from == nullptr || stride < static_cast<int>(pixels.Stride()) ||
      Heif().heif_image_get_width(decoded, heif_channel_interleaved) !=
          static_cast<int>(plan.width) ||
      Heif().heif_image_get_height(decoded, heif_channel_interleaved) !=
          static_cast<int>(plan.height)) {
    throw Damaged("it has two sizes");
  }
  for (uint32_t y = 0; y < plan.height; ++y) {
    std::copy_n(from + static_cast<size_t>(stride) * y, pixels.Stride(), pixels.Row(y));
  }
  const int bits = Heif().heif_image_get_bits_per_pixel_range(decoded, heif_channel_interleaved);
  if (deep && bits >= 1 && bits < 16) Widen(bits, &pixels);
  if (!alpha) return {std::move(pixels), {}};
  DecodedImage split = SplitAlpha(pixels);
  if (Heif().heif_image_handle_is_premultiplied_alpha(handle.get()) != 0) {
    DivideByAlpha(*split.alpha, &split.pixels);
  }
  return split;
}

Buffer HeifProfile(const ImagePlan& plan, Bytes bytes) {
  const HeifFile file(bytes, UINT32_MAX);
  return ReadProfile(file.Open(static_cast<heif_item_id>(plan.place)).get());
}

// By the brand that the file names first.
bool IsHeif(Bytes head) {
  constexpr std::array kBrands{"heic"sv, "heix"sv, "heim"sv, "heis"sv, "hevc"sv, "hevx"sv,
                               "mif1"sv, "msf1"sv, "miaf"sv, "avif"sv, "avis"sv};
  if (head.size() < 12 || !StartsWith(head.subspan(4), "ftyp")) return false;
  return std::any_of(kBrands.begin(), kBrands.end(),
                     [&](std::string_view brand) { return StartsWith(head.subspan(8), brand); });
}

}  // namespace

const Decoder kHeifDecoder{Format::kHeif, "HEIF",      IsHeif, PlanHeif,
                           DecodeHeif,    HeifProfile, nullptr};

}  // namespace pictures
