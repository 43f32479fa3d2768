// Numbers, text strings, content-stream lines and dictionaries.

#include <benchmark/benchmark.h>

#include <array>
#include <string>

#include "objects/dict.h"
#include "objects/string_list.h"
#include "objects/text_string.h"
#include "objects/value_format.h"

namespace {

// Coordinates as drawing has them, and one that takes the slow way.
constexpr std::array kReals = {0.0,      1.0,    -12.5,    28.3464567,
                               595.2756, 0.0001, 841.8898, -0.70710678};

void BM_Num(benchmark::State& state) {
  std::size_t i = 0;
  for (auto _ : state) benchmark::DoNotOptimize(Num(kReals[i++ % kReals.size()]));
}
BENCHMARK(BM_Num);

void BM_NumBeyondTheFastPath(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Num(1.5e300));
}
BENCHMARK(BM_NumBeyondTheFastPath);

void BM_IntToStr(benchmark::State& state) {
  int i = 0;
  for (auto _ : state) benchmark::DoNotOptimize(IntToStr(i++, 10));
}
BENCHMARK(BM_IntToStr);

void BM_StringListAdd(benchmark::State& state) {
  const std::string matrix = "1 0 0 1 25.0000 40.0000 cm 1.0000 0.0000 -0.0000 1.0000 0 0 cm";
  JTPDFStringList list;
  int lines = 0;
  for (auto _ : state) {
    list.Add("q", matrix, "/Im12", "Do", "Q");
    if (++lines == 10000) {  // bounds the memory; clearing is part of a line's cost
      list.Clear();
      lines = 0;
    }
  }
}
BENCHMARK(BM_StringListAdd);

void BM_StringListText(benchmark::State& state) {
  JTPDFStringList list;
  for (int i = 0; i < state.range(0); ++i) list.Add("141.7323 113.3858", "l");
  for (auto _ : state) benchmark::DoNotOptimize(list.Text());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_StringListText)->Arg(10)->Arg(100000);

void BM_PsString(benchmark::State& state) {
  const std::wstring text = L"A caption (with parentheses) \u20ac";
  for (auto _ : state) benchmark::DoNotOptimize(PsString(text));
}
BENCHMARK(BM_PsString);

JTPDFDict PageDict() {
  JTPDFDict page;
  page["/Type"] = "/Page";
  page["/Contents"] = "3 0 R";
  page["/MediaBox"] = "[0.0000 0.0000 595.0000 842.0000]";
  page["/CropBox"] = "[0.0000 0.0000 595.0000 842.0000]";
  page["/Parent"] = "17 0 R";
  page["/Resources/ProcSet"] = "[/PDF /ImageB /ImageC]";
  page["/Resources/XObject/Fm2"] = "2 0 R";
  page["Group/CS"] = "/DeviceRGB /I false /K false /S /Transparency";
  return page;
}

void BM_DictBuild(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(PageDict());
}
BENCHMARK(BM_DictBuild);

void BM_DictAsString(benchmark::State& state) {
  const JTPDFDict page = PageDict();
  for (auto _ : state) benchmark::DoNotOptimize(page.AsString());
}
BENCHMARK(BM_DictAsString);

void BM_DictAsStringOfManyImages(benchmark::State& state) {
  JTPDFDict form;
  for (int i = 0; i < state.range(0); ++i) {
    form["/Resources/XObject/Im" + IntToStr(i, 0)] = AsRefString(i);
  }
  for (auto _ : state) benchmark::DoNotOptimize(form.AsString());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_DictAsStringOfManyImages)->Arg(100)->Arg(10000);

}  // namespace
