// decoder_fuzzer.cpp - hands any bytes to one decoder: the whole way from file to PDF stream.
//
// Built once for each format (FUZZED_DECODER), so that a corpus stays with what it exercises. What
// a decoder may do is throw an ImageError; it must not crash, hang or take more memory than the
// pixels that it was allowed.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "formats/decoder.h"

// libdav1d 1.0 keeps a few bytes of some pictures that it refuses.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libdav1d\n";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace pictures;
  constexpr ReadLimits kLimits{1 << 18, true};
  const Decoder& decoder = FUZZED_DECODER;
  const Bytes file(data, size);
  if (!decoder.recognises(file.first(size < kRecognisedBytes ? size : kRecognisedBytes))) return 0;
  try {
    size_t pages = 0;
    for (const ImagePlan& plan : decoder.plan(file, kLimits)) {
      if (++pages > 4) break;
      if (!plan.error.empty()) continue;
      const EncodedImage image = Encode(plan, file, 1);
      // What would make a PDF that no reader can open.
      if (image.pixels.Size() == 0 || image.pixels.width == 0 || image.pixels.height == 0) abort();
      if (uint64_t{image.pixels.width} * image.pixels.height > kLimits.maxPixels) abort();
      if (plan.PassesThrough() && plan.format == Format::kPng) {  // decoded where sizes matter
        std::vector<Note> notes;
        decoder.decode(plan, file, &notes);
      }
      if (plan.orientation < 1 || plan.orientation > 8) abort();
    }
  } catch (const ImageError&) {
  }
  return 0;
}
