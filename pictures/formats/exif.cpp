#include "formats/exif.h"

#include <string>

#include "formats/tiff_numbers.h"

namespace pictures {

ExifFacts ReadExif(Bytes tiff) {
  enum Tag { kOrientation = 0x0112, kXResolution = 0x011A, kYResolution = 0x011B, kUnit = 0x0128 };
  enum Type { kShort = 3, kLong = 4, kRational = 5 };
  ExifFacts facts;
  if (!StartsWith(tiff, "II") && !StartsWith(tiff, "MM")) return facts;
  const TiffNumbers numbers(tiff);
  const auto directory = numbers.At32(4);
  if (numbers.At16(2) != 42u || !directory) return facts;
  const uint32_t entries = numbers.At16(*directory).value_or(0);
  uint32_t unit = 2;  // inches, unless it says otherwise
  Resolution perUnit;
  for (uint32_t i = 0; i < entries; ++i) {
    const uint64_t entry = uint64_t{*directory} + 2 + 12 * uint64_t{i};
    const auto tag = numbers.At16(entry), type = numbers.At16(entry + 2);
    const auto count = numbers.At32(entry + 4), value = numbers.At32(entry + 8);
    if (!tag || !type || !count || !value) break;
    if (*count != 1) continue;
    const uint32_t number = *type == kShort ? *numbers.At16(entry + 8) : *value;
    const bool isInteger = *type == kShort || *type == kLong;
    if (*tag == kOrientation && isInteger) facts.orientation = static_cast<int>(number & 0xFFFF);
    if (*tag == kUnit && isInteger) unit = number;
    if (!isInteger && *type != kRational) continue;
    // Fractions by the standard; some writers put whole numbers.
    const double amount = isInteger ? number : numbers.Rational(*value);
    if (*tag == kXResolution) perUnit.x = amount;
    if (*tag == kYResolution) perUnit.y = amount;
  }
  const double inches = unit == 2 ? 1 : unit == 3 ? 2.54 : 0;  // 1: no unit, so no resolution
  facts.resolution = {perUnit.x * inches, perUnit.y * inches};
  return facts;
}

void ApplyExif(const ExifFacts& facts, ImagePlan* plan) {
  if (facts.orientation) {
    if (*facts.orientation >= 1 && *facts.orientation <= 8) {
      plan->orientation = *facts.orientation;
    } else {
      plan->notes.push_back({true, "its EXIF orientation " + std::to_string(*facts.orientation) +
                                       " is none of 1 to 8 and was ignored; turn it with -r"});
    }
  }
  if (!plan->resolution.Known()) plan->resolution = facts.resolution;
}

}  // namespace pictures
