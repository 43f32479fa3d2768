// album.hpp - what the parts of the album share; album.cpp is the one to read first.
#ifndef ALBUM_HPP
#define ALBUM_HPP

#include <cmath>
#include <jtpdf/jtpdf.hpp>
#include <map>
#include <string>
#include <string_view>

namespace album {

using namespace jtpdf::literals;
using jtpdf::Box;
using jtpdf::Color;

inline constexpr std::string_view kAuthor = "Ἑλένη Надежда 直子";

// The colours of the paper and of what is on it.
inline constexpr Color kPaper = 0xfbf8f1_rgb;
inline constexpr Color kInk = 0x262638_rgb;
inline constexpr Color kNight = 0x18162c_rgb;

inline constexpr double kPi = 3.14159265358979323846;

// The images by name, known once they are written.
using Images = std::map<std::string_view, jtpdf::Image>;

// The parts; each throws what went wrong.
Images WriteImages(jtpdf::Document& doc, const std::string& image_dir);  // album_images.cpp
void WritePages(jtpdf::Document& doc, const Images& images);             // album_pages.cpp
void MakeCardFile(const std::string& path);                              // album_card.cpp

// The colour between two others: from at 0, to at 1.
inline Color Blend(Color from, Color to, double part) {
  const auto between = [part](int a, int b) {
    return static_cast<std::uint8_t>(std::lround(a + (b - a) * part));
  };
  return {between(from.red, to.red), between(from.green, to.green), between(from.blue, to.blue)};
}

Color Rainbow(double hue);  // for hues from 0 to 1, round and round

// A box by its centre, with all lengths in one unit: turning leaves the centre where it is.
inline Box Centered(double x, double y, double width, double height, double angle = 0,
                    jtpdf::Unit unit = jtpdf::millimeter) {
  return {(x - width / 2) * unit, (y - height / 2) * unit, width * unit, height * unit,
          jtpdf::Angle{angle}};
}

}  // namespace album

#endif  // ALBUM_HPP
