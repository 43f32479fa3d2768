// album_card.cpp - makes a small card in memory, once in every unit, and writes it to a file.
#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "album.hpp"

namespace album {
namespace {

Box InInches(double x, double y, double width, double height, double angle = 0) {
  return Centered(x, y, width, height, angle, jtpdf::inch);
}

// Makes the card, 3.5 by 2 inches. Whatever the document's unit, the drawing is in inches.
jtpdf::Document MakeCard(jtpdf::Unit unit) {
  constexpr Box kSheet{0_in, 0_in, 3.5_in, 2_in};
  constexpr jtpdf::Length kLine = 1_in / 64;
  auto doc = jtpdf::Document::memory(unit);
  doc.set_info("Title", "Карточка · κάρτα · 名刺");
  doc.set_canvas_box(kSheet);
  doc.fill_rectangle(kSheet, kNight);
  for (int i = 0; i < 11; i++) {
    const double side = 1.375 - 0.125 * i;
    doc.stroke_rectangle(InInches(1, 1, side, side, 7.5 * i), Rainbow(i / 11.0), kLine);
  }
  for (int i = 0; i < 6; i++) {
    doc.fill_and_stroke_circle(InInches(2.5, 1, 1.5 - 0.25 * i, 1.5), Rainbow(0.5 + i / 12.0),
                               kPaper, kLine);
  }
  doc.write_page(doc.write_canvas(), kSheet);
  doc.finish();
  return doc;
}

std::string_view Text(jtpdf::Bytes bytes) {
  return {bytes.data(), bytes.size()};
}

}  // namespace

void MakeCardFile(const std::string& path) {
  const jtpdf::Document card = MakeCard(jtpdf::inch);
  for (const jtpdf::Unit unit : {jtpdf::centimeter, jtpdf::millimeter, jtpdf::point}) {
    const jtpdf::Document other = MakeCard(unit);
    if (Text(other.bytes()) != Text(card.bytes())) {
      throw std::runtime_error("the card is not the same in every unit");
    }
  }
  std::ofstream file(path, std::ios::binary);
  file << Text(card.bytes()) << std::flush;
  if (!file) throw std::system_error(errno, std::generic_category(), path);
}

}  // namespace album
