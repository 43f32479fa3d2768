// gif_decoder.cpp - GIF: its frames, decoded by giflib and laid over each other.
#include <gif_lib.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "formats/canvas.h"
#include "formats/decoder.h"
#include "formats/film.h"

namespace pictures {
namespace {

[[noreturn]] void ThrowDamaged(int code) {
  const char* text = GifErrorString(code);
  throw Undecodable(std::string("giflib: ") + (text == nullptr ? "damaged" : text));
}

int ReadBytes(GifFileType* gif, GifByteType* to, int size) {
  auto* rest = static_cast<Bytes*>(gif->UserData);
  const size_t count = std::min(rest->size(), static_cast<size_t>(size));
  if (count > 0) std::memcpy(to, rest->data(), count);
  *rest = rest->subspan(count);
  return static_cast<int>(count);
}

struct GifFrame {
  Canvas::Area area;
  bool interlaced = false;
  int disposal = DISPOSAL_UNSPECIFIED;
  int transparent = NO_TRANSPARENT_COLOR;

  bool Hides(uint32_t canvasWidth, uint32_t canvasHeight) const {
    return area.Covers(canvasWidth, canvasHeight) && transparent == NO_TRANSPARENT_COLOR;
  }
};

// Walks the frames of a file.
class GifReader {
 public:
  explicit GifReader(Bytes file) : rest_(file) {
    int code = 0;
    gif_.reset(DGifOpen(&rest_, ReadBytes, &code));
    if (!gif_) ThrowDamaged(code);
  }

  uint32_t Width() const { return static_cast<uint32_t>(gif_->SWidth); }
  uint32_t Height() const { return static_cast<uint32_t>(gif_->SHeight); }

  // Goes to the next frame; false behind the last.
  bool Next(GifFrame* frame) {
    GraphicsControlBlock control{DISPOSAL_UNSPECIFIED, false, 0, NO_TRANSPARENT_COLOR};
    for (;;) {
      GifRecordType type = UNDEFINED_RECORD_TYPE;
      Check(DGifGetRecordType(gif_.get(), &type));
      if (type == TERMINATE_RECORD_TYPE) return false;
      if (type == IMAGE_DESC_RECORD_TYPE) break;
      if (type == EXTENSION_RECORD_TYPE) ReadExtension(&control);
    }
    Check(DGifGetImageDesc(gif_.get()));
    const GifImageDesc& image = gif_->Image;
    *frame = {{static_cast<uint32_t>(image.Left), static_cast<uint32_t>(image.Top),
               static_cast<uint32_t>(image.Width), static_cast<uint32_t>(image.Height)},
              image.Interlace,
              control.DisposalMode,
              control.TransparentColor};
    return true;
  }

  // Passes over the pixels of the frame at hand.
  void SkipPixels() {
    int codeSize = 0;
    GifByteType* block = nullptr;
    Check(DGifGetCode(gif_.get(), &codeSize, &block));
    while (block != nullptr) Check(DGifGetCodeNext(gif_.get(), &block));
  }

  // The next row of the frame, in the order in which they are stored.
  void ReadRow(uint8_t* row, uint32_t width) {
    Check(DGifGetLine(gif_.get(), row, static_cast<int>(width)));
  }

  // The colours of the frame at hand.
  const ColorMapObject& Colours() {
    const ColorMapObject* map =
        gif_->Image.ColorMap != nullptr ? gif_->Image.ColorMap : gif_->SColorMap;
    if (map == nullptr) throw ImageError("is a GIF file without colours; save the picture again");
    return *map;
  }

 private:
  struct Close {
    void operator()(GifFileType* gif) const { DGifCloseFile(gif, nullptr); }
  };

  void Check(int result) {
    if (result == GIF_OK) return;
    if (rest_.empty()) throw CutOff();
    ThrowDamaged(gif_->Error);
  }

  void ReadExtension(GraphicsControlBlock* control) {
    int code = 0;
    GifByteType* block = nullptr;
    Check(DGifGetExtension(gif_.get(), &code, &block));
    if (block != nullptr && code == GRAPHICS_EXT_FUNC_CODE) {
      DGifExtensionToGCB(block[0], block + 1, control);
    }
    while (block != nullptr) Check(DGifGetExtensionNext(gif_.get(), &block));
  }

  Bytes rest_;
  std::unique_ptr<GifFileType, Close> gif_;
};

std::vector<ImagePlan> PlanGif(Bytes file, const ReadLimits& limits) {
  GifReader reader(file);
  ImagePlan plan;
  plan.format = Format::kGif;
  plan.width = reader.Width();
  plan.height = reader.Height();
  CheckSize(plan.width, plan.height, limits);
  plan.palette = true;
  plan.decodeReason = "GIF, which PDF does not know";
  // The film's file, its canvas and what that was before, of four bytes a pixel, and the rasters.
  SetMemory(static_cast<double>(file.size()) +
                static_cast<double>(plan.width) * plan.height * (4 + 4 + 3 + 1),
            limits, &plan);
  std::vector<ImagePlan> plans;
  GifFrame frame;
  unsigned frames = 0;
  for (; reader.Next(&frame); ++frames) {
    reader.SkipPixels();
    if (frames > 0 && !limits.allFrames) continue;
    plan.alpha = !frame.Hides(plan.width, plan.height);
    plan.place = frames;
    plans.push_back(plan);
  }
  if (plans.empty()) throw ImageError("is a GIF file without pictures; save or export it again");
  NumberFrames(frames, &plans);
  ShareFilms(&plans);
  return plans;
}

// Where row `i` of those that are stored belongs: an interlaced frame has every eighth first.
uint32_t RowOf(const GifFrame& frame, uint32_t i) {
  if (!frame.interlaced) return i;
  constexpr uint32_t kFirst[] = {0, 4, 2, 1}, kStep[] = {8, 8, 4, 2};
  for (size_t pass = 0; pass < 4; ++pass) {
    const uint32_t height = frame.area.height;
    const uint32_t rows =
        height <= kFirst[pass] ? 0 : (height - kFirst[pass] - 1) / kStep[pass] + 1;
    if (i < rows) return kFirst[pass] + i * kStep[pass];
    i -= rows;
  }
  return 0;  // not reached: the passes have all rows
}

Canvas::Disposal DisposalOf(const GifFrame& frame) {
  return frame.disposal == DISPOSE_BACKGROUND ? Canvas::Disposal::kIsCleared
         : frame.disposal == DISPOSE_PREVIOUS ? Canvas::Disposal::kUncovers
                                              : Canvas::Disposal::kStays;
}

void DrawRow(const GifFrame& frame, const ColorMapObject& colours, uint32_t y, const uint8_t* row,
             Canvas* canvas) {
  const Canvas::Area& area = frame.area;
  for (uint32_t x = 0; x < area.width && area.left + x < canvas->Width(); ++x) {
    if (row[x] == frame.transparent) continue;
    const GifColorType black{0, 0, 0};
    const GifColorType& colour = row[x] < colours.ColorCount ? colours.Colors[row[x]] : black;
    const uint8_t pixel[] = {colour.Red, colour.Green, colour.Blue, 255};
    std::memcpy(canvas->At(area.left + x, y), pixel, sizeof pixel);
  }
}

void Draw(const GifFrame& frame, GifReader* reader, Canvas* canvas) {
  canvas->Begin(frame.area, DisposalOf(frame));
  const ColorMapObject& colours = reader->Colours();
  Buffer row(frame.area.width);
  for (uint32_t i = 0; i < frame.area.height; ++i) {
    reader->ReadRow(row.Data(), frame.area.width);
    const uint32_t y = frame.area.top + RowOf(frame, i);
    if (y < canvas->Height()) DrawRow(frame, colours, y, row.Data(), canvas);
  }
}

class GifFilm : public Film {
 public:
  GifFilm(const ImagePlan& plan, Bytes file)
      : Film(file), reader_(File()), canvas_(plan.width, plan.height, 8, 3) {}

 private:
  void DrawNext() override {
    GifFrame frame;
    if (!reader_.Next(&frame)) throw CutOff();
    Draw(frame, &reader_, &canvas_);
  }
  DecodedImage Seen() const override { return canvas_.Split(); }

  GifReader reader_;
  Canvas canvas_;
};

DecodedImage DecodeGif(const ImagePlan& plan, Bytes file, std::vector<Note>*) {
  return DecodeFrame<GifFilm>(plan, file, plan.place);
}

bool IsGif(Bytes head) {
  return StartsWith(head, "GIF87a") || StartsWith(head, "GIF89a");
}

}  // namespace

const Decoder kGifDecoder{Format::kGif, "GIF", IsGif, PlanGif, DecodeGif, nullptr, nullptr};

}  // namespace pictures
