// Boxes, colours and what the canvas appends for one shape.

#include <benchmark/benchmark.h>

#include "graphics/box.h"
#include "graphics/canvas.h"
#include "graphics/color.h"

namespace {

const JTPDFBox kUpright(56.6929, 113.3858, 170.0787, 85.0394);
const JTPDFBox kRotated(56.6929, 113.3858, 170.0787, 85.0394, 33);
constexpr JTPDFColor kFill(51, 102, 153, 255);
constexpr JTPDFColor kStroke(200, 10, 40, 255);

void BM_BoxAsMatrix(benchmark::State& state) {
  const JTPDFBox& box = state.range(0) != 0 ? kRotated : kUpright;
  for (auto _ : state) benchmark::DoNotOptimize(box.AsMatrix(true));
}
BENCHMARK(BM_BoxAsMatrix)->ArgName("rotated")->Arg(0)->Arg(1);

void BM_BoxAsArray(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(kUpright.AsArray());
}
BENCHMARK(BM_BoxAsArray);

void BM_ColorAsString(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(kFill.AsString(false));
}
BENCHMARK(BM_ColorAsString);

// Draws on a canvas that is cleared now and then, as a page's end does.
template <typename Draw>
void DrawRepeatedly(benchmark::State& state, const Draw& draw) {
  JTPDFCanvas canvas(1.0);
  int drawn = 0;
  for (auto _ : state) {
    draw(canvas);
    if (++drawn == 10000) {
      canvas.Clear();
      drawn = 0;
    }
  }
}

void BM_CanvasRectangle(benchmark::State& state) {
  const JTPDFBox& box = state.range(0) != 0 ? kRotated : kUpright;
  DrawRepeatedly(state, [&](JTPDFCanvas& canvas) { canvas.Rectangle(box, kFill, kStroke, 1.5); });
}
BENCHMARK(BM_CanvasRectangle)->ArgName("rotated")->Arg(0)->Arg(1);

void BM_CanvasCircle(benchmark::State& state) {
  DrawRepeatedly(state, [](JTPDFCanvas& canvas) { canvas.Circle(kUpright, kFill, kStroke, 1.5); });
}
BENCHMARK(BM_CanvasCircle);

void BM_CanvasImage(benchmark::State& state) {
  int image = 0;
  DrawRepeatedly(state, [&](JTPDFCanvas& canvas) { canvas.Image(++image % 1000, kUpright); });
}
BENCHMARK(BM_CanvasImage);

}  // namespace
