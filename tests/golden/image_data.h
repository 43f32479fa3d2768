// Small images and a profile that every reader can decode, so that the goldens are real documents,
// and small encoders in place of compression libraries. The same bytes on every machine.

#ifndef JTPDF_TESTS_GOLDEN_IMAGE_DATA_H
#define JTPDF_TESTS_GOLDEN_IMAGE_DATA_H

#include <array>
#include <string>

namespace golden {

// Files of real encoders, 16 by 16 pixels in four quadrants each.
std::string GrayJpeg();
std::string RgbJpeg();
std::string CmykJpeg();  // with an Adobe marker, so inverted
std::string RgbJp2();
std::string RgbaJp2();

// A zlib stream (RFC 1950) of stored blocks.
std::string Flate(const std::string& data);
// An LZW stream of literals only (ISO 32000-1, 7.4.4), cleared before its codes get longer.
std::string Lzw(const std::string& data);

// 16 by 16 pixels, not compressed: the pixel data of the top left, top right, bottom left and
// bottom right quadrant.
std::string Quadrants(const std::array<std::string, 4>& pixels);

// An ICC profile that shows red as blue and blue as red: sRGB's primaries, two of them swapped.
std::string SwappedProfile();

}  // namespace golden

#endif  // JTPDF_TESTS_GOLDEN_IMAGE_DATA_H
