// png_decoder.cpp - PNG: passed through where PDF can have its rows as they are, else decoded by
// libpng at its own depth.
//
// What passes through is trusted for its checksums: they cover each byte, at the speed of copying,
// while to inflate it all would take ten times as long. Of small pictures the stream is inflated,
// too. What remains is a large one that its own writer compressed wrong and summed up right.
#include <png.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "flate.h"
#include "formats/decoder.h"
#include "formats/exif.h"
#include "formats/film.h"
#include "formats/icc.h"
#include "formats/planes.h"
#include "formats/png_animation.h"
#include "formats/png_file.h"
#include "formats/samples.h"
#include "packing.h"

namespace pictures {
namespace {

struct Rgb {
  uint8_t red, green, blue;
};

// The palette with an alpha each, filled up to 256 entries: pixels may name any of them.
struct Palette {
  std::array<Rgb, 256> colours{};
  std::array<uint8_t, 256> alpha{};
  bool opaque = true;
  bool binary = true;  // every alpha is 0 or 255

  explicit Palette(const PngFacts& facts) {
    alpha.fill(255);
    if (!facts.IsPalette()) return;
    std::memcpy(colours.data(), facts.palette.data(), facts.palette.size());
    for (size_t i = 0; i < std::min<size_t>(facts.transparency.size(), 256); ++i) {
      alpha[i] = facts.transparency[i];
      opaque = opaque && alpha[i] == 255;
      binary = binary && (alpha[i] == 255 || alpha[i] == 0);
    }
  }
};

// The bits of the alpha that a picture has; 0 for none.
int AlphaBits(const PngFacts& facts, const Palette& palette) {
  if (facts.HasAlpha()) return facts.depth;
  if (facts.IsPalette()) return palette.opaque ? 0 : palette.binary ? 1 : 8;
  return facts.HasKey() ? 1 : 0;
}

Inflated UnpackProfile(const PngFacts& facts) {
  const Bytes chunk = facts.profile;
  const auto end = std::find(chunk.begin(), chunk.end(), 0);  // of the profile's name
  const size_t head = static_cast<size_t>(end - chunk.begin()) + 2;
  return head < chunk.size() ? Inflate(chunk.subspan(head), kMostProfile) : Inflated{};
}

// The rasters, and of an interlaced file all its rows.
double DecodingMemory(const PngFacts& facts, const ImagePlan& plan) {
  const double pixels = static_cast<double>(facts.width) * facts.height;
  const int alphaBits = AlphaBits(facts, Palette(facts));
  if (plan.PassesThrough()) return pixels * alphaBits / 8;
  const int bits = Channels(plan.colour) * std::max(facts.depth, facts.IsPalette() ? 8 : 1);
  return pixels * (bits + alphaBits) / 8 * (facts.interlaced ? 2 : 1);
}

// A key of 16 bits is compared by readers of PDF with the 8 bits that they keep.
bool KeyBecomesMask(const PngFacts& facts) {
  return facts.HasKey() && facts.depth == 16;
}

// A page for each frame of an animation, as it is seen over those before it. Their places count
// from 1: the still picture has 0.
std::vector<ImagePlan> PlanFrames(Bytes file, const PngFacts& facts, ImagePlan plan,
                                  const ReadLimits& limits) {
  plan.alpha = true;
  plan.size = 0;
  plan.decodeReason = "a frame of an animation, which PDF does not know";
  // The film's file, its canvas and what that was before, the frame and the file made of it, and
  // the rasters.
  const int samples = 6 * (Channels(plan.colour) + 1);
  SetMemory(static_cast<double>(file.size()) + static_cast<double>(plan.width) * plan.height *
                                                   samples * (plan.depth == 16 ? 2 : 1),
            limits, &plan);
  std::vector<ImagePlan> plans(ReadPngFrames(file, facts).size(), plan);
  if (plans.empty()) throw Damaged("the frames of its animation are not there");
  for (size_t i = 0; i < plans.size(); ++i) plans[i].place = i + 1;
  NumberPages(&plans);
  ShareFilms(&plans);
  return plans;
}

std::vector<ImagePlan> PlanPng(Bytes file, const ReadLimits& limits) {
  const PngFacts facts = ReadPngFacts(file);
  ImagePlan plan;
  plan.format = Format::kPng;
  plan.width = facts.width;
  plan.height = facts.height;
  plan.depth = facts.depth;
  CheckSize(plan.width, plan.height, limits);
  plan.palette = facts.IsPalette();
  plan.colour = facts.IsColour() ? Colour::kRgb : Colour::kGrey;
  plan.alpha = facts.HasAlpha() || !facts.transparency.empty();
  plan.size = facts.dataSize;
  if (facts.interlaced) {
    plan.decodeReason = "interlaced rows, which PDF does not know";
  } else if (facts.HasAlpha()) {
    plan.decodeReason = "alpha among the colours, which PDF has apart";
  } else if (facts.dataSize > kMostStored) {
    plan.decodeReason = "more than 4 GiB, the most one PDF image can hold";
  }
  SetMemory(DecodingMemory(facts, plan), limits, &plan);
  if (facts.density.size() == 9 && facts.density[8] == 1) {  // pixels per metre
    plan.resolution = PerMetre(Be32(&facts.density[0]), Be32(&facts.density[4]));
  }
  ApplyExif(ReadExif(facts.exif), &plan);
  if (!facts.profile.empty()) {
    const Inflated profile = UnpackProfile(facts);
    if (profile.bytes.Empty()) {
      LeaveProfileOut(&plan, profile.tooLarge);
    } else {
      JudgeProfile(&plan, profile.bytes.View());
    }
  }
  if (facts.frames > 1 && limits.allFrames) return PlanFrames(file, facts, std::move(plan), limits);
  if (facts.frames > 1) {
    plan.notes.push_back({true, "is an animation of " + std::to_string(facts.frames) +
                                    " frames; only its still picture was used"});
  }
  return OnlyPage(std::move(plan));
}

Buffer PngProfile(const ImagePlan&, Bytes file) {
  return UnpackProfile(ReadPngFacts(file)).bytes;
}

// libpng reports errors by a call that must not return: it jumps back into ReadRows.
struct PngSource {
  Bytes rest;
  char text[128] = "";
};

void Read(png_structp png, png_bytep to, size_t size) {
  auto* source = static_cast<PngSource*>(png_get_io_ptr(png));
  if (size > source->rest.size()) png_error(png, "the file was cut off");
  std::memcpy(to, source->rest.data(), size);
  source->rest = source->rest.subspan(size);
}

void Fail(png_structp png, png_const_charp text) {
  auto* source = static_cast<PngSource*>(png_get_error_ptr(png));
  std::snprintf(source->text, sizeof source->text, "%s", text);
  png_longjmp(png, 1);
}

void IgnoreWarning(png_structp, png_const_charp) {}

using RowSink = void (*)(void* to, uint32_t y, const uint8_t* row);

// Decodes the rows as the file packs them. Where `rows` is given they are stored there, which
// interlaced files need; else each is handed to `sink` and forgotten. Holds nothing with a
// destructor, for the jump passes through it.
bool ReadRows(PngSource* source, uint8_t* const* rows, uint8_t* oneRow, RowSink sink, void* to,
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

// The samples of the colour that is transparent; bits beyond the depth do not count.
std::vector<unsigned> KeyOf(const PngFacts& facts) {
  std::vector<unsigned> key;
  for (size_t c = 0; c < static_cast<size_t>(facts.Channels()); ++c) {
    key.push_back(Be16(&facts.transparency[2 * c]) & MaxSample(facts.depth));
  }
  return key;
}

// Turns rows as PNG packs them into the pixels and the alpha of the PDF, or one of them.
struct RowConverter {
  const PngFacts* facts;
  const Palette* palette;
  Raster* pixels;  // null for none, which is not for files that hold alpha
  Raster* alpha;   // null for none
  std::vector<unsigned> key = facts->HasKey() ? KeyOf(*facts) : std::vector<unsigned>();

  static void Convert(void* self, uint32_t y, const uint8_t* row) {
    static_cast<RowConverter*>(self)->ConvertRow(y, row);
  }

  void ConvertRow(uint32_t y, const uint8_t* row) {
    if (facts->HasAlpha()) {
      return SplitAlpha(row, pixels->width, PixelOf(*pixels), pixels->Row(y), alpha->Row(y));
    }
    if (pixels != nullptr && facts->IsPalette()) ColoursFromPalette(y, row);
    if (pixels != nullptr && !facts->IsPalette()) {
      std::memcpy(pixels->Row(y), row, pixels->Stride());
    }
    if (alpha == nullptr) return;
    facts->IsPalette() ? AlphaFromPalette(y, row) : AlphaFromKey(y, row);
  }

  void ColoursFromPalette(uint32_t y, const uint8_t* row) {
    uint8_t* to = pixels->Row(y);
    for (uint32_t x = 0; x < facts->width; ++x, to += 3) {
      std::memcpy(to, &palette->colours[SampleAt(row, x, facts->depth)], 3);
    }
  }

  void AlphaFromPalette(uint32_t y, const uint8_t* row) {
    SampleWriter packer(alpha->Row(y), alpha->bits);
    const int drop = 8 - alpha->bits;  // binary alphas say it all in their top bit
    for (uint32_t x = 0; x < facts->width; ++x) {
      packer.Put(palette->alpha[SampleAt(row, x, facts->depth)] >> drop);
    }
    packer.Finish();
  }

  // Pixels of exactly the tRNS colour are transparent, all others opaque.
  void AlphaFromKey(uint32_t y, const uint8_t* row) {
    SampleWriter packer(alpha->Row(y), 1);
    for (size_t x = 0; x < facts->width; ++x) {
      bool same = true;
      for (size_t c = 0; c < key.size(); ++c) {
        same = same && SampleAt(row, x * key.size() + c, facts->depth) == key[c];
      }
      packer.Put(same ? 0 : 1);
    }
    packer.Finish();
  }
};

// A header that promises more pixels than the file can hold is a lie, found here before memory is
// taken for them: bytes deflate to no less than about a thousandth.
void CheckPromise(const PngFacts& facts) {
  if (static_cast<uint64_t>(facts.Stride()) * facts.height / 1100 <= facts.dataSize) return;
  throw ImageError("is too small a file for its " + std::to_string(facts.width) + " x " +
                   std::to_string(facts.height) + " pixels; it is damaged, save it again");
}

// Hands each row of the file, from the top one on, to the converter.
void ConvertRows(const PngFacts& facts, Bytes file, RowConverter* converter) {
  PngSource source{file};
  const size_t stride = facts.Stride();
  bool done = false;
  if (facts.interlaced) {
    Buffer all(stride * facts.height);
    std::memset(all.Data(), 0, all.Size());
    std::vector<uint8_t*> rows(facts.height);
    for (uint32_t y = 0; y < facts.height; ++y) rows[y] = all.Data() + stride * y;
    done = ReadRows(&source, rows.data(), nullptr, nullptr, nullptr, facts.height, stride);
    for (uint32_t y = 0; done && y < facts.height; ++y) converter->ConvertRow(y, rows[y]);
  } else {
    Buffer row(stride);
    done = ReadRows(&source, nullptr, row.Data(), RowConverter::Convert, converter, facts.height,
                    stride);
  }
  if (!done) {
    throw Undecodable(std::string("libpng: ") + source.text);
  }
}

DecodedImage DecodeStill(Bytes file, Colour colour) {
  const PngFacts facts = ReadPngFacts(file);
  const Palette palette(facts);
  WholePngData(file);
  CheckPromise(facts);
  DecodedImage image;
  image.pixels =
      Raster(facts.width, facts.height, facts.IsPalette() ? 8 : facts.depth, Channels(colour));
  if (const int bits = AlphaBits(facts, palette); bits != 0) {
    image.alpha.emplace(facts.width, facts.height, bits, 1);
  }
  RowConverter converter{&facts, &palette, &image.pixels, image.alpha ? &*image.alpha : nullptr};
  ConvertRows(facts, file, &converter);
  return image;
}

class PngFilm : public Film {
 public:
  PngFilm(const ImagePlan& plan, Bytes file)
      : Film(file),
        facts_(ReadPngFacts(File())),
        frames_(ReadPngFrames(File(), facts_)),
        canvas_(plan.width, plan.height, plan.depth == 16 ? 16 : 8, Channels(plan.colour)),
        colour_(plan.colour) {
    WholePngData(File());
  }

 private:
  void DrawNext() override {
    if (Drawn() >= frames_.size()) throw Damaged("a frame of its animation is not there");
    const PngFrame& frame = frames_[static_cast<size_t>(Drawn())];
    const Buffer still = MakePngFile(facts_, frame);
    DrawPngFrame(frame, DecodeStill(still.View(), colour_), &canvas_);
  }
  DecodedImage Seen() const override { return canvas_.Split(); }

  PngFacts facts_;
  std::vector<PngFrame> frames_;
  Canvas canvas_;
  Colour colour_;
};

DecodedImage DecodePng(const ImagePlan& plan, Bytes file, std::vector<Note>*) {
  return plan.place == 0 ? DecodeStill(file, plan.colour)
                         : DecodeFrame<PngFilm>(plan, file, plan.place - 1);
}

// Inflates the stream of a picture that is small enough for that to take no time and little memory.
// Throws an ImageError where it is not one of as many rows as there are.
void CheckSmallStream(const PngFacts& facts, const std::vector<Bytes>& pieces) {
  constexpr uint64_t kSmall = uint64_t{1} << 20;
  const size_t row = facts.Stride() + 1;
  if (facts.height > kSmall / row || facts.dataSize > kSmall) return;
  Buffer joined;
  Bytes stream = pieces[0];
  if (pieces.size() > 1) {
    joined = Join(pieces);
    stream = joined.View();
  }
  const Buffer rows = InflateExactly(stream, row * facts.height);
  bool whole = !rows.Empty();
  for (uint32_t y = 0; whole && y < facts.height; ++y) whole = rows.Data()[row * y] <= 4;
  if (!whole) {
    throw ImageError(
        "cannot be decoded: its pixels are damaged or cut off; save the picture again");
  }
}

// The alpha of what passes through, decoded.
std::optional<EncodedStream> AlphaBeside(const PngFacts& facts, Bytes file, int level) {
  const Palette palette(facts);
  const int bits = AlphaBits(facts, palette);
  if (bits == 0 || (!facts.IsPalette() && !KeyBecomesMask(facts))) return {};
  Raster alpha(facts.width, facts.height, bits, 1);
  RowConverter converter{&facts, &palette, nullptr, &alpha};
  ConvertRows(facts, file, &converter);
  return PackAlpha(std::move(alpha), level);
}

std::optional<EncodedImage> PassPngThrough(const ImagePlan& plan, Bytes file, int level) {
  const PngFacts facts = ReadPngFacts(file);
  EncodedImage image;
  EncodedStream& pixels = image.pixels;
  pixels.pieces = WholePngData(file);
  CheckPromise(facts);
  CheckSmallStream(facts, pixels.pieces);
  pixels.predictor = 15;
  pixels.width = facts.width;
  pixels.height = facts.height;
  pixels.bits = facts.depth;
  pixels.colour = plan.colour;
  if (facts.IsPalette()) pixels.palette = Buffer::CopyOf(facts.palette);
  if (facts.HasKey() && !KeyBecomesMask(facts)) {
    for (const unsigned key : KeyOf(facts)) {
      pixels.colourKey.insert(pixels.colourKey.end(), 2, static_cast<int>(key));
    }
  }
  image.alpha = AlphaBeside(facts, file, level);
  return image;
}

bool IsPng(Bytes head) {
  return StartsWith(head, kPngSignature);
}

}  // namespace

const Decoder kPngDecoder{Format::kPng, "PNG",      IsPng,         PlanPng,
                          DecodePng,    PngProfile, PassPngThrough};

}  // namespace pictures
