// Objects, pages and the page tree, written to /dev/null.

#include <benchmark/benchmark.h>

#include <string>

#include "document/document.h"

namespace {

constexpr wchar_t kNowhere[] = L"/dev/null";
const JTPDFBox kPage(595, 842);

void BM_WriteDict(benchmark::State& state) {
  JTPDFDocument document(1.0, kNowhere, nullptr, nullptr);
  document.Initialize();
  const std::string dict = "/Contents 3 0 R\r\n/MediaBox [0.0000 0.0000 595.0000 842.0000]";
  const std::string stream(static_cast<std::size_t>(state.range(0)), 'x');
  for (auto _ : state) benchmark::DoNotOptimize(document.WriteDict(dict, stream, true));
}
// The iterations are bounded because every object's position is kept.
BENCHMARK(BM_WriteDict)->ArgName("stream")->Arg(0)->Arg(400)->Arg(100000)->Iterations(200000);

void BM_WritePage(benchmark::State& state) {
  JTPDFDocument document(1.0, kNowhere, nullptr, nullptr);
  document.Initialize();
  for (auto _ : state) document.WritePage(2, kPage, kPage);
}
BENCHMARK(BM_WritePage)->Iterations(200000);

void BM_PageTree(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    JTPDFDocument document(1.0, kNowhere, nullptr, nullptr);
    document.Initialize();
    for (int i = 0; i < state.range(0); ++i) document.WritePage(2, kPage, kPage);
    state.ResumeTiming();
    document.FinalizePages();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_PageTree)->ArgName("pages")->Arg(1000)->Arg(100000);

void BM_SmallDocument(benchmark::State& state) {
  for (auto _ : state) {
    JTPDFDocument document(1.0);
    document.Initialize();
    document.GetCanvas().SetBoundingBox(kPage);
    const int form = document.WriteCanvas();
    document.WritePage(form, kPage, kPage);
    document.Finalize(nullptr);
    benchmark::DoNotOptimize(document.GetPdfData());
  }
}
BENCHMARK(BM_SmallDocument);

}  // namespace
