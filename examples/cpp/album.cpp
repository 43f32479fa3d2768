// album.cpp - makes a picture album through the C++ face, and by it shows what it can say.
//
//     album_cpp [-v] OUT.pdf [IMAGE_DIR]
//
// The same twelve pages as those of album.c, to the byte. The album goes straight to the file
// OUT.pdf, and a small card is made in memory and written beside it (album.pdf gives
// album-card.pdf). IMAGE_DIR holds the image files (examples/images when it is not given). With -v
// the library reports what it tolerates, and this program what it wrote.
//
// Where to read on: album_images.cpp writes the pictures, album_pages.cpp draws the pages,
// album_card.cpp makes the card. No function looks for failures: they are thrown.
#include "album.hpp"

#include <cmath>
#include <exception>
#include <iostream>
#include <vector>

namespace album {

Color Rainbow(double hue) {
  const auto wave = [](double middle, double height, double at) {
    return static_cast<std::uint8_t>(middle + height * std::cos(2 * kPi * at));
  };
  return {wave(140, 110, hue), wave(120, 90, hue - 0.36), wave(140, 110, hue - 0.64)};
}

namespace {

void MakeAlbum(const std::string& path, const std::string& image_dir) {
  auto doc = jtpdf::Document::file(path, jtpdf::millimeter, {"album", kAuthor});
  // What readers show as the document's properties: any text that Unicode can write.
  doc.set_info("Title", "Album · Альбом · Λεύκωμα · アルバム");
  doc.set_info("Subject", "Εικόνες σε χαρτί, картинки на бумаге, 紙の上の絵");
  doc.set_info("Keywords", "φῶς, свет, 光");
  doc.set_mark(true);
  WritePages(doc, WriteImages(doc, image_dir));
  doc.finish("% The end of the album.");
}

// "there/album.pdf" gives "there/album-card.pdf".
std::string CardPath(std::string path) {
  const std::string ending = ".pdf";
  if (path.size() > ending.size() && path.substr(path.size() - ending.size()) == ending) {
    path.resize(path.size() - ending.size());
  }
  return path + "-card.pdf";
}

int Run(std::vector<std::string> arguments) {
  const bool verbose = !arguments.empty() && arguments[0] == "-v";
  if (verbose) arguments.erase(arguments.begin());
  if (arguments.empty() || arguments.size() > 2) {
    std::cerr << "usage: album_cpp [-v] OUT.pdf [IMAGE_DIR]\n";
    return 2;
  }
  jtpdf::set_diagnostic_mode(verbose);
  const std::string& path = arguments[0];
  const std::string card_path = CardPath(path);
  MakeAlbum(path, arguments.size() == 2 ? arguments[1] : "examples/images");
  MakeCardFile(card_path);
  if (verbose) std::cout << "album_cpp: wrote " << path << " and " << card_path << '\n';
  return 0;
}

}  // namespace
}  // namespace album

int main(int argc, char** argv) {
  try {
    return album::Run({argv + 1, argv + argc});
  } catch (const std::exception& error) {
    std::cerr << "album_cpp: " << error.what() << '\n';
    return 1;
  }
}
