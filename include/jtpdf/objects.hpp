// objects.hpp - types over the objects of one's own in jtpdf.hpp: images in every filter and colour
// space of PDF, captions in the fonts that readers bring along, boxes and turns of pages. C++17.
//
//     jtpdf::ImageObject scan;  // a strip of a TIFF file, as it is
//     scan.pieces = {strip};
//     scan.filter = jtpdf::Filter::ccitt_g4;
//     scan.width = 2480;
//     scan.height = 3508;
//     scan.bits_per_component = 1;
//     scan.colors = jtpdf::Colors::gray();
//     doc.draw_image(jtpdf::write_image(doc, scan), page);
//     jtpdf::draw_text(doc, "Received 12 May", 20_mm, 10_mm, 12_pt);
//     doc.add_page(page);
//
// Nothing is encoded or decoded here, and whether the data is what the description says is not
// checked; a description that cannot be right is an Error that names its member.
#ifndef JTPDF_OBJECTS_HPP
#define JTPDF_OBJECTS_HPP

#include "jtpdf/jtpdf.hpp"

namespace jtpdf {

namespace detail {

inline std::string hex_string(Bytes bytes) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  std::string text = "<";
  for (const char byte : bytes) {
    text += kDigits[static_cast<unsigned char>(byte) >> 4];
    text += kDigits[static_cast<unsigned char>(byte) & 0xF];
  }
  return text + ">";
}

}  // namespace detail

// ---- Colour spaces ----------------------------------------------------------------------------

// A colour space and how many components its colours have.
class Colors {
 public:
  Colors() : Colors("/DeviceRGB", 3, 3) {}
  static Colors gray() { return {"/DeviceGray", 1, 1}; }
  static Colors rgb() { return {"/DeviceRGB", 3, 3}; }
  static Colors cmyk() { return {"/DeviceCMYK", 4, 4}; }
  // The colours of a palette: samples are numbers of entries, each of as many bytes as the base has
  // components.
  static Colors indexed(const Colors& base, Bytes palette) {
    const std::size_t size = static_cast<std::size_t>(base.components());
    const std::size_t entries = palette.size() / size;
    if (entries < 1 || entries > 256 || palette.size() % size != 0) {
      throw Error("Colors::indexed",
                  "palette has " + std::to_string(palette.size()) + " bytes, not " +
                      std::to_string(size) + " for each of 1 to 256 colours",
                  std::errc::invalid_argument);
    }
    return {"[/Indexed " + base.text() + ' ' + std::to_string(entries - 1) + ' ' +
                detail::hex_string(palette) + ']',
            1, base.components()};
  }
  // Any other colour space, by the text that names it ("12 0 R").
  static Colors other(std::string text, int components) {
    return {std::move(text), components, components};
  }

  const std::string& text() const noexcept { return text_; }
  // Of a sample, 1 for a palette; and of a colour.
  int sample_components() const noexcept { return sample_components_; }
  int components() const noexcept { return components_; }

 private:
  Colors(std::string text, int sample_components, int components)
      : text_(std::move(text)), sample_components_(sample_components), components_(components) {}

  std::string text_;
  int sample_components_;
  int components_;
};

// ---- Images -----------------------------------------------------------------------------------

// How the data of an image is encoded.
enum class Filter {
  none,
  flate,        // a zlib stream
  lzw,          // of 8-bit bytes, codes growing early as in TIFF
  jpeg,         // a JPEG file
  jpeg2000,     // a JP2 file or its codestream
  ccitt_g3,     // rows coded one by one
  ccitt_g3_2d,  // some rows coded by the one above
  ccitt_g4,
  jbig2  // the segments of one page, without a file's head
};

// An image as PDF can have it (ISO 32000-1, 8.9.5). Only what differs from a new one has to be set.
struct ImageObject {
  std::vector<LastingBytes> pieces = {};  // the data, one piece behind the other
  Filter filter = Filter::none;
  int width = 0;
  int height = 0;
  int bits_per_component = 8;
  Colors colors = {};    // RGB; not used by a stencil, nor for JPEG 2000
  bool stencil = false;  // one bit a pixel, painted in the fill colour where it is 0

  // Of flate and lzw: 1 for none, 2 for TIFF's, 15 for rows of PNG.
  int predictor = 1;

  // Of the CCITT filters.
  bool black_is_1 = false;
  bool byte_aligned = false;
  bool end_of_line = false;
  bool end_of_block = true;
  // The global segments of jbig2, a stream of its own; number 0 for none.
  Object jbig2_globals{0};

  std::vector<double> decode = {};  // two for each component of a sample
  std::vector<int> color_key = {};  // ranges of samples that are transparent, likewise
  Image soft_mask{0};               // a grey image: 0 is transparent
  Image stencil_mask{0};            // a stencil: 1 is transparent
  std::vector<double> matte = {};   // of a soft mask: the colour that its image was blended with
  bool interpolate = false;
};

// ---- How all this is spelled ------------------------------------------------------------------

namespace detail {

// "0.5", "-12"; six decimals at most. No locale changes it.
inline std::string spelled(double number, Place place) {
  if (!(std::abs(number) < 1e9)) throw_bad_number(place, "", number);
  const auto millionths = static_cast<long long>(std::round(std::abs(number) * 1e6));
  std::string digits = std::to_string(millionths % 1000000 + 1000000).substr(1);
  digits.erase(digits.find_last_not_of('0') + 1);
  std::string text = std::to_string(millionths / 1000000);
  if (number < 0 && millionths != 0) text.insert(text.begin(), '-');
  return digits.empty() ? text : text + '.' + digits;
}

template <typename Number>
std::string array(const std::vector<Number>& numbers, Place place) {
  std::string text = "[";
  for (const Number number : numbers) {
    text += (text.size() > 1 ? " " : "") + spelled(static_cast<double>(number), place);
  }
  return text + "]";
}

inline const char* name_of(Filter filter) noexcept {
  switch (filter) {
    case Filter::none:
      break;
    case Filter::flate:
      return "/FlateDecode";
    case Filter::lzw:
      return "/LZWDecode";
    case Filter::jpeg:
      return "/DCTDecode";
    case Filter::jpeg2000:
      return "/JPXDecode";
    case Filter::ccitt_g3:
    case Filter::ccitt_g3_2d:
    case Filter::ccitt_g4:
      return "/CCITTFaxDecode";
    case Filter::jbig2:
      return "/JBIG2Decode";
  }
  return "";
}

// The entries of an image's dictionary.
class ImageEntries {
 public:
  ImageEntries(const Document& doc, const ImageObject& image) : doc_(doc), image_(image) {
    check();
    add("/Type", "/XObject");
    add("/Subtype", "/Image");
    add("/Width", std::to_string(image.width));
    add("/Height", std::to_string(image.height));
    colors();
    filter();
    if (!image.decode.empty()) add("/Decode", array(image.decode, place(".decode")));
    masks();
    if (image.interpolate) add("/Interpolate", "true");
  }

  std::vector<ObjectEntry> views() const { return {entries_.begin(), entries_.end()}; }

 private:
  struct Entry {
    operator ObjectEntry() const noexcept { return {key, value}; }
    std::string_view key;
    std::string value;
  };

  static constexpr Place place(const char* member) noexcept { return {"write_image", member}; }

  [[noreturn]] static void refuse(const char* member, const std::string& problem) {
    throw jtpdf::Error("write_image", std::string("image.") + member + ' ' + problem,
                       std::errc::invalid_argument);
  }

  void check() const {
    if (image_.width < 1) throw_bad_number(place("image"), ".width", image_.width);
    if (image_.height < 1) throw_bad_number(place("image"), ".height", image_.height);
    const int bits = image_.bits_per_component;
    if (bits != 1 && bits != 2 && bits != 4 && bits != 8 && bits != 16) {
      refuse("bits_per_component", "is " + std::to_string(bits) + ", none of 1, 2, 4, 8 and 16");
    }
    const int predictor = image_.predictor;
    const bool predicts = image_.filter == Filter::flate || image_.filter == Filter::lzw;
    if (predictor != 1 && !(predicts && (predictor == 2 || (predictor >= 10 && predictor <= 15)))) {
      refuse("predictor", predicts
                              ? "is " + std::to_string(predictor) + ", none of 1, 2 and 10 to 15"
                              : std::string("is one of flate and lzw only"));
    }
    check_count("decode", image_.decode.size());
    check_count("color_key", image_.color_key.size());
    const int kinds = (image_.soft_mask.number() != 0) + (image_.stencil_mask.number() != 0) +
                      !image_.color_key.empty();
    if (kinds > 1) refuse("soft_mask", "stands beside another mask: an image has one");
  }

  void check_count(const char* member, std::size_t count) const {
    if (count == 0 || image_.filter == Filter::jpeg2000) return;
    const int components = image_.stencil ? 1 : image_.colors.sample_components();
    if (count == 2 * static_cast<std::size_t>(components)) return;
    refuse(member, "has " + std::to_string(count) + " numbers, not two for each of " +
                       std::to_string(components));
  }

  void add(std::string_view key, std::string value) { entries_.push_back({key, std::move(value)}); }

  void colors() {
    if (image_.stencil) {
      add("/ImageMask", "true");
      return;
    }
    if (image_.filter == Filter::jpeg2000) return;  // the data says both
    add("/BitsPerComponent", std::to_string(image_.bits_per_component));
    add("/ColorSpace", image_.colors.text());
  }

  void filter() {
    if (image_.filter == Filter::none) return;
    add("/Filter", name_of(image_.filter));
    if (image_.predictor != 1) {
      const int components = image_.stencil ? 1 : image_.colors.sample_components();
      add("/DecodeParms/BitsPerComponent",
          std::to_string(image_.stencil ? 1 : image_.bits_per_component));
      add("/DecodeParms/Colors", std::to_string(components));
      add("/DecodeParms/Columns", std::to_string(image_.width));
      add("/DecodeParms/Predictor", std::to_string(image_.predictor));
    }
    if (image_.filter == Filter::jbig2 && image_.jbig2_globals.number() != 0) {
      add("/DecodeParms/JBIG2Globals", doc_.reference_to(image_.jbig2_globals));
    }
    if (std::string_view(name_of(image_.filter)) == "/CCITTFaxDecode") ccitt();
  }

  void ccitt() {
    const auto flag = [](bool on) { return on ? "true" : "false"; };
    add("/DecodeParms/K", image_.filter == Filter::ccitt_g4   ? "-1"
                          : image_.filter == Filter::ccitt_g3 ? "0"
                                                              : "1");
    add("/DecodeParms/Columns", std::to_string(image_.width));
    add("/DecodeParms/Rows", std::to_string(image_.height));
    if (image_.black_is_1) add("/DecodeParms/BlackIs1", flag(true));
    if (image_.byte_aligned) add("/DecodeParms/EncodedByteAlign", flag(true));
    if (image_.end_of_line) add("/DecodeParms/EndOfLine", flag(true));
    if (!image_.end_of_block) add("/DecodeParms/EndOfBlock", flag(false));
  }

  void masks() {
    if (!image_.color_key.empty()) add("/Mask", array(image_.color_key, place(".color_key")));
    if (image_.stencil_mask.number() != 0) add("/Mask", doc_.reference_to(image_.stencil_mask));
    if (image_.soft_mask.number() != 0) add("/SMask", doc_.reference_to(image_.soft_mask));
    if (!image_.matte.empty()) add("/Matte", array(image_.matte, place(".matte")));
  }

  const Document& doc_;
  const ImageObject& image_;
  std::vector<Entry> entries_;
};

// A text in the encoding of the fonts that readers bring along: one byte a character.
inline std::string win_ansi(std::string_view text, Place place) {
  std::string bytes;
  const WideText wide(text, place, Pairs::as_they_are);
  for (const wchar_t* c = wide.c_str(); *c != L'\0'; ++c) {
    const bool same = (*c >= 0x20 && *c < 0x7F) || (*c >= 0xA0 && *c <= 0xFF);
    if (!same && *c != 0x20AC) {
      throw Error(place.function,
                  std::string(place.argument) + " has the character " +
                      std::to_string(static_cast<long>(*c)) + ", which these fonts lack",
                  std::errc::illegal_byte_sequence);
    }
    bytes += same ? static_cast<char>(*c) : '\x80';  // the euro
  }
  return bytes;
}

}  // namespace detail

// Writes an image. What draws it, or names it as a mask, is the Image.
inline Image write_image(Document& doc, const ImageObject& image) {
  const detail::ImageEntries entries(doc, image);
  const Object object = doc.write_stream(
      entries.views(), std::vector<Bytes>(image.pieces.begin(), image.pieces.end()));
  return Image(object.number(), object.document());
}

// Writes an ICC profile for colours of 1, 3 or 4 components, encoded or not, for
// ImageObject::colors.
inline Colors write_icc_colors(Document& doc, Bytes profile, int components,
                               Filter filter = Filter::none) {
  if (components != 1 && components != 3 && components != 4) {
    detail::throw_bad_number({"write_icc_colors", "components"}, "", components);
  }
  const std::string count = std::to_string(components);
  std::vector<ObjectEntry> entries = {{"/N", count},
                                      {"/Alternate", components == 1   ? "/DeviceGray"
                                                     : components == 3 ? "/DeviceRGB"
                                                                       : "/DeviceCMYK"}};
  if (filter != Filter::none) entries.push_back({"/Filter", detail::name_of(filter)});
  const Object stream = doc.write_stream(entries, profile);
  return Colors::other("[/ICCBased " + doc.reference_to(stream) + ']', components);
}

// ---- Captions ---------------------------------------------------------------------------------

// "(text)": bytes as the value of an entry or the operand of an operator.
inline std::string string_literal(std::string_view bytes) {
  std::string text = "(";
  for (const char c : bytes) {
    if (c == '(' || c == ')' || c == '\\') text += '\\';
    if (c == '\r') {
      text += "\\r";
    } else {
      text += c;
    }
  }
  return text + ')';
}

// Draws a line of text from its left end on its base line, in one of the fonts that every reader
// brings along (Helvetica, Times-Roman, Courier and their kinds) and in characters of Latin-1.
inline void draw_text(Document& doc, std::string_view text, Length left, Length base_line,
                      Length size, Color color = Color::black,
                      std::string_view font = "Helvetica") {
  constexpr const char* kFunction = "draw_text";
  const std::string bytes = string_literal(detail::win_ansi(text, {kFunction, "text"}));
  const auto points = [](Length length, const char* what) {
    return detail::spelled(length.in(point), {kFunction, what});
  };
  const auto part = [](std::uint8_t value) {
    return detail::spelled(value / 255.0, {kFunction, "color"}) + ' ';
  };
  const std::string name(font);
  doc.set_canvas_entry("/Resources/Font/" + name, "<< /Type /Font /Subtype /Type1 /BaseFont /" +
                                                      name + " /Encoding /WinAnsiEncoding >>");
  doc.draw_content("q BT " + part(color.red) + part(color.green) + part(color.blue) + "rg /" +
                   name + ' ' + points(size, "size") + " Tf " + points(left, "left") + ' ' +
                   points(base_line, "base_line") + " Td " + bytes + " Tj ET Q");
}

// ---- Pages ------------------------------------------------------------------------------------

// The boxes of a page besides those that it is added with (ISO 32000-1, 14.11.2).
enum class PageBox { bleed, trim, art };

// Sets a box of the page that is added next.
inline void set_page_box(Document& doc, PageBox kind, const Box& box) {
  const std::vector<double> corners = {box.left.in(point), box.bottom.in(point),
                                       (box.left + box.width).in(point),
                                       (box.bottom + box.height).in(point)};
  doc.set_page_entry(kind == PageBox::bleed  ? "/BleedBox"
                     : kind == PageBox::trim ? "/TrimBox"
                                             : "/ArtBox",
                     detail::array(corners, {"set_page_box", "box"}));
}

// Turns the page that is added next clockwise by so many quarters, as readers show it.
inline void turn_page(Document& doc, int quarters) {
  doc.set_page_entry("/Rotate", std::to_string((quarters % 4 + 4) % 4 * 90));
}

}  // namespace jtpdf

#endif  // JTPDF_OBJECTS_HPP
