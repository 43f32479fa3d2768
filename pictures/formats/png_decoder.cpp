// png_decoder.cpp - PNG: decoded by libpng, kept at its own depth.
//
// Palettes become RGB, or grey of as few bits as the entries need; alpha becomes a picture of its
// own for the soft mask. Facts outside the pixels are read from the chunks here, so that planning
// decodes nothing.
#include <png.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "flate.h"
#include "formats/decoder.h"
#include "formats/exif.h"
#include "formats/icc.h"
#include "formats/samples.h"

namespace pictures {
namespace {

using namespace std::string_view_literals;

constexpr auto kSignature = "\x89PNG\r\n\x1A\n"sv;

struct PngFacts {
  uint32_t width = 0;
  uint32_t height = 0;
  int depth = 0;
  int type = 0;  // PNG's colour type
  bool interlaced = false;
  uint32_t frames = 1;
  Bytes palette;
  Bytes transparency;
  Bytes density;
  Bytes profile;  // the iCCP chunk
  Bytes exif;

  bool Has(int bit) const { return (type & bit) != 0; }
  bool IsPalette() const { return type == PNG_COLOR_TYPE_PALETTE; }
};

PngFacts ReadFacts(Bytes file) {
  PngFacts facts;
  bool data = false;
  for (uint64_t at = kSignature.size();;) {
    const Bytes head = Slice(file, at, 8);
    const Bytes chunk = head.empty() ? Bytes{} : Slice(file, at + 8, Be32(head.data()));
    if (head.empty() || chunk.size() != Be32(head.data())) {
      throw CutOff();
    }
    const std::string_view name(reinterpret_cast<const char*>(&head[4]), 4);
    if (at == kSignature.size()) {
      if (name != "IHDR" || chunk.size() != 13) {
        throw ImageError("is damaged: a PNG file must begin with its header; save it again");
      }
      facts.width = Be32(&chunk[0]);
      facts.height = Be32(&chunk[4]);
      facts.depth = chunk[8];
      facts.type = chunk[9];
      facts.interlaced = chunk[12] != 0;
    }
    if (name == "PLTE") facts.palette = chunk;
    if (name == "tRNS") facts.transparency = chunk;
    if (name == "pHYs") facts.density = chunk;
    if (name == "iCCP") facts.profile = chunk;
    if (name == "eXIf") facts.exif = chunk;
    if (name == "acTL" && chunk.size() == 8 && !data) facts.frames = Be32(chunk.data());
    if (name == "IDAT") data = true;
    if (name == "IEND") break;
    at += 12 + chunk.size();
  }
  if (!data) throw ImageError("is a PNG file without pixels; save or export it again");
  return facts;
}

struct Rgb {
  uint8_t red, green, blue;
};

// The palette with an alpha each, filled up to 256 entries: pixels may name any of them.
struct Palette {
  std::array<Rgb, 256> colours{};
  std::array<uint8_t, 256> alpha{};
  bool grey = true;  // every entry is
  int greyBits = 1;  // and they all can be written in so many bits
  bool opaque = true;
  bool binary = true;  // every alpha is 0 or 255

  explicit Palette(const PngFacts& facts) {
    alpha.fill(255);
    const size_t count = std::min<size_t>(facts.palette.size() / 3, 256);
    for (size_t i = 0; i < count; ++i) {
      const uint8_t* rgb = &facts.palette[3 * i];
      colours[i] = {rgb[0], rgb[1], rgb[2]};
      grey = grey && rgb[0] == rgb[1] && rgb[1] == rgb[2];
      // k bits can say multiples of 255 / (2^k - 1): of 255, 85, 17 and 1.
      while (rgb[0] % (255 / ((1 << greyBits) - 1)) != 0) greyBits *= 2;
    }
    for (size_t i = 0; i < std::min<size_t>(facts.transparency.size(), 256); ++i) {
      alpha[i] = facts.transparency[i];
      opaque = opaque && alpha[i] == 255;
      binary = binary && (alpha[i] == 255 || alpha[i] == 0);
    }
  }
};

Inflated UnpackProfile(const PngFacts& facts) {
  const Bytes chunk = facts.profile;
  const auto end = std::find(chunk.begin(), chunk.end(), 0);  // of the profile's name
  const size_t head = static_cast<size_t>(end - chunk.begin()) + 2;
  return head < chunk.size() ? Inflate(chunk.subspan(head), kMostProfile) : Inflated{};
}

// The rasters, the row as the file packs it, and of an interlaced file all its rows.
double DecodingMemory(const PngFacts& facts, const ImagePlan& plan) {
  const int results = Channels(plan.colour) + (plan.alpha ? 1 : 0);
  const int bits = facts.IsPalette() ? 8 : facts.depth;
  const double pixels = static_cast<double>(facts.width) * facts.height;
  return pixels * results * bits / 8 * (facts.interlaced ? 2 : 1);
}

std::vector<ImagePlan> PlanPng(Bytes file, const ReadLimits& limits) {
  const PngFacts facts = ReadFacts(file);
  ImagePlan plan;
  plan.format = Format::kPng;
  plan.width = facts.width;
  plan.height = facts.height;
  plan.depth = facts.depth;
  CheckSize(plan.width, plan.height, limits);
  plan.palette = facts.IsPalette();
  plan.colour = facts.Has(PNG_COLOR_MASK_COLOR) ? Colour::kRgb : Colour::kGrey;
  if (plan.palette && Palette(facts).grey) plan.colour = Colour::kGrey;
  plan.alpha = facts.Has(PNG_COLOR_MASK_ALPHA) || !facts.transparency.empty();
  SetMemory(DecodingMemory(facts, plan), limits, &plan);
  plan.decodeReason = "PNG rows are filtered, which our Flate images are not";
  if (facts.density.size() == 9 && facts.density[8] == 1) {  // pixels per metre
    plan.resolution = {Be32(&facts.density[0]) * 0.0254, Be32(&facts.density[4]) * 0.0254};
    // 300 dpi is 11811.02 pixels per metre, of which the file keeps the whole ones.
    for (double* dpi : {&plan.resolution.x, &plan.resolution.y}) {
      const double whole = static_cast<double>(static_cast<int64_t>(*dpi + 0.5));
      if (whole > 0 && std::max(*dpi - whole, whole - *dpi) <= 0.0254 / 2) *dpi = whole;
    }
  }
  ApplyExif(ReadExif(facts.exif), &plan);
  if (facts.frames > 1) {
    plan.notes.push_back({true, "is an animation of " + std::to_string(facts.frames) +
                                    " frames; only its still picture was used"});
  }
  if (!facts.profile.empty()) {
    const Inflated profile = UnpackProfile(facts);
    if (profile.bytes.Empty()) {
      LeaveProfileOut(&plan, profile.tooLarge);
    } else {
      JudgeProfile(&plan, profile.bytes.View());
    }
  }
  std::vector<ImagePlan> plans;
  plans.push_back(std::move(plan));
  return plans;
}

Buffer PngProfile(const ImagePlan&, Bytes file) {
  return UnpackProfile(ReadFacts(file)).bytes;
}

// libpng reports errors by a call that must not return: it jumps back into ReadRows.
struct Source {
  Bytes rest;
  char text[128] = "";
};

void Read(png_structp png, png_bytep to, size_t size) {
  auto* source = static_cast<Source*>(png_get_io_ptr(png));
  if (size > source->rest.size()) png_error(png, "the file was cut off");
  std::memcpy(to, source->rest.data(), size);
  source->rest = source->rest.subspan(size);
}

void Fail(png_structp png, png_const_charp text) {
  auto* source = static_cast<Source*>(png_get_error_ptr(png));
  std::snprintf(source->text, sizeof source->text, "%s", text);
  png_longjmp(png, 1);
}

void IgnoreWarning(png_structp, png_const_charp) {}

using RowSink = void (*)(void* to, uint32_t y, const uint8_t* row);

// Decodes the rows as the file packs them. Where `rows` is given they are stored there, which
// interlaced files need; else each is handed to `sink` and forgotten. Holds nothing with a
// destructor, for the jump passes through it.
bool ReadRows(Source* source, uint8_t* const* rows, uint8_t* oneRow, RowSink sink, void* to,
              uint32_t height, size_t stride) {
  png_infop info = nullptr;
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, source, Fail, IgnoreWarning);
  if (png != nullptr) info = png_create_info_struct(png);
  if (info == nullptr || setjmp(png_jmpbuf(png)) != 0) {
    png_destroy_read_struct(&png, &info, nullptr);
    return false;
  }
  png_set_read_fn(png, source, Read);
  png_set_user_limits(png, 0x7FFFFFFF, 0x7FFFFFFF);  // the plan has checked the size
  // Text and profiles are no concern here; they would only take memory and time.
  png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
  png_read_info(png, info);
  const int passes = png_set_interlace_handling(png);
  png_read_update_info(png, info);
  if (png_get_rowbytes(png, info) != stride || png_get_image_height(png, info) != height) {
    png_error(png, "two sizes");
  }
  if (rows != nullptr) {
    for (int pass = 0; pass < passes; ++pass) {
      for (uint32_t y = 0; y < height; ++y) png_read_row(png, rows[y], nullptr);
    }
  } else {
    for (uint32_t y = 0; y < height; ++y) {
      png_read_row(png, oneRow, nullptr);
      sink(to, y, oneRow);
    }
  }
  png_read_end(png, nullptr);
  png_destroy_read_struct(&png, &info, nullptr);
  return true;
}

// Turns rows as PNG packs them into the pixels and the alpha of the PDF.
struct RowConverter {
  const PngFacts* facts;
  const Palette* palette;
  Raster* pixels;
  Raster* alpha;  // null for none

  static void Convert(void* self, uint32_t y, const uint8_t* row) {
    static_cast<RowConverter*>(self)->ConvertRow(y, row);
  }

  void ConvertRow(uint32_t y, const uint8_t* row) {
    if (facts->IsPalette()) {
      FromPalette(y, row);
    } else if (facts->Has(PNG_COLOR_MASK_ALPHA)) {
      SplitAlpha(y, row);
    } else {
      std::memcpy(pixels->Row(y), row, pixels->Stride());
      if (alpha != nullptr) AlphaFromKey(y, row);
    }
  }

  void FromPalette(uint32_t y, const uint8_t* row) {
    if (pixels->channels == 1) {
      SampleWriter packer(pixels->Row(y), pixels->bits);
      const unsigned step = 255u / ((1u << pixels->bits) - 1);
      for (uint32_t x = 0; x < pixels->width; ++x) {
        packer.Put(palette->colours[SampleAt(row, x, facts->depth)].red / step);
      }
      packer.Finish();
    } else {
      uint8_t* to = pixels->Row(y);
      for (uint32_t x = 0; x < pixels->width; ++x, to += 3) {
        std::memcpy(to, &palette->colours[SampleAt(row, x, facts->depth)], 3);
      }
    }
    if (alpha == nullptr) return;
    SampleWriter packer(alpha->Row(y), alpha->bits);
    const int drop = 8 - alpha->bits;  // binary alphas say it all in their top bit
    for (uint32_t x = 0; x < pixels->width; ++x) {
      packer.Put(palette->alpha[SampleAt(row, x, facts->depth)] >> drop);
    }
    packer.Finish();
  }

  void SplitAlpha(uint32_t y, const uint8_t* row) {
    if (pixels->bits == 16) {
      pixels->channels == 1 ? Split<1, 2>(y, row) : Split<3, 2>(y, row);
    } else {
      pixels->channels == 1 ? Split<1, 1>(y, row) : Split<3, 1>(y, row);
    }
  }

  template <int channels, int size>
  void Split(uint32_t y, const uint8_t* from) {
    uint8_t* to = pixels->Row(y);
    uint8_t* toAlpha = alpha->Row(y);
    for (uint32_t x = 0; x < pixels->width; ++x) {
      std::memcpy(to, from, channels * size);
      std::memcpy(toAlpha, from + channels * size, size);
      to += channels * size;
      toAlpha += size;
      from += (channels + 1) * size;
    }
  }

  // Pixels of exactly the tRNS colour are transparent, all others opaque.
  void AlphaFromKey(uint32_t y, const uint8_t* row) {
    const unsigned mask = (1u << facts->depth) - 1;
    std::array<unsigned, 3> key{};
    for (int c = 0; c < pixels->channels; ++c) {
      key[c] = Be16(&facts->transparency[2 * static_cast<size_t>(c)]) & mask;
    }
    SampleWriter packer(alpha->Row(y), 1);
    for (size_t x = 0; x < pixels->width; ++x) {
      bool same = true;
      for (int c = 0; c < pixels->channels; ++c) {
        same = same && SampleAt(row, x * pixels->channels + c, facts->depth) == key[c];
      }
      packer.Put(same ? 0 : 1);
    }
    packer.Finish();
  }
};

DecodedImage DecodePng(const ImagePlan& plan, Bytes file, std::vector<Note>*) {
  const PngFacts facts = ReadFacts(file);
  const Palette palette(facts);
  const int stored =
      facts.IsPalette() ? 1 : Channels(plan.colour) + (facts.Has(PNG_COLOR_MASK_ALPHA) ? 1 : 0);
  if (facts.depth < 1 || facts.depth > 16 || (facts.IsPalette() && facts.depth > 8)) {
    throw ImageError("is damaged: " + std::to_string(facts.depth) + " bits; save it again");
  }
  // Bytes deflate to no less than about a thousandth; a header that promises more is a lie, found
  // here before memory is taken for it.
  const uint64_t raw = (uint64_t{facts.width} * facts.depth * stored + 7) / 8 * facts.height;
  if (raw / 1100 > file.size()) {
    throw ImageError("is too small a file for its " + std::to_string(facts.width) + " x " +
                     std::to_string(facts.height) + " pixels; it is damaged, save it again");
  }
  DecodedImage image;
  const int channels = Channels(plan.colour);
  const int bits = !facts.IsPalette() ? facts.depth : channels == 1 ? palette.greyBits : 8;
  image.pixels = Raster(facts.width, facts.height, bits, channels);
  const bool keyed = facts.transparency.size() >= 2u * channels && !facts.IsPalette();
  if (facts.Has(PNG_COLOR_MASK_ALPHA)) {
    image.alpha.emplace(facts.width, facts.height, facts.depth, 1);
  } else if (facts.IsPalette() ? !palette.opaque : keyed) {
    image.alpha.emplace(facts.width, facts.height, facts.IsPalette() && !palette.binary ? 8 : 1, 1);
  }
  RowConverter converter{&facts, &palette, &image.pixels, image.alpha ? &*image.alpha : nullptr};
  Source source{file};
  const Raster layout = [&] {  // how the file's own rows are packed
    Raster raster;
    raster.width = facts.width;
    raster.bits = facts.depth;
    raster.channels = stored;
    return raster;
  }();
  bool done = false;
  if (facts.interlaced) {
    Buffer all(layout.Stride() * facts.height);
    std::memset(all.Data(), 0, all.Size());
    std::vector<uint8_t*> rows(facts.height);
    for (uint32_t y = 0; y < facts.height; ++y) rows[y] = all.Data() + layout.Stride() * y;
    done = ReadRows(&source, rows.data(), nullptr, nullptr, nullptr, facts.height, layout.Stride());
    for (uint32_t y = 0; done && y < facts.height; ++y) converter.ConvertRow(y, rows[y]);
  } else {
    Buffer row(layout.Stride());
    done = ReadRows(&source, nullptr, row.Data(), RowConverter::Convert, &converter, facts.height,
                    layout.Stride());
  }
  if (!done) {
    throw ImageError(std::string("cannot be decoded (libpng: ") + source.text +
                     "); the file is damaged, save the picture again");
  }
  return image;
}

bool IsPng(Bytes head) {
  return StartsWith(head, kSignature);
}

}  // namespace

const Decoder kPngDecoder{Format::kPng, "PNG", IsPng, PlanPng, DecodePng, PngProfile, nullptr};

}  // namespace pictures
