// hello.cpp - the page of hello.c through the C++ face.
#include <iostream>
#include <jtpdf/jtpdf.hpp>

using namespace jtpdf::literals;

int main() try {
  auto doc = jtpdf::Document::file("hello.pdf", jtpdf::millimeter);
  doc.fill_rectangle({45_mm, 110_mm, 120_mm, 80_mm, 15_deg}, 0xd62839_rgb);
  doc.add_page(jtpdf::paper::a4);
  doc.finish();
} catch (const jtpdf::Error& error) {
  std::cerr << "hello.pdf: " << error.what() << '\n';
  return 1;
}
