// decoder.h - what every picture format offers: recognise, plan (header only), encode.
//
// Decoders are given untrusted bytes. They check sizes before they take memory, never read outside
// their bytes, and report what they cannot do as an ImageError.
#ifndef JTPDF_PICTURES_DECODER_H
#define JTPDF_PICTURES_DECODER_H

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "bytes.h"
#include "image.h"

namespace pictures {

struct ReadLimits {
  uint64_t maxPixels = 500'000'000;
  bool allFrames = false;            // of animations, too, each a page; else their first alone
  const char* option = "maxPixels";  // what messages call that

  // What decoding one picture may take: four bytes for each pixel that is allowed.
  uint64_t MostBytes() const {
    constexpr uint64_t kLeast = uint64_t{64} << 20, kMost = uint64_t{1} << 60;
    return std::clamp(maxPixels, kLeast / 4, kMost / 4) * 4;
  }
};

struct Decoder {
  Format format;
  const char* name;                // "PNG"
  bool (*recognises)(Bytes head);  // by the first bytes, at most 64 of them
  // The pages in the file: one, but for TIFF, where a page may have an error of its own, and for
  // animations, where all their frames are asked for. Cheap: no pixel is decoded.
  std::vector<ImagePlan> (*plan)(Bytes file, const ReadLimits& limits);
  // Decodes. Called only for plans with a decodeReason.
  DecodedImage (*decode)(const ImagePlan& plan, Bytes file, std::vector<Note>* notes);
  // The embedded ICC profile, empty where there is none. Null for formats that have none.
  Buffer (*profile)(const ImagePlan& plan, Bytes file);
  // Describes the file's own bytes as an image of the PDF; what goes with them, a soft mask, is
  // compressed at the level. Nothing where they turn out to be damaged, so that they are decoded
  // after all. Called only for plans without a decodeReason; null where there are none.
  std::optional<EncodedImage> (*passThrough)(const ImagePlan& plan, Bytes file, int level);
};

// Of these only some may be in the build: JTPDF_WITH_HEIF and the like say so.
extern const Decoder kHeifDecoder;
extern const Decoder kJpegDecoder;
extern const Decoder kJpeg2000Decoder;
extern const Decoder kJxlDecoder;
extern const Decoder kPngDecoder;
extern const Decoder kTiffDecoder;
extern const Decoder kWebpDecoder;
extern const Decoder kBmpDecoder;
extern const Decoder kGifDecoder;
extern const Decoder kPnmDecoder;

// Those that are in this build.
std::span<const Decoder* const> Decoders();

// How many of a file's first bytes Recognise needs.
inline constexpr size_t kRecognisedBytes = 64;

// The decoder for a file that begins so; null for what is not a picture that the tool knows.
const Decoder* Recognise(Bytes head);
// The same, or an ImageError.
const Decoder& RecogniseOrThrow(Bytes head);
const Decoder& DecoderOf(Format format);

// Throws an ImageError unless the picture has pixels, and no more than the limit.
void CheckSize(uint64_t width, uint64_t height, const ReadLimits& limits);

// Throws an ImageError where the bytes that pass through are more than one PDF image can hold.
void CheckStored(const ImagePlan& plan);

// Enters in the plan how much memory decoding takes. Throws an ImageError where it is more than the
// limit. A double: sizes that lie overflow integers.
void SetMemory(double bytes, const ReadLimits& limits, ImagePlan* plan);

// The plans of a file with one picture.
std::vector<ImagePlan> OnlyPage(ImagePlan plan);

// The most pages that are taken from one file: a small file may hold millions of empty ones.
inline constexpr size_t kMostPages = 65535;

// Numbers the plans of a file's pages. Throws an ImageError where there are too many.
void NumberPages(std::vector<ImagePlan>* plans);

// Numbers the plans of an animation, or says in the only one that there are more frames.
void NumberFrames(unsigned frames, std::vector<ImagePlan>* plans);

// What a file says in pixels for each metre.
Resolution PerMetre(uint32_t x, uint32_t y);

// Turns the picture into what the PDF holds: its own bytes, or decoded ones, packed (level 0 to
// 12). `file` must outlive the result.
EncodedImage Encode(const ImagePlan& plan, Bytes file, int level);

// The `size` bytes at `place` as one image of that filter.
EncodedImage PassThrough(const ImagePlan& plan, Bytes file, Filter filter);

// Settles in the plan whether the profile can be declared: where it has the picture's components.
void JudgeProfile(ImagePlan* plan, Bytes profile);
// The same for one that is too large, or too damaged, to be had.
void LeaveProfileOut(ImagePlan* plan, bool tooLarge);

}  // namespace pictures

#endif  // JTPDF_PICTURES_DECODER_H
