// What must not compile: every line that ends in "// not:" and a reason, when MISUSE is defined.
// Without it the rest is right.

#include "jtpdf/jtpdf.hpp"

using namespace jtpdf::literals;

void Use(jtpdf::Document& doc, jtpdf::Image image, jtpdf::Form form) {
  const jtpdf::Box box{0_mm, 0_mm, 210_mm, 297_mm};
  doc.draw_image(image);
  doc.draw_image(jtpdf::Image(7));
  doc.write_page(form, jtpdf::CropBox(box), jtpdf::MediaBox(box));
  doc.fill_rectangle(box, 0xff8000_rgb);
  doc.stroke_rectangle(box, jtpdf::Color::black, 0.5_mm);
  doc.write_icc_profile(std::string_view("profile"));
  const std::string kept = "kept";
  const jtpdf::ImageData image_data{kept, jtpdf::Compression::jpeg, 3, 2};
  doc.write_image(image_data);
  doc.write_image({std::string("read while it is there"), jtpdf::Compression::jpeg, 3, 2});
#ifdef MISUSE
  doc.draw_image(form);                                             // not: a form is no image
  doc.write_page(image, box);                                       // not: an image is no form
  doc.draw_image(7);                                                // not: any number is no image
  doc.write_page(form, jtpdf::MediaBox(box), jtpdf::CropBox(box));  // not: in this order
  doc.stroke_rectangle(box, jtpdf::Color::black, 0.5);              // not: half of what?
  jtpdf::Document copy = doc;                                       // not: a document has one owner
  doc.write_icc_profile("profile");                                 // not: with the literal's NUL
  jtpdf::ImageData gone{std::string("gone")};                       // not: the bytes of a temporary
  jtpdf::Document::to(7);                                           // not: cannot be called
  jtpdf::Document::to([](std::string_view) { return 1.5; });        // not: what is 1.5?
  jtpdf::Document::memory().bytes();     // not: of a document that is gone
  jtpdf::ColorSpace space = image;       // not: an image is no colour space
  doc.fill_rectangle(box, 0xff800_rgb);  // not: with five digits
#endif
}
