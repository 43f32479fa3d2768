// text.h - UTF-8 in, wide text out; file names fit for messages.
#ifndef JTPDF_PICTURES_TEXT_H
#define JTPDF_PICTURES_TEXT_H

#include <optional>
#include <string>
#include <string_view>

namespace pictures {

// Decodes UTF-8 strictly, whatever the locale; nothing where it is not valid.
std::optional<std::wstring> FromUtf8(std::string_view text);

// Decodes UTF-8, putting U+FFFD for every byte that is not a part of it.
std::wstring FromUtf8Lenient(std::string_view text);

// The library gives wide text two bytes for each character, too few for those above U+FFFF, and
// cuts the rest off. One more character at the end for each of them makes up the room; it is these
// that are cut off then.
std::wstring WithRoomForPairs(std::wstring text);

// The text with control characters replaced by "?": names of files reach terminals through it.
std::string Printable(std::string_view text);

// The text with A to Z in small letters, whatever the locale.
std::string LowerAscii(std::string_view text);

// "scan2" before "scan10": digits compare as numbers, letters without regard to case first.
bool NaturalLess(std::string_view a, std::string_view b);

// A number from 0 to 10^9 with four decimals, whatever the locale.
std::string Decimal(double value);

// The last part of a path.
std::string_view BaseName(std::string_view path);

}  // namespace pictures

#endif  // JTPDF_PICTURES_TEXT_H
