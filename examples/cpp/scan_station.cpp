// scan_station.cpp - scans of any kind become a document that can be searched by its bookmarks.
//
//     scan_station OUT.pdf SCAN...
//
// Each page of a scan (a TIFF file has several) stands on an A4 sheet with its name below it and a
// bookmark. Colour profiles and transparency come along, and data that PDF can hold is stored as it
// is. A scan that cannot be used is named and left out.
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>

#include <jtpdf/objects.hpp>
#include <jtpdf/pictures.hpp>

using namespace jtpdf::literals;

namespace {

const jtpdf::PicturePage kPage{"A4", "", "2cm:1cm"};

void AddScan(jtpdf::Document& doc, jtpdf::PictureWriter& pictures, const std::string& path) {
  const auto scan = jtpdf::Picture::file(path);
  const std::string name = std::filesystem::path(path).filename().string();
  for (unsigned frame = 0; frame < scan.frames(); ++frame) {
    const std::string number = scan.frames() > 1 ? ", page " + std::to_string(frame + 1) : "";
    const jtpdf::PictureLayout layout = pictures.lay_out(scan, kPage, frame);
    const jtpdf::Image image = pictures.write(scan, frame);
    doc.fill_rectangle(layout.page, 0xf7f3ea_rgb);  // shows through what is transparent
    doc.draw_image(image, layout.image);
    jtpdf::draw_text(doc, name + number, 1_cm, 1_cm, 10_pt);
    doc.add_bookmark(name + number, doc.page_count());
    doc.add_page(layout.page);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "usage: scan_station OUT.pdf SCAN...\n";
    return 2;
  }
  int left_out = 0;
  try {
    auto doc = jtpdf::Document::file(argv[1]);
    jtpdf::PictureWriter pictures(doc);
    for (int i = 2; i < argc; ++i) {
      try {
        AddScan(doc, pictures, argv[i]);
      } catch (const jtpdf::PictureError& error) {
        std::cerr << argv[i] << ": " << error.what() << '\n';
        ++left_out;
      }
    }
    doc.set_catalog_entry("/PageMode", "/UseOutlines");
    doc.finish();
  } catch (const std::exception& error) {
    std::cerr << argv[1] << ": " << error.what() << '\n';
    return 1;
  }
  return left_out > 0 ? 1 : 0;
}
