// Fuzz target: numbers, integers and references are written as the models write them.

#include "byte_source.h"
#include "models.h"
#include "objects/value_format.h"
#include "require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ByteSource source(data, size);
  while (!source.Empty()) {
    const double value = source.Double();
    RequireEqual(Num(value), model::Number(value), "a real is printed by \"%.4f\"");
    const std::uint32_t high = source.Word();
    const auto large = static_cast<long long>(std::uint64_t{high} << 32 | source.Word());
    const std::uint32_t width = source.Flag() ? source.Word() : source.Byte();
    RequireEqual(IntToStr(large, width), model::Integer(large, width), "a long is padded");
    const auto small = static_cast<int>(high);
    RequireEqual(IntToStr(small, width), model::Integer(small, width), "an int is padded");
    RequireEqual(AsRefString(small), model::Reference(small), "a reference");
    const int first = static_cast<int>(high % 2000000000);
    const int count = source.Byte() - 20;
    RequireEqual(AsRefArray(first, count), model::ReferenceArray(first, count), "references");
  }
  return 0;
}
