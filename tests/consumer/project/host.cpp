// The smallest host in C++: the page of host.c, checked to be a PDF file.
#include <iostream>
#include <jtpdf/jtpdf.hpp>

using namespace jtpdf::literals;

int main() {
  const jtpdf::Box page{0_in, 0_in, 6_in, 4_in};
  jtpdf::Document doc = jtpdf::Document::memory(jtpdf::inch);
  doc.set_canvas_box(page);
  doc.fill_rectangle({1_in, 1_in, 2_in, 1_in, 30_deg}, 0x008080_rgb);
  doc.write_page(doc.write_canvas(), page);
  doc.finish();
  const std::string_view data(doc.bytes().data(), doc.bytes().size());
  std::cout << data.size() << " bytes\n";
  return data.substr(0, 10) == "%PDF-1.5\r\n" ? 0 : 1;
}
