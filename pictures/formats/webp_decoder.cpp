// webp_decoder.cpp - WebP, and the frames of its animations: decoded by libwebp, always 8-bit RGB.
#include <webp/decode.h>
#include <webp/demux.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "formats/decoder.h"
#include "formats/exif.h"
#include "formats/film.h"
#include "formats/planes.h"

namespace pictures {
namespace {

struct DamagedWebp : Undecodable {
  DamagedWebp() : Undecodable("libwebp finds it damaged") {}
};

struct FreeDemuxer {
  void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};
using Demuxer = std::unique_ptr<WebPDemuxer, FreeDemuxer>;

struct FreeAnimation {
  void operator()(WebPAnimDecoder* decoder) const { WebPAnimDecoderDelete(decoder); }
};

WebPData AsData(Bytes file) {
  return {file.data(), file.size()};
}

Demuxer Demux(Bytes file) {
  const WebPData data = AsData(file);
  WebPDemuxState state = WEBP_DEMUX_PARSE_ERROR;
  Demuxer demuxer(WebPDemuxPartial(&data, &state));
  if (state == WEBP_DEMUX_PARSING_HEADER || state == WEBP_DEMUX_PARSED_HEADER) {
    throw CutOff();
  }
  if (!demuxer || state != WEBP_DEMUX_DONE) {
    throw ImageError("is a damaged WebP file (libwebp cannot parse it); save the picture again");
  }
  return demuxer;
}

// The chunk named so, a view into the file; empty where there is none.
Bytes Chunk(WebPDemuxer* demuxer, const char* name) {
  WebPChunkIterator chunk;
  Bytes bytes;
  if (WebPDemuxGetChunk(demuxer, name, 1, &chunk) != 0) {
    bytes = {chunk.chunk.bytes, chunk.chunk.size};
  }
  WebPDemuxReleaseChunkIterator(&chunk);
  return bytes;
}

bool HasAlpha(WebPDemuxer* demuxer) {
  return (WebPDemuxGetI(demuxer, WEBP_FF_FORMAT_FLAGS) & ALPHA_FLAG) != 0;
}

bool IsAnimated(WebPDemuxer* demuxer) {
  return (WebPDemuxGetI(demuxer, WEBP_FF_FORMAT_FLAGS) & ANIMATION_FLAG) != 0;
}

std::vector<ImagePlan> PlanWebp(Bytes file, const ReadLimits& limits) {
  const Demuxer demuxer = Demux(file);
  ImagePlan plan;
  plan.format = Format::kWebp;
  plan.width = WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_WIDTH);
  plan.height = WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_HEIGHT);
  CheckSize(plan.width, plan.height, limits);
  plan.alpha = HasAlpha(demuxer.get());
  // The rasters, and libwebp's own pixels of four bytes: those of frames, laid over each other, and
  // the film's file.
  const bool animated = IsAnimated(demuxer.get());
  const int each = animated ? 4 + 3 * 4 : plan.alpha ? 4 + 2 * 4 : 3 + 4;
  SetMemory(static_cast<double>(plan.width) * plan.height * each +
                (animated ? static_cast<double>(file.size()) : 0),
            limits, &plan);
  plan.decodeReason = "WebP, which PDF does not know";
  Bytes exif = Chunk(demuxer.get(), "EXIF");
  if (StartsWith(exif, std::string_view("Exif\0\0", 6))) exif = exif.subspan(6);  // some writers'
  ApplyExif(ReadExif(exif), &plan);
  JudgeProfile(&plan, Chunk(demuxer.get(), "ICCP"));
  const uint32_t frames = WebPDemuxGetI(demuxer.get(), WEBP_FF_FRAME_COUNT);
  std::vector<ImagePlan> plans;
  for (uint32_t i = 0; i < (limits.allFrames ? std::max(frames, 1u) : 1); ++i) {
    plan.place = i;
    plans.push_back(plan);
  }
  NumberFrames(frames, &plans);
  ShareFilms(&plans);
  return plans;
}

// A frame may cover a part of the canvas only, and show those before it.
class WebpFilm : public Film {
 public:
  WebpFilm(const ImagePlan& plan, Bytes file)
      : Film(file), width_(plan.width), height_(plan.height) {
    WebPAnimDecoderOptions options;
    WebPAnimDecoderOptionsInit(&options);
    options.color_mode = MODE_RGBA;
    const WebPData data = AsData(File());
    decoder_.reset(WebPAnimDecoderNew(&data, &options));
    if (!decoder_) throw DamagedWebp();
  }

 private:
  void DrawNext() override {
    int time = 0;
    if (WebPAnimDecoderGetNext(decoder_.get(), &canvas_, &time) == 0) throw DamagedWebp();
  }
  DecodedImage Seen() const override { return SplitAlpha(canvas_, width_, height_); }

  std::unique_ptr<WebPAnimDecoder, FreeAnimation> decoder_;
  uint8_t* canvas_ = nullptr;  // the decoder's
  uint32_t width_, height_;
};

DecodedImage DecodeWebp(const ImagePlan& plan, Bytes file, std::vector<Note>*) {
  const Demuxer demuxer = Demux(file);
  if (IsAnimated(demuxer.get())) return DecodeFrame<WebpFilm>(plan, file, plan.place);
  DecodedImage image;
  if (HasAlpha(demuxer.get())) {
    Buffer rgba(size_t{plan.width} * plan.height * 4);
    if (WebPDecodeRGBAInto(file.data(), file.size(), rgba.Data(), rgba.Size(),
                           static_cast<int>(plan.width) * 4) == nullptr) {
      throw DamagedWebp();
    }
    return SplitAlpha(rgba.Data(), plan.width, plan.height);
  }
  image.pixels = Raster(plan.width, plan.height, 8, 3);
  if (WebPDecodeRGBInto(file.data(), file.size(), image.pixels.bytes.Data(),
                        image.pixels.bytes.Size(),
                        static_cast<int>(image.pixels.Stride())) == nullptr) {
    throw DamagedWebp();
  }
  return image;
}

Buffer WebpProfile(const ImagePlan&, Bytes file) {
  return Buffer::CopyOf(Chunk(Demux(file).get(), "ICCP"));
}

bool IsWebp(Bytes head) {
  return StartsWith(head, "RIFF") && head.size() >= 12 && StartsWith(head.subspan(8), "WEBP");
}

}  // namespace

const Decoder kWebpDecoder{Format::kWebp, "WebP",      IsWebp, PlanWebp,
                           DecodeWebp,    WebpProfile, nullptr};

}  // namespace pictures
