// hello.cpp - the page of hello.c through the C++ face.
#include <iostream>
#include <jtpdf/jtpdf.hpp>

using namespace jtpdf::literals;

int main() try {
  const jtpdf::Box sheet{0_mm, 0_mm, 210_mm, 297_mm};
  auto doc = jtpdf::Document::file("hello.pdf", jtpdf::millimeter);
  doc.set_canvas_box(sheet);
  doc.fill_rectangle({45_mm, 110_mm, 120_mm, 80_mm, 15_deg}, 0xd62839_rgb);
  doc.write_page(doc.write_canvas(), sheet);
  doc.finish();
} catch (const jtpdf::Error& error) {
  std::cerr << "hello.pdf: " << error.what() << '\n';
  return 1;
}
