// jtpdf.hpp - the C++ face of jtpdf.h: the same calls with types, exceptions and UTF-8. C++17.
//
//     using namespace jtpdf::literals;
//
//     auto doc = jtpdf::Document::file("out.pdf", jtpdf::millimeter);
//     doc.fill_rectangle({2_cm, 2_cm, 6_cm, 4_cm, 15_deg}, 0xff8000_rgb);
//     doc.add_page(jtpdf::paper::a4);
//     doc.finish();
//
// The header only calls the C interface, whose conventions all hold; jtpdf.h says what each call
// writes. What differs:
//
// 1. Ownership. Document owns its C document and can be moved, not copied. Everything passed in is
//    read during the call and never kept.
// 2. Finishing. finish() makes the file whole and throws if it cannot. The destructor never
//    finishes a document, so no failure can be lost in it. A file that was opened and is dropped
//    without finish() stays incomplete; unless discard() said so, a call on the document had thrown
//    an Error, or an exception is passing by, the destructor says this in a line on stderr. What is
//    written to a stream or a function counts as a file.
// 3. Errors. A call that fails throws jtpdf::Error, a std::system_error that knows the C function
//    and its result code; std::bad_alloc passes through, and so does what the host's own stream or
//    function throws. A call that the document refuses in its present state has the code
//    jtpdf::Errc::refused. errno is the same before and after.
// 4. Text is UTF-8 in a std::string_view, and a wrong byte or a NUL in it is an Error that says
//    where, thrown before the document is touched.
// 5. Lengths carry their unit and are converted to the document's. A length that has the document's
//    unit reaches the C call unchanged, to the last bit.
// 6. Images, forms and colour spaces are types of their own, and know their document: a form is no
//    image, and an image of another document is an Error.
//
// 7. Numbers that no file should have are an Error that names the argument: what is not finite, a
//    negative line width, an image without pixels, and a negative extent of anything but an image
//    that is drawn, which it mirrors.
// 8. A document has at most 10^10 bytes: readers take no more than ten digits for a position in it.
//    What would go beyond is an Error, std::errc::file_too_large, before it is written.
//
// A document that was moved from or discarded may only be assigned to or destroyed.
#ifndef JTPDF_JTPDF_HPP
#define JTPDF_JTPDF_HPP

#if __cplusplus < 201703L
#error "jtpdf.hpp takes C++17: compile with -std=c++17 or later; jtpdf.h does with older C++"
#else

#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <iterator>
#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

#include "jtpdf/objects.h"

namespace jtpdf {

// ---- Lengths, angles, boxes -------------------------------------------------------------------

// How many PDF points one unit is. Any factor can be a unit: Unit(72 / 300.0) is a pixel at 300
// dots per inch.
class Unit {
 public:
  explicit constexpr Unit(double points) noexcept : points_(points) {}
  constexpr double points() const noexcept { return points_; }

  friend constexpr bool operator==(Unit a, Unit b) noexcept { return a.points_ == b.points_; }
  friend constexpr bool operator!=(Unit a, Unit b) noexcept { return !(a == b); }

 private:
  double points_;
};

// The factors of PDFCoordinateUnitInch and so on, as constant expressions.
inline constexpr Unit inch{72.0};
inline constexpr Unit centimeter{28.346456692944};
inline constexpr Unit millimeter{2.8346456692944};
inline constexpr Unit point{1.0};

// A number and its unit: 20_mm, or x * jtpdf::millimeter.
class Length {
 public:
  constexpr Length() noexcept = default;
  constexpr Length(double value, Unit unit) noexcept : value_(value), unit_(unit) {}

  // The number in another unit; in the length's own it is the number itself.
  constexpr double in(Unit unit) const noexcept {
    return unit_ == unit ? value_ : value_ * unit_.points() / unit.points();
  }
  // The unit that the number is in.
  constexpr Unit unit() const noexcept { return unit_; }

  constexpr Length operator-() const noexcept { return {-value_, unit_}; }
  // A sum has the unit of its first operand.
  friend constexpr Length operator+(Length a, Length b) noexcept {
    return {a.value_ + b.in(a.unit_), a.unit_};
  }
  friend constexpr Length operator-(Length a, Length b) noexcept {
    return {a.value_ - b.in(a.unit_), a.unit_};
  }
  friend constexpr Length operator*(Length a, double n) noexcept { return {a.value_ * n, a.unit_}; }
  friend constexpr Length operator*(double n, Length a) noexcept { return {n * a.value_, a.unit_}; }
  friend constexpr Length operator/(Length a, double n) noexcept { return {a.value_ / n, a.unit_}; }
  // How often one goes into the other.
  friend constexpr double operator/(Length a, Length b) noexcept {
    return a.value_ / b.in(a.unit_);
  }
  constexpr Length& operator+=(Length other) noexcept { return *this = *this + other; }
  constexpr Length& operator-=(Length other) noexcept { return *this = *this - other; }
  constexpr Length& operator*=(double n) noexcept { return *this = *this * n; }
  constexpr Length& operator/=(double n) noexcept { return *this = *this / n; }
  friend constexpr bool operator==(Length a, Length b) noexcept {
    return a.value_ == b.in(a.unit_);
  }
  friend constexpr bool operator!=(Length a, Length b) noexcept { return !(a == b); }
  friend constexpr bool operator<(Length a, Length b) noexcept { return a.value_ < b.in(a.unit_); }
  friend constexpr bool operator>(Length a, Length b) noexcept { return a.value_ > b.in(a.unit_); }
  friend constexpr bool operator<=(Length a, Length b) noexcept {
    return a.value_ <= b.in(a.unit_);
  }
  friend constexpr bool operator>=(Length a, Length b) noexcept {
    return a.value_ >= b.in(a.unit_);
  }

  // "20 mm"; in points where the unit has no name.
  friend std::ostream& operator<<(std::ostream& stream, Length length) {
    const char* const name = length.unit_ == inch         ? " in"
                             : length.unit_ == centimeter ? " cm"
                             : length.unit_ == millimeter ? " mm"
                                                          : " pt";
    const bool named = length.unit_ == inch || length.unit_ == centimeter ||
                       length.unit_ == millimeter || length.unit_ == point;
    return stream << (named ? length.value_ : length.in(point)) << name;
  }

 private:
  double value_ = 0;
  Unit unit_ = point;
};

// 12 * jtpdf::millimeter.
constexpr Length operator*(double value, Unit unit) noexcept {
  return {value, unit};
}

// Counter-clockwise, about the centre of the box.
struct Angle {
  double degrees = 0;

  friend constexpr bool operator==(Angle a, Angle b) noexcept { return a.degrees == b.degrees; }
  friend constexpr bool operator!=(Angle a, Angle b) noexcept { return !(a == b); }
};

// Lower-left corner and extent, y upwards, turned by an angle.
struct Box {
  Length left;
  Length bottom;
  Length width;
  Length height;
  Angle angle = {};

  // The box with every side moved inwards, as InsetPdfRect does; negative lengths grow it.
  constexpr Box inset(Length dx, Length dy) const noexcept {
    return {left + dx, bottom + dy, width - 2 * dx, height - 2 * dy, angle};
  }
  // The largest box in the middle of this one that is as wide to its height as width to height; for
  // an image its pixels.
  constexpr Box fit(double across, double up) const noexcept {
    const bool bound_by_width = width * up < height * across;
    const Length w = bound_by_width ? width : height * across / up;
    const Length h = bound_by_width ? width * up / across : height;
    return {left + (width - w) / 2, bottom + (height - h) / 2, w, h, angle};
  }
  // The box for an image that is to stand in this one turned counter-clockwise by so many quarters:
  // an image drawn in the result covers this box.
  constexpr Box quarter_turned(int quarters) const noexcept {
    const Angle turned{angle.degrees + 90.0 * (quarters % 4)};
    if (quarters % 2 == 0) return {left, bottom, width, height, turned};
    return {left + (width - height) / 2, bottom + (height - width) / 2, height, width, turned};
  }
  // The same area without what mirrors an image or turns it by quarters: sides that aren't
  // negative, an angle from -45 to 45 degrees. What stands around or beneath a picture goes by it.
  Box upright() const noexcept {
    int quarters = 0;
    const Angle turned{std::remquo(angle.degrees, 90.0, &quarters)};
    Length w = width < Length{} ? -1 * width : width;
    Length h = height < Length{} ? -1 * height : height;
    if (quarters % 2 != 0) std::swap(w, h);
    return {left + (width - w) / 2, bottom + (height - h) / 2, w, h, turned};
  }
  // The box on its side: a sheet that is wider than high.
  constexpr Box landscape() const noexcept { return {left, bottom, height, width, angle}; }

  friend constexpr bool operator==(const Box& a, const Box& b) noexcept {
    return a.left == b.left && a.bottom == b.bottom && a.width == b.width && a.height == b.height &&
           a.angle == b.angle;
  }
  friend constexpr bool operator!=(const Box& a, const Box& b) noexcept { return !(a == b); }
};

// The two boxes of a page, each of its own type because their order is easily mistaken.
struct CropBox {  // the part of the sheet that readers show
  explicit constexpr CropBox(const Box& shown) noexcept : box(shown) {}
  Box box;
};
struct MediaBox {  // the sheet
  explicit constexpr MediaBox(const Box& sheet) noexcept : box(sheet) {}
  Box box;
};

// ---- Colours ----------------------------------------------------------------------------------

// A device RGB colour. Alpha only tells none from white; it never reaches the file.
struct Color {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  std::uint8_t alpha = 255;

  static const Color black;
  static const Color white;
  static const Color none;  // rectangles leave out a fill or stroke of it; for circles it is white

  friend constexpr bool operator==(Color a, Color b) noexcept {
    return a.red == b.red && a.green == b.green && a.blue == b.blue && a.alpha == b.alpha;
  }
  friend constexpr bool operator!=(Color a, Color b) noexcept { return !(a == b); }
};

inline constexpr Color Color::black{0, 0, 0, 255};
inline constexpr Color Color::white{255, 255, 255, 255};
inline constexpr Color Color::none{255, 255, 255, 0};

// ---- Literals ---------------------------------------------------------------------------------

namespace detail {

constexpr int hex_digit(char c) noexcept {
  return c >= '0' && c <= '9'   ? c - '0'
         : c >= 'a' && c <= 'f' ? c - 'a' + 10
         : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                : -1;
}

constexpr std::uint8_t hex_byte(const char* digits) noexcept {
  return static_cast<std::uint8_t>(hex_digit(digits[0]) * 16 + hex_digit(digits[1]));
}

// Whether the literal is 0x and six digits.
constexpr bool is_hex_color(const char* literal, std::size_t length) noexcept {
  if (length != 8 || literal[0] != '0' || (literal[1] != 'x' && literal[1] != 'X')) return false;
  for (std::size_t i = 2; i < length; ++i) {
    if (hex_digit(literal[i]) < 0) return false;
  }
  return true;
}

}  // namespace detail

inline namespace literals {

// 12_mm, 1.5_in, 15_deg.
// clang-format off
constexpr Length operator""_in(long double n) { return {static_cast<double>(n), inch}; }
constexpr Length operator""_cm(long double n) { return {static_cast<double>(n), centimeter}; }
constexpr Length operator""_mm(long double n) { return {static_cast<double>(n), millimeter}; }
constexpr Length operator""_pt(long double n) { return {static_cast<double>(n), point}; }
constexpr Angle operator""_deg(long double n) { return {static_cast<double>(n)}; }
constexpr Length operator""_in(unsigned long long n) { return {static_cast<double>(n), inch}; }
constexpr Length operator""_cm(unsigned long long n) { return {static_cast<double>(n), centimeter}; }
constexpr Length operator""_mm(unsigned long long n) { return {static_cast<double>(n), millimeter}; }
constexpr Length operator""_pt(unsigned long long n) { return {static_cast<double>(n), point}; }
constexpr Angle operator""_deg(unsigned long long n) { return {static_cast<double>(n)}; }
// clang-format on

// 0xff8000_rgb. Anything but six hexadecimal digits does not compile.
template <char... kLiteral>
constexpr Color operator""_rgb() {
  constexpr char kText[] = {kLiteral..., '\0'};
  static_assert(detail::is_hex_color(kText, sizeof...(kLiteral)),
                "a colour is written with six hexadecimal digits: 0xff8000_rgb");
  return {detail::hex_byte(kText + 2), detail::hex_byte(kText + 4), detail::hex_byte(kText + 6),
          255};
}

}  // namespace literals

// ---- Sheets -----------------------------------------------------------------------------------

// Upright, at the origin; a4.landscape() is wider than high.
namespace paper {

inline constexpr Box a3{{}, {}, {297, millimeter}, {420, millimeter}};
inline constexpr Box a4{{}, {}, {210, millimeter}, {297, millimeter}};
inline constexpr Box a5{{}, {}, {148, millimeter}, {210, millimeter}};
inline constexpr Box a6{{}, {}, {105, millimeter}, {148, millimeter}};
inline constexpr Box letter{{}, {}, {8.5, inch}, {11, inch}};
inline constexpr Box legal{{}, {}, {8.5, inch}, {14, inch}};

}  // namespace paper

// ---- Errors -----------------------------------------------------------------------------------

// What is no system error. Other codes are errno values, of std::generic_category():
// error.code() == std::errc::no_space_on_device.
enum class Errc : int {
  // The document does not allow the call in its present state (not open, finished already, or its
  // output failed earlier), or its output failed and the system gave no reason.
  refused = -1
};

namespace detail {

class Category final : public std::error_category {
 public:
  const char* name() const noexcept override { return "jtpdf"; }
  std::string message(int code) const override {
    if (code == static_cast<int>(Errc::refused)) {
      return "the document refused it: it is not open, is finished, or its output has failed";
    }
    return "unknown result code " + std::to_string(code);
  }
};

}  // namespace detail

// The category of Errc.
inline const std::error_category& category() noexcept {
  static const detail::Category instance;
  return instance;
}

// What std::error_code needs to be made of an Errc.
inline std::error_code make_error_code(Errc code) noexcept {
  return {static_cast<int>(code), category()};
}

// A failed call: "InitPdfDoc: No such file or directory".
class Error : public std::system_error {
 public:
  // The failure of a C function (a text that lasts, such as a literal) with its result code.
  Error(const char* function, std::int32_t result)
      : std::system_error(error_code(result), function), function_(function) {}
  // An argument that the C function cannot be given.
  Error(const char* function, const std::string& problem, std::errc reason)
      : std::system_error(std::make_error_code(reason), function + (": " + problem)),
        function_(function) {}

  // The C function that failed and the code that it returned, or the one that an argument earned
  // before the call: EILSEQ for text that is not UTF-8, and so on.
  const char* function() const noexcept { return function_; }
  std::int32_t result() const noexcept { return code().value(); }

 private:
  static std::error_code error_code(std::int32_t result) {
    return result > 0 ? std::error_code(result, std::generic_category())
                      : std::error_code(result, category());
  }

  const char* function_;
};

// ---- Bytes ------------------------------------------------------------------------------------

namespace detail {

// The element of Range, if std::data and std::size tell where its bytes are.
template <typename Range>
using ElementOf = std::enable_if_t<
    std::is_convertible_v<decltype(std::size(std::declval<const Range&>())), std::size_t>,
    std::remove_cv_t<std::remove_pointer_t<decltype(std::data(std::declval<const Range&>()))>>>;

// Whether a range holds its elements itself, so that they go when it goes, and is no view.
template <typename Range, typename = void>
inline constexpr bool kIsStdArray = false;
template <typename Range>
inline constexpr bool kIsStdArray<Range, std::void_t<decltype(std::tuple_size<Range>::value)>> =
    true;
template <typename Range>
inline constexpr bool kOwns =
    !std::is_trivially_copyable_v<Range> || std::is_array_v<Range> || kIsStdArray<Range>;

template <typename Element>
inline constexpr bool kIsByte = sizeof(Element) == 1 && std::is_trivially_copyable_v<Element> &&
                                !std::is_same_v<Element, bool>;

}  // namespace detail

// Some bytes in somebody else's memory, which must outlive the view.
class Bytes {
 public:
  constexpr Bytes() noexcept = default;
  Bytes(const void* data, std::size_t size) noexcept
      : data_(static_cast<const char*>(data)), size_(size) {}

  // Any contiguous range of char, unsigned char, std::byte or the like: a vector, an array, a
  // string, a span, a mapped file.
  template <typename Range, typename = std::enable_if_t<detail::kIsByte<detail::ElementOf<Range>>>>
  Bytes(const Range& range) noexcept : Bytes(std::data(range), std::size(range)) {}
  // An array of char is most often a literal, whose NUL would be among the bytes.
  template <std::size_t kSize>
  Bytes(const char (&)[kSize]) = delete;

  constexpr const char* data() const noexcept { return data_; }
  constexpr std::size_t size() const noexcept { return size_; }
  constexpr bool empty() const noexcept { return size_ == 0; }
  constexpr const char* begin() const noexcept { return data_; }
  constexpr const char* end() const noexcept { return data_ + size_; }

 private:
  const char* data_ = nullptr;
  std::size_t size_ = 0;
};

// The same for what is kept beyond a call: no bytes of a temporary, which would be gone by then.
class LastingBytes : public Bytes {
 public:
  constexpr LastingBytes() noexcept = default;
  constexpr LastingBytes(const Bytes& bytes) noexcept : Bytes(bytes) {}
  LastingBytes(const void* data, std::size_t size) noexcept : Bytes(data, size) {}
  template <typename Range, typename = std::enable_if_t<detail::kIsByte<detail::ElementOf<Range>>>>
  LastingBytes(const Range& range) noexcept : Bytes(range) {}
  template <typename Range, typename = std::enable_if_t<detail::kIsByte<detail::ElementOf<Range>> &&
                                                        detail::kOwns<Range>>>
  LastingBytes(const Range&& range) = delete;
  template <std::size_t kSize>
  LastingBytes(const char (&)[kSize]) = delete;
};

// ---- Images -----------------------------------------------------------------------------------

// The number of an object of one kind in one document. What comes from write_image and so on is
// right; a number of one's own has to be spelled out: jtpdf::Image(7).
template <typename Kind>
class ObjectNumber {
 public:
  explicit constexpr ObjectNumber(int number) noexcept : number_(number) {}
  constexpr int number() const noexcept { return number_; }

  // A number that says whose it is, 0 for anybody's; how documents know their own.
  explicit constexpr ObjectNumber(int number, std::uint32_t document) noexcept
      : number_(number), document_(document) {}
  constexpr std::uint32_t document() const noexcept { return document_; }

  friend constexpr bool operator==(ObjectNumber a, ObjectNumber b) noexcept {
    return a.number_ == b.number_;
  }
  friend constexpr bool operator!=(ObjectNumber a, ObjectNumber b) noexcept { return !(a == b); }

 private:
  int number_;
  std::uint32_t document_ = 0;
};

using Image = ObjectNumber<struct ImageKind>;      // from write_image...
using Form = ObjectNumber<struct FormKind>;        // from write_canvas
using Profile = ObjectNumber<struct ProfileKind>;  // the colour space from write_icc_profile
using Object = ObjectNumber<struct ObjectKind>;    // any object of one's own, from write_object...

// How bytes are encoded. The library never encodes or decodes. Every value of the type is legal,
// one without a name counts as none.
enum class Compression : std::int32_t {
  none = -1,  // no /Filter: the samples themselves, or a plain profile
  jpeg = kPdfCompressionJPEG,
  lzw = kPdfCompressionLZW,
  flate = kPdfCompressionFlate,
  jpeg2000 = kPdfCompressionJPEG2000
};

// What an image is for. Only recorded; every value of the type is legal.
enum class Role : std::int32_t {
  background = kPdfImageRoleBackground,
  photo = kPdfImageRolePhoto,
  mask = kPdfImageRoleMask,
  border = kPdfImageRoleBorder,
  clip_art = kPdfImageRoleClipArt,
  alpha = kPdfImageRoleAlpha,
  text = kPdfImageRoleText,
  shape = kPdfImageRoleShape,
  other = kPdfImageRoleOther
};

// The colour space of image data: a device's, or a profile's.
class ColorSpace {
 public:
  static const ColorSpace gray;
  static const ColorSpace rgb;
  static const ColorSpace cmyk;  // always declared inverted

  constexpr ColorSpace(Profile profile) noexcept : kind_(kPdfColorSpaceICC), profile_(profile) {}
  // Any pair that the C interface takes.
  explicit constexpr ColorSpace(TPdfColorSpace kind, std::int32_t object = 0) noexcept
      : kind_(kind), profile_(object) {}

  constexpr TPdfColorSpace kind() const noexcept { return kind_; }
  constexpr std::int32_t object() const noexcept { return profile_.number(); }
  constexpr Profile profile() const noexcept { return profile_; }

 private:
  TPdfColorSpace kind_;
  Profile profile_;  // 0 where there is none
};

inline constexpr ColorSpace ColorSpace::gray{kPdfColorSpaceGray};
inline constexpr ColorSpace ColorSpace::rgb{kPdfColorSpaceRGB};
inline constexpr ColorSpace ColorSpace::cmyk{kPdfColorSpaceCMYK};

// An image that is to be written: an ImageData, or its members in braces. These may have the bytes
// of a temporary, as they are read during the call.
struct ImageArgument {
  Bytes bytes;
  Compression compression = Compression::jpeg;
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t bits_per_component = 8;
  ColorSpace color_space = ColorSpace::rgb;
};

// An image that is encoded already. Width and height are pixels; whether they agree with the bytes
// is not checked.
struct ImageData {
  LastingBytes bytes;
  Compression compression = Compression::jpeg;
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t bits_per_component = 8;
  ColorSpace color_space = ColorSpace::rgb;

  operator ImageArgument() const noexcept {
    return {bytes, compression, width, height, bits_per_component, color_space};
  }
};

// An extra entry of an image's dictionary; JTPDFDictionaryItem says what becomes of the key.
struct Entry {
  std::string_view key;
  std::string_view value;
};

// An entry of an object of one's own: a path of names ("/DecodeParms/Columns") and the text of one
// object of PDF, as objects.h says.
struct ObjectEntry {
  std::string_view key;
  std::string_view value;
};

// What an image's dictionary says about it besides its format.
struct ImageTags {
  Role role = Role::other;
  std::string_view name = {};
  std::vector<Entry> entries = {};
};

// ---- Arguments in the form that the C functions want -------------------------------------------

namespace detail {

// Which argument of which call a text is, for the error.
struct Place {
  const char* function;
  const char* argument;
};

[[noreturn]] inline void throw_bad_text(Place place, const char* problem, std::size_t offset,
                                        std::errc reason) {
  throw Error(place.function,
              std::string(place.argument) + ' ' + problem + " at byte " + std::to_string(offset),
              reason);
}

[[noreturn]] inline void throw_nul(Place place, std::size_t offset) {
  throw_bad_text(place, "has a NUL", offset, std::errc::invalid_argument);
}

// Decodes one character above U+007F, which begins at text[i], and moves i behind it.
inline std::uint32_t decode_long(std::string_view text, std::size_t& i, Place place) {
  const auto byte = [text](std::size_t k) { return static_cast<unsigned char>(text[k]); };
  const unsigned lead = byte(i);
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};  // less is an overlong form
  std::uint32_t c = lead & (0xFFU >> (length + 1));
  bool valid = lead >= 0xC0 && lead < 0xF8 && text.size() - i >= length;
  for (std::size_t k = 1; valid && k < length; ++k) {
    valid = (byte(i + k) & 0xC0U) == 0x80U;
    c = c << 6 | (byte(i + k) & 0x3FU);
  }
  if (!valid || c < kLeast[length] || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
    throw_bad_text(place, "is not UTF-8", i, std::errc::illegal_byte_sequence);
  }
  i += length;
  return c;
}

// Whether a text is written into the file, where the library has room for one UTF-16 unit a
// character: a blank behind the text, which is cut off, makes the room for each pair of units.
enum class Pairs : bool { as_they_are, with_room };

// Puts the wide text of a character at out and returns its end: a pair where wide text is UTF-16.
inline wchar_t* put_wide(std::uint32_t c, wchar_t* out) {
  if (sizeof(wchar_t) == 2 && c > 0xFFFF) {
    *out++ = static_cast<wchar_t>(0xD7C0 + (c >> 10));
    c = 0xDC00 + (c & 0x3FF);
  }
  *out++ = static_cast<wchar_t>(c);
  return out;
}

// Decodes text to out, which has room for text.size() + 1, and returns the end behind a NUL.
inline wchar_t* decode(std::string_view text, wchar_t* out, Place place,
                       Pairs pairs = Pairs::with_room) {
  std::size_t blanks = 0;  // a pair is four bytes of UTF-8, so there is room for its blank, too
  for (std::size_t i = 0; i < text.size();) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte - 1U < 0x7FU) {  // 0 is far above in unsigned arithmetic
      *out++ = static_cast<wchar_t>(byte);
      ++i;
    } else if (byte != 0) {
      out = put_wide(decode_long(text, i, place), out);
      blanks += byte >= 0xF0 ? 1 : 0;
    } else {
      throw_nul(place, i);
    }
  }
  if (pairs == Pairs::with_room) out = std::fill_n(out, blanks, L' ');
  *out++ = L'\0';
  return out;
}

// Room for size elements: on the stack if they are few, as nearly always.
template <typename Element, std::size_t kFew>
class Buffer {
 public:
  explicit Buffer(std::size_t size) : data_(few_) {
    if (size > kFew) {
      many_.reset(new Element[size]);
      data_ = many_.get();
    }
  }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  Element* data() noexcept { return data_; }
  const Element* data() const noexcept { return data_; }

 private:
  Element few_[kFew];
  std::unique_ptr<Element[]> many_;
  Element* data_;
};

using WideBuffer = Buffer<wchar_t, 100>;
using NarrowBuffer = Buffer<char, 100>;

// UTF-8 as the wide text that the library takes.
class WideText {
 public:
  WideText(std::string_view text, Place place, Pairs pairs = Pairs::with_room)
      : buffer_(text.size() + 1) {
    decode(text, buffer_.data(), place, pairs);
  }
  const wchar_t* c_str() const noexcept { return buffer_.data(); }

 private:
  WideBuffer buffer_;
};

inline char* copy_terminated(std::string_view text, char* out, Place place) {
  const std::size_t nul = text.find('\0');
  if (nul != std::string_view::npos) throw_nul(place, nul);
  out += text.copy(out, text.size());
  *out++ = '\0';
  return out;
}

// Bytes that are passed as they are, with a NUL behind.
class NarrowText {
 public:
  NarrowText(std::string_view text, Place place) : buffer_(text.size() + 1) {
    copy_terminated(text, buffer_.data(), place);
  }
  const char* c_str() const noexcept { return buffer_.data(); }

 private:
  NarrowBuffer buffer_;
};

// The entries of an image's dictionary as the C interface wants them.
class Items {
 public:
  Items(const std::vector<Entry>& entries, const char* function)
      : count_(static_cast<unsigned>(entries.size())),
        keys_(room(entries, &Entry::key)),
        values_(room(entries, &Entry::value)),
        items_(entries.size()) {
    char* key = keys_.data();
    wchar_t* value = values_.data();
    JTPDFDictionaryItem* item = items_.data();
    for (const Entry& entry : entries) {
      *item++ = {key, value};
      key = copy_terminated(entry.key, key, {function, "key"});
      value = decode(entry.value, value, {function, "value"});
    }
  }
  unsigned count() const noexcept { return count_; }
  const JTPDFDictionaryItem* data() const noexcept { return items_.data(); }

 private:
  static std::size_t room(const std::vector<Entry>& entries, std::string_view Entry::*text) {
    std::size_t size = 0;
    for (const Entry& entry : entries) size += (entry.*text).size() + 1;
    return size;
  }

  unsigned count_;
  NarrowBuffer keys_;
  WideBuffer values_;
  Buffer<JTPDFDictionaryItem, 8> items_;
};

// The entries of an object of one's own as the C interface wants them.
class ObjectEntries {
 public:
  ObjectEntries(const std::vector<ObjectEntry>& entries, const char* function) {
    texts_.reserve(2 * entries.size());
    for (const ObjectEntry& entry : entries) {
      const char* const key = keep(entry.key, {function, "key"});
      records_.push_back({key, keep(entry.value, {function, "value"})});
    }
  }
  unsigned count() const noexcept { return static_cast<unsigned>(records_.size()); }
  const JTPDFEntry* data() const noexcept { return records_.data(); }

 private:
  const char* keep(std::string_view text, Place place) {
    const std::size_t nul = text.find('\0');
    if (nul != std::string_view::npos) throw_nul(place, nul);
    return texts_.emplace_back(text).c_str();
  }

  std::vector<std::string> texts_;
  std::vector<JTPDFEntry> records_;
};

// The encoder of a host's. It stays where it is when the document moves, and keeps what the host
// throws, which must not cross the C interface.
class Encoder {
 public:
  Encoder() = default;
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;
  virtual ~Encoder() = default;

  // For SetPdfContentEncoder, with an Encoder for its context.
  static std::int32_t encode(void* context, const char* data, std::size_t size,
                             const char** encoded, std::size_t* encoded_size) {
    Encoder& encoder = *static_cast<Encoder*>(context);
    try {
      const Bytes bytes = encoder.make({data, size});
      *encoded = bytes.data();
      *encoded_size = bytes.size();
      return 0;
    } catch (...) {
      encoder.exception_ = std::current_exception();
      return EIO;
    }
  }
  void rethrow() {
    if (exception_ != nullptr) std::rethrow_exception(std::exchange(exception_, nullptr));
  }

 protected:
  // The bytes stay the encoder's until the next call.
  virtual Bytes make(std::string_view plain) = 0;

 private:
  std::exception_ptr exception_;
};

template <typename Encode>
class FunctionEncoder final : public Encoder {
 public:
  explicit FunctionEncoder(Encode encode) : encode_(std::move(encode)) {}

 private:
  Bytes make(std::string_view plain) override {
    result_ = encode_(plain);
    return result_;
  }

  Encode encode_;
  std::decay_t<std::invoke_result_t<Encode&, std::string_view>> result_;
};

inline std::uint32_t size_in_32_bits(Bytes bytes, const char* function) {
  if (bytes.size() > std::numeric_limits<std::uint32_t>::max()) {
    throw Error(function, std::to_string(bytes.size()) + " bytes of data are more than 2^32 - 1",
                std::errc::value_too_large);
  }
  return static_cast<std::uint32_t>(bytes.size());
}

[[noreturn]] inline void throw_bad_number(Place place, const char* part, double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%g", value);
  throw Error(place.function, std::string(place.argument) + part + " is " + text,
              std::errc::invalid_argument);
}

inline TPdfImageDescriptor descriptor(const ImageArgument& image, Place place) {
  if (image.width < 1) throw_bad_number(place, ".width", image.width);
  if (image.height < 1) throw_bad_number(place, ".height", image.height);
  return {image.bytes.data(),
          size_in_32_bits(image.bytes, place.function),
          static_cast<TPdfCompression>(image.compression),
          image.width,
          image.height,
          image.bits_per_component,
          image.color_space.kind(),
          image.color_space.object()};
}

// Whether a negative extent means anything.
enum class Extent : bool { is_size, mirrors };

[[noreturn]] inline void throw_bad_box(const JTPDFRect& rect, Place place) {
  const std::pair<const char*, double> parts[] = {{".left", rect.left},
                                                  {".bottom", rect.bottom},
                                                  {".width", rect.width},
                                                  {".height", rect.height},
                                                  {".angle", rect.angle}};
  for (const auto& [part, value] : parts) {
    if (!std::isfinite(value)) throw_bad_number(place, part, value);
  }
  const auto& [part, value] = parts[rect.width < 0 ? 2 : 3];
  throw_bad_number(place, part, value);
}

inline JTPDFRect sound(const JTPDFRect& rect, Place place, Extent extent) {
  const bool finite = std::isfinite(rect.left) && std::isfinite(rect.bottom) &&
                      std::isfinite(rect.width) && std::isfinite(rect.height) &&
                      std::isfinite(rect.angle);
  const bool positive = rect.width >= 0 && rect.height >= 0;
  if (!finite || !(positive || extent == Extent::mirrors)) throw_bad_box(rect, place);
  return rect;
}

inline double sound_width(double width, const char* function) {
  if (!(width >= 0) || !std::isfinite(width)) {
    throw_bad_number({function, "line_width"}, "", width);
  }
  return width;
}

inline double sound_points(Unit unit, const char* function) {
  const double points = unit.points();
  if (!(points > 0) || !std::isfinite(points)) throw_bad_number({function, "unit"}, "", points);
  return points;
}

// A number for each document of the process, and 0 for none.
inline std::uint32_t next_document() noexcept {
  static std::atomic<std::uint32_t> count{0};
  const std::uint32_t number = ++count;
  return number != 0 ? number : ++count;
}

// The largest sheet on every side of the origin: what hides nothing of any page.
inline constexpr Box kEverywhere{{-200, inch}, {-200, inch}, {400, inch}, {400, inch}};

// std::filesystem::path and its like, without that header.
template <typename Path>
using Native = decltype(std::declval<const Path&>().native());
template <typename Path>
using IfPath = std::enable_if_t<std::is_convertible_v<Native<Path>, std::string_view> ||
                                std::is_convertible_v<Native<Path>, std::wstring_view>>;

// Its UTF-8: what it holds, or what becomes of wide text.
template <typename Path>
auto utf8(const Path& path) {
  if constexpr (std::is_convertible_v<Native<Path>, std::string_view>) {
    return std::string_view(path.native());
  } else {
    const auto text = path.u8string();
    return std::string(text.begin(), text.end());
  }
}

inline JTPDFRGBColor rgb_color(Color color) noexcept {
  return {color.red, color.green, color.blue, color.alpha};
}

struct Destroy {
  void operator()(JTPDFDocument* doc) const noexcept { DestroyPdfDoc(doc); }
};

// Puts back errno as it was, whichever way a block is left.
class ErrnoKept {
 public:
  ErrnoKept() noexcept = default;
  ErrnoKept(const ErrnoKept&) = delete;
  ErrnoKept& operator=(const ErrnoKept&) = delete;
  ~ErrnoKept() { errno = errno_; }

 private:
  int errno_ = errno;
};

// Every byte of a document begins before this: positions in a file have ten digits.
inline constexpr std::uint64_t kMostBytes = 10'000'000'000;
// What finish() writes at most, for each page and besides.
inline constexpr std::uint64_t kPageBytes = 512;
inline constexpr std::uint64_t kRestBytes = 1'000'000;

// The size of the file, 0 where it is no file with a size.
inline std::uint64_t size_of_file(const std::string& path) {
  const ErrnoKept errno_kept;
#if defined(_WIN32)
  struct _stat64 status;
  const WideText wide_path(path, {"stat", "path"}, Pairs::as_they_are);
  if (_wstat64(wide_path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return 0;
#else
  struct stat status;
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return 0;
#endif
  return static_cast<std::uint64_t>(status.st_size);
}

}  // namespace detail

// ---- Where a document's bytes can go besides files and memory ---------------------------------

namespace detail {

// What a document's bytes are handed to. It stays where it is when the document moves, and keeps
// what the host throws, which must not cross the C interface.
class Output {
 public:
  Output() = default;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  virtual ~Output() = default;

  // For CreateCallbackPdfDoc, with an Output for its context.
  static std::int32_t write(void* context, const char* data, std::size_t size) {
    Output& output = *static_cast<Output*>(context);
    output.size_ += size;
    return output.guarded([&] { return output.take(data, size); });
  }
  // Behind the last byte: a code as from write().
  std::int32_t end() {
    return guarded([this] { return flush(); });
  }

  // How many bytes it was handed.
  std::uint64_t size() const noexcept { return size_; }

  // Throws the failure of a C function with its result, as far as this had to do with it.
  void throw_failure(const char* function, std::int32_t result) {
    if (!std::exchange(failed_, false)) return;
    if (exception_ != nullptr) std::rethrow_exception(std::exchange(exception_, nullptr));
    if (problem() != nullptr) throw Error(function, problem(), std::errc(result));
  }

 protected:
  // Take the bytes, or make sure that they have arrived: 0, or the result of the call that failed.
  virtual std::int32_t take(const char* data, std::size_t size) = 0;
  virtual std::int32_t flush() { return 0; }
  // What the message says of a failure, if it says more than the result.
  virtual const char* problem() const noexcept { return nullptr; }

 private:
  template <typename Body>
  std::int32_t guarded(const Body& body) {
    std::int32_t code = EIO;
    try {
      code = body();
    } catch (...) {
      exception_ = std::current_exception();
    }
    failed_ = code != 0;
    return code;
  }

  std::uint64_t size_ = 0;
  bool failed_ = false;
  std::exception_ptr exception_;
};

class StreamOutput final : public Output {
 public:
  explicit StreamOutput(std::ostream& stream) noexcept : stream_(stream) {}

 private:
  std::int32_t take(const char* data, std::size_t size) override {
    return result_of([&] { stream_.write(data, static_cast<std::streamsize>(size)); });
  }
  // A file stream has a buffer: without this, a full disk would show behind the document's end.
  std::int32_t flush() override {
    return result_of([this] { stream_.flush(); });
  }
  const char* problem() const noexcept override { return "the stream has failed"; }

  // Streams tell no reason; that of the system is in errno where there is one.
  template <typename Operation>
  std::int32_t result_of(const Operation& operation) {
    errno = 0;
    operation();
    if (stream_) return 0;
    return errno > 0 ? errno : EIO;
  }

  std::ostream& stream_;
};

template <typename Write>
inline constexpr bool kTakesView = std::is_invocable_v<Write&, std::string_view>;
template <typename Write>
inline constexpr bool kTakesPointer = std::is_invocable_v<Write&, const char*, std::size_t>;

// What the function returns.
template <typename Write, typename = void>
struct ResultOf {
  using type = std::invoke_result_t<Write&, const char*, std::size_t>;
};
template <typename Write>
struct ResultOf<Write, std::enable_if_t<kTakesView<Write>>> {
  using type = std::invoke_result_t<Write&, std::string_view>;
};

template <typename Write>
class FunctionOutput final : public Output {
 public:
  explicit FunctionOutput(Write write) : write_(std::move(write)) {}

 private:
  std::int32_t take(const char* data, std::size_t size) override {
    using Result = typename ResultOf<Write>::type;
    if constexpr (std::is_void_v<Result>) {
      call(data, size);
      return 0;
    } else if constexpr (std::is_same_v<Result, bool>) {
      return call(data, size) ? 0 : EIO;
    } else {
      return call(data, size);
    }
  }

  decltype(auto) call(const char* data, std::size_t size) {
    if constexpr (kTakesView<Write>) {
      return write_(std::string_view(data, size));
    } else {
      return write_(data, size);
    }
  }

  Write write_;
};

}  // namespace detail

// ---- The document -----------------------------------------------------------------------------

// The information items /Creator and /Author; an empty text writes no item.
struct Credits {
  std::string_view creator = {};
  std::string_view author = {};
};

// A PDF file that is being written, on disk, in memory or to wherever the host takes its bytes. One
// thread at a time.
class [[nodiscard]] Document {
 public:
  // Creates the file and opens it, truncating what is there. The path is UTF-8, like all text, or a
  // std::filesystem::path.
  static Document file(std::string_view path, Unit unit = point, const Credits& credits = {}) {
    Document doc = unopened_file(path, unit, credits);
    doc.open();
    return doc;
  }
  template <typename Path, typename = detail::IfPath<Path>>
  static Document file(const Path& path, Unit unit = point, const Credits& credits = {}) {
    return file(std::string_view(detail::utf8(path)), unit, credits);
  }

  // A document whose bytes() can be fetched when it is finished.
  static Document memory(Unit unit = point) {
    Document doc = unopened_memory(unit);
    doc.open();
    return doc;
  }

  // A document whose bytes go to the stream as they come, which lives longer than it; the stream is
  // flushed by finish(). It need not be one that can seek.
  static Document to(std::ostream& stream, Unit unit = point) {
    return opened(std::make_unique<detail::StreamOutput>(stream), unit);
  }

  // The same for a function, which gets every byte once, in order, as a std::string_view or as
  // const char* and std::size_t. They are there during the call only. It returns nothing, a bool
  // that is true for success, or an int that is 0 for success and otherwise the code of the Error.
  // What it throws comes out of the document's call that wrote, and it is not called again then.
  // The document has the function moved or copied into it; std::ref keeps it outside.
  template <
      typename Write, typename Function = std::decay_t<Write>,
      typename = std::enable_if_t<detail::kTakesView<Function> || detail::kTakesPointer<Function>>>
  static Document to(Write&& write, Unit unit = point) {
    using Result = typename detail::ResultOf<Function>::type;
    static_assert(
        std::is_void_v<Result> || std::is_same_v<Result, bool> || std::is_same_v<Result, int>,
        "the function returns nothing, true for success, or a code that is 0 for success");
    return opened(std::make_unique<detail::FunctionOutput<Function>>(std::forward<Write>(write)),
                  unit);
  }

  // The same, still to be opened: all that is not written can be set before, and an open() that
  // fails can be repeated.
  static Document unopened_file(std::string_view path, Unit unit = point,
                                const Credits& credits = {}) {
    constexpr const char* kFunction = "CreateFilePdfDoc";
    const detail::WideText wide_path(path, {kFunction, "path"}, detail::Pairs::as_they_are);
    const detail::WideText creator(credits.creator, {kFunction, "creator"});
    const detail::WideText author(credits.author, {kFunction, "author"});
    const double points = detail::sound_points(unit, kFunction);
    Document doc(CreateFilePdfDoc(points, wide_path.c_str(), creator.c_str(), author.c_str()), unit,
                 kFile);
    doc.path_ = path;
    return doc;
  }
  template <typename Path, typename = detail::IfPath<Path>>
  static Document unopened_file(const Path& path, Unit unit = point, const Credits& credits = {}) {
    return unopened_file(std::string_view(detail::utf8(path)), unit, credits);
  }
  static Document unopened_memory(Unit unit = point) {
    const double points = detail::sound_points(unit, "CreateMemoryPdfDoc");
    return Document(CreateMemoryPdfDoc(points), unit, kMemory);
  }

  // What was moved from may only be assigned to or destroyed.
  Document(Document&& other) noexcept = default;
  // The document assigned to is dropped as by the destructor.
  Document& operator=(Document&& other) noexcept {
    Document moved(std::move(other));  // where both are one, its own contents, which come back
    std::swap(encoder_, moved.encoder_);
    std::swap(output_, moved.output_);
    std::swap(handle_, moved.handle_);
    std::swap(unit_, moved.unit_);
    std::swap(kind_, moved.kind_);
    std::swap(path_, moved.path_);
    std::swap(identity_, moved.identity_);
    std::swap(drawn_, moved.drawn_);
    std::swap(pages_, moved.pages_);
    std::swap(data_, moved.data_);
    std::swap(unfinished_, moved.unfinished_);
    std::swap(exceptions_, moved.exceptions_);
    return *this;
  }
  // Drops the document, and says so where a file stays incomplete by that.
  ~Document() {
    if (handle_ == nullptr || !unfinished_ || std::uncaught_exceptions() > exceptions_) return;
    std::fputs("jtpdf: a file was dropped without finish() or discard() and is incomplete\n",
               stderr);
  }

  // Opens the file, truncating what is there, and writes its head. file() and memory() have done
  // it.
  void open() {
    check("InitPdfDoc", [&] { return InitPdfDoc(handle()); });
    unfinished_ = kind_ != kMemory;
  }

  // Writes what is left and closes the file. A text here becomes one more line at the very end.
  void finish(std::string_view closing_text = {}) {
    const detail::NarrowText text(closing_text, {"FinalizePdfDoc", "closing text"});
    require_room("FinalizePdfDoc", pages_ * detail::kPageBytes,
                 kind_ == kFile ? detail::size_of_file(path_) : 0);
    check("FinalizePdfDoc", [&] {
      const std::int32_t code = FinalizePdfDoc(handle(), text.c_str());
      return code == 0 && output_ != nullptr ? output_->end() : code;
    });
    unfinished_ = false;
  }

  // Gives the document up: a file that is not finished stays incomplete, which is meant.
  void discard() noexcept { handle_.reset(); }

  // The bytes of a finished memory document, otherwise none. They live as long as the document.
  Bytes bytes() const& noexcept { return {GetPdfData(handle()), GetPdfDataSize(handle())}; }
  Bytes bytes() const&& = delete;

  // What the lengths of the C document are in.
  Unit unit() const noexcept { return unit_; }

  // The document of the C interface, for calls of its own; the face stays the owner.
  JTPDFDocument* handle() const noexcept { return handle_.get(); }
  // Makes such a call, which gives a result code, and throws for it as every method does.
  template <typename Call>
  void call(const char* function, const Call& call) {
    check(function, call);
  }
  // The number that images and forms know their document by.
  std::uint32_t identity() const noexcept { return identity_; }

  // -- Information

  // Sets an information item, such as Title, Subject or Keywords; finish() writes it.
  void set_info(std::string_view key, std::string_view value) {
    constexpr const char* kFunction = "SetPdfInfoItem";
    const detail::NarrowText narrow_key(key, {kFunction, "key"});
    const detail::WideText wide_value(value, {kFunction, "value"});
    SetPdfInfoItem(handle(), narrow_key.c_str(), wide_value.c_str());
  }
  // The mark flag, written as the information item /MGmk.
  bool mark() const noexcept { return GetPdfMgMk(handle()); }
  void set_mark(bool mark) noexcept { SetPdfMgMk(handle(), mark); }

  // -- The canvas

  // Removes all that was drawn since the last form; the canvas box stays.
  void clear_canvas() {
    ClearPdfCanvas(handle());
    drawn_ = false;
  }
  // The extent of the next form: nothing outside it shows. Where none is set, add_page() sets it to
  // the sheet, and write_canvas() makes a form of which everything shows.
  Box canvas_box() const {
    const JTPDFRect rect = GetPdfCanvasBoundingBox(handle());
    return {rect.left * unit_, rect.bottom * unit_, rect.width * unit_, rect.height * unit_,
            Angle{rect.angle}};
  }
  void set_canvas_box(const Box& box) {
    SetPdfCanvasBoundingBox(handle(), rect(box, {"SetPdfCanvasBoundingBox", "box"}));
  }

  // Draws the image over the whole canvas box, as it is at this moment.
  void draw_image(Image image) {
    constexpr const char* kFunction = "DrawPdfImage";
    if (!has_canvas_box()) {
      throw Error(kFunction, "no canvas box is set for the image to cover",
                  std::errc::invalid_argument);
    }
    DrawPdfImage(handle(), number_of(image, {kFunction, "image"}));
    drawn_ = true;
  }
  // Draws the image stretched into the box and turned with it; a negative extent mirrors.
  void draw_image(Image image, const Box& box) {
    constexpr const char* kFunction = "DrawPdfImageInRect";
    DrawPdfImageInRect(handle(), number_of(image, {kFunction, "image"}),
                       rect(box, {kFunction, "box"}, detail::Extent::mirrors));
    drawn_ = true;
  }
  // Fill the box, stroke it, or do both, turned by its angle; a stroke lies half inside the box and
  // half outside.
  void fill_rectangle(const Box& box, Color fill) {
    FillPdfRectangle(handle(), rect(box, {"FillPdfRectangle", "box"}), detail::rgb_color(fill));
    drawn_ = true;
  }
  void stroke_rectangle(const Box& box, Color stroke, Length line_width) {
    constexpr const char* kFunction = "StrokePdfRectangle";
    StrokePdfRectangle(handle(), rect(box, {kFunction, "box"}), detail::rgb_color(stroke),
                       width(line_width, kFunction));
    drawn_ = true;
  }
  void fill_and_stroke_rectangle(const Box& box, Color fill, Color stroke, Length line_width) {
    constexpr const char* kFunction = "FillAndStrokePdfRectangle";
    FillAndStrokePdfRectangle(handle(), rect(box, {kFunction, "box"}), detail::rgb_color(fill),
                              detail::rgb_color(stroke), width(line_width, kFunction));
    drawn_ = true;
  }
  // Fills and strokes the ellipse in the box, the stroke inside. The angle is ignored; the line
  // width and the colours stay in force on the canvas. There is no ellipse without a fill or a
  // stroke: Color::none is white here, and a stroke in the colour of the fill does not show.
  void fill_and_stroke_circle(const Box& box, Color fill, Color stroke, Length line_width) {
    constexpr const char* kFunction = "FillAndStrokePdfCircle";
    FillAndStrokePdfCircle(handle(), rect(box, {kFunction, "box"}), detail::rgb_color(fill),
                           detail::rgb_color(stroke), width(line_width, kFunction));
    drawn_ = true;
  }

  // -- Objects

  // Writes the canvas as a form, and empties it.
  Form write_canvas() {
    const bool unbound = drawn_ && !has_canvas_box();
    const JTPDFRect before = GetPdfCanvasBoundingBox(handle());
    if (unbound) set_canvas_box(detail::kEverywhere);
    const int number =
        write("WritePdfCanvas", [&](int* form) { return WritePdfCanvas(handle(), form); });
    if (unbound) SetPdfCanvasBoundingBox(handle(), before);
    drawn_ = false;
    return Form(number, identity_);
  }

  // Adds a page that shows the form; one form may serve several pages.
  void write_page(Form form, const CropBox& crop, const MediaBox& media) {
    queue_page(form, rect(crop.box, {"WritePdfPage", "crop"}),
               rect(media.box, {"WritePdfPage", "media"}));
  }
  // Adds a page that shows all of the sheet.
  void write_page(Form form, const Box& sheet) {
    const JTPDFRect both = rect(sheet, {"WritePdfPage", "sheet"});
    queue_page(form, both, both);
  }

  // Adds a page of what was drawn, with the sheet as the canvas box; the form of it may serve other
  // pages, too.
  Form add_page(const Box& sheet) { return add_page(CropBox(sheet), MediaBox(sheet)); }
  Form add_page(const CropBox& crop, const MediaBox& media) {
    rect(crop.box, {"WritePdfPage", "crop"});  // before anything is written
    set_canvas_box(media.box);
    const Form form = write_canvas();
    write_page(form, crop, media);
    return form;
  }
  // Adds a page that the image covers, and nothing else: the canvas is cleared first.
  Form add_image_page(Image image, const Box& sheet) {
    clear_canvas();
    draw_image(image, sheet);
    return add_page(sheet);
  }

  // Writes the image as it is encoded.
  Image write_image(const ImageArgument& image, const ImageTags& tags = {}) {
    return write_image(image, false, tags);
  }
  // Writes the image with a colour key: pixels whose components are all 255 are transparent.
  Image write_image_without_white(const ImageArgument& image, const ImageTags& tags = {}) {
    return write_image(image, true, tags);
  }
  // Writes the image with a soft mask: a grey image of any size, 0 is transparent.
  Image write_image_with_alpha(const ImageArgument& image, const ImageArgument& alpha,
                               const ImageTags& tags = {}) {
    constexpr const char* kFunction = "WritePdfImageWithAlpha";
    const TPdfImageDescriptor record = descriptor(image, {kFunction, "image"});
    const TPdfImageDescriptor alpha_record = descriptor(alpha, {kFunction, "alpha"});
    const Arguments arguments(tags, kFunction);
    const std::uint64_t bytes = std::uint64_t{record.size} + alpha_record.size;
    const int number = write_data(kFunction, bytes, [&](int* object) {
      return WritePdfImageWithAlpha(handle(), &record, &alpha_record, arguments.role,
                                    arguments.name.c_str(), arguments.items.count(),
                                    arguments.items.data(), object);
    });
    return Image(number, identity_);
  }
  // Writes JPEG 2000 data, which names its own colour space and alpha.
  Image write_jpeg2000_image(const ImageArgument& image, const ImageTags& tags = {}) {
    constexpr const char* kFunction = "WritePdfImageJPEG2000";
    const TPdfImageDescriptor record = descriptor(image, {kFunction, "image"});
    const Arguments arguments(tags, kFunction);
    const int number = write_data(kFunction, record.size, [&](int* object) {
      return WritePdfImageJPEG2000(handle(), &record, arguments.role, arguments.name.c_str(),
                                   arguments.items.count(), arguments.items.data(), object);
    });
    return Image(number, identity_);
  }

  // Writes a profile for RGB data and the colour space made of it, for ImageData::color_space.
  Profile write_icc_profile(Bytes profile, Compression compression = Compression::none) {
    constexpr const char* kFunction = "WritePdfICCProfile";
    const std::uint32_t size = detail::size_in_32_bits(profile, kFunction);
    const int number = write_data(kFunction, size, [&](int* object) {
      return WritePdfICCProfile(handle(), profile.data(), size,
                                static_cast<TPdfCompression>(compression), object);
    });
    return Profile(number, identity_);
  }

  // -- Objects of one's own: objects.h says what each call takes, and objects.hpp brings types

  // Writes the text of one object that is no lone reference.
  Object write_object(std::string_view value) {
    const detail::NarrowText text(value, {"WritePdfObject", "value"});
    return Object(
        write("WritePdfObject",
              [&](int* object) { return WritePdfObject(handle(), text.c_str(), object); }),
        identity_);
  }
  // Writes a stream; the data of several pieces is written one behind the other.
  Object write_stream(const std::vector<ObjectEntry>& entries, Bytes data) {
    return write_stream(entries, std::vector<Bytes>{data});
  }
  Object write_stream(const std::vector<ObjectEntry>& entries, const std::vector<Bytes>& pieces) {
    constexpr const char* kFunction = "WritePdfStreamPieces";
    const detail::ObjectEntries records(entries, kFunction);
    const Pieces data(pieces);
    const int number = write_data(kFunction, data.bytes, [&](int* object) {
      return WritePdfStreamPieces(handle(), records.count(), records.data(), data.count(),
                                  data.records.data(), object);
    });
    return Object(number, identity_);
  }

  // Takes the number of an object that is written later, for objects that name each other; finish()
  // throws where one was not used.
  Object reserve_object() {
    return Object(
        write("ReservePdfObject", [&](int* object) { return ReservePdfObject(handle(), object); }),
        identity_);
  }
  void write_object(Object reserved, std::string_view value) {
    constexpr const char* kFunction = "WriteReservedPdfObject";
    const detail::NarrowText text(value, {kFunction, "value"});
    const int number = number_of(reserved, {kFunction, "object"});
    check(kFunction, [&] { return WriteReservedPdfObject(handle(), number, text.c_str()); });
  }
  void write_stream(Object reserved, const std::vector<ObjectEntry>& entries,
                    const std::vector<Bytes>& pieces) {
    constexpr const char* kFunction = "WriteReservedPdfStream";
    const detail::ObjectEntries records(entries, kFunction);
    const Pieces data(pieces);
    const int number = number_of(reserved, {kFunction, "object"});
    require_room(kFunction, data.bytes);
    check(kFunction, [&] {
      return WriteReservedPdfStream(handle(), number, records.count(), records.data(), data.count(),
                                    data.records.data());
    });
    data_ += data.bytes;
  }

  // "12 0 R", for a value that names the object. One of another document is an Error.
  template <typename Kind>
  std::string reference_to(ObjectNumber<Kind> object) const {
    return std::to_string(number_of(object, {"reference_to", "object"})) + " 0 R";
  }

  // Set an entry of the catalog, of the page that is added next, and of the next form.
  void set_catalog_entry(std::string_view key, std::string_view value) {
    set_entry("SetPdfCatalogEntry", SetPdfCatalogEntry, key, value);
  }
  void set_page_entry(std::string_view key, std::string_view value) {
    set_entry("SetPdfPageEntry", SetPdfPageEntry, key, value);
  }
  void set_canvas_entry(std::string_view key, std::string_view value) {
    set_entry("SetPdfCanvasEntry", SetPdfCanvasEntry, key, value);
  }

  // Draws lines of a content stream as they are; lengths in them are points.
  void draw_content(std::string_view operators) {
    const detail::NarrowText text(operators, {"DrawPdfContent", "operators"});
    DrawPdfContent(handle(), text.c_str());
    drawn_ = true;
  }

  // Encodes the contents of forms from now on: encode takes a std::string_view and returns the
  // encoded bytes, as a std::string or a vector; what it throws comes out of the call that wrote.
  //
  //     doc.compress([](std::string_view plain) { return zlib_stream_of(plain); });
  template <typename Encode>
  void compress(Encode encode, std::string_view filter = "/FlateDecode") {
    constexpr const char* kFunction = "SetPdfContentEncoder";
    const detail::NarrowText name(filter, {kFunction, "filter"});
    auto next = std::make_unique<detail::FunctionEncoder<Encode>>(std::move(encode));
    check(kFunction, [&] {
      return SetPdfContentEncoder(handle(), name.c_str(), detail::Encoder::encode,
                                  static_cast<detail::Encoder*>(next.get()));
    });
    encoder_ = std::move(next);
  }

  // Adds a bookmark to a page by its index, which may be added later; level 0 is the outermost.
  void add_bookmark(std::string_view title, int page, int level = 0) {
    constexpr const char* kFunction = "AddPdfBookmark";
    const detail::WideText text(title, {kFunction, "title"});
    check(kFunction, [&] { return AddPdfBookmark(handle(), level, text.c_str(), page); });
  }
  // Says what a reader shows first: a page by its index, which may be added later. view is the rest
  // of a destination (ISO 32000-1, 12.3.2.2): "/Fit", "/XYZ null null 1.5".
  void set_open_page(int page, std::string_view view = "/Fit") {
    constexpr const char* kFunction = "SetPdfOpenPage";
    const detail::NarrowText text(view, {kFunction, "view"});
    check(kFunction, [&] { return SetPdfOpenPage(handle(), page, text.c_str()); });
  }
  // How many pages were added: the index of the next one.
  int page_count() const noexcept { return static_cast<int>(pages_); }

 private:
  enum Kind : char { kMemory, kFile, kOutput };

  // What all images are given besides their data.
  struct Arguments {
    Arguments(const ImageTags& tags, const char* function)
        : role(static_cast<TPdfImageRole>(tags.role)),
          name(tags.name, {function, "name"}),
          items(tags.entries, function) {}

    TPdfImageRole role;
    detail::WideText name;
    detail::Items items;
  };

  // Pieces of data as the C interface wants them, and how many bytes they have.
  struct Pieces {
    explicit Pieces(const std::vector<Bytes>& pieces) {
      records.reserve(pieces.size());
      for (const Bytes& piece : pieces) {
        records.push_back({piece.data(), piece.size()});
        bytes += piece.size();
      }
    }
    unsigned count() const noexcept { return static_cast<unsigned>(records.size()); }

    std::vector<JTPDFPiece> records;
    std::uint64_t bytes = 0;
  };

  Document(JTPDFDocument* handle, Unit unit, Kind kind) noexcept
      : handle_(handle), unit_(unit), kind_(kind) {}

  static Document opened(std::unique_ptr<detail::Output> output, Unit unit) {
    const double points = detail::sound_points(unit, "CreateCallbackPdfDoc");
    Document doc(CreateCallbackPdfDoc(points, &detail::Output::write, output.get()), unit, kOutput);
    doc.output_ = std::move(output);
    doc.open();
    return doc;
  }

  Image write_image(const ImageArgument& image, bool mask_white, const ImageTags& tags) {
    constexpr const char* kFunction = "WritePdfImage";
    const TPdfImageDescriptor record = descriptor(image, {kFunction, "image"});
    const Arguments arguments(tags, kFunction);
    const int number = write_data(kFunction, record.size, [&](int* object) {
      return WritePdfImage(handle(), &record, mask_white, arguments.role, arguments.name.c_str(),
                           arguments.items.count(), arguments.items.data(), object);
    });
    return Image(number, identity_);
  }

  JTPDFRect rect(const Box& box, detail::Place place,
                 detail::Extent extent = detail::Extent::is_size) const {
    return detail::sound({box.left.in(unit_), box.bottom.in(unit_), box.width.in(unit_),
                          box.height.in(unit_), box.angle.degrees},
                         place, extent);
  }

  void set_entry(const char* function,
                 std::int32_t (*set)(JTPDFDocument*, const char*, const char*),
                 std::string_view key, std::string_view value) {
    const detail::NarrowText name(key, {function, "key"});
    const detail::NarrowText text(value, {function, "value"});
    check(function, [&] { return set(handle(), name.c_str(), text.c_str()); });
  }

  double width(Length line_width, const char* function) const {
    return detail::sound_width(line_width.in(unit_), function);
  }

  template <typename Kind>
  int number_of(ObjectNumber<Kind> object, detail::Place place) const {
    if (object.document() != identity_ && object.document() != 0) {
      throw Error(place.function, std::string(place.argument) + " belongs to another document",
                  std::errc::invalid_argument);
    }
    return object.number();
  }

  TPdfImageDescriptor descriptor(const ImageArgument& image, detail::Place place) const {
    number_of(image.color_space.profile(), {place.function, "color_space"});
    return detail::descriptor(image, place);
  }

  bool has_canvas_box() const noexcept {
    const JTPDFRect box = GetPdfCanvasBoundingBox(handle());
    return box.width != 0 || box.height != 0;
  }

  void queue_page(Form form, const JTPDFRect& crop, const JTPDFRect& media) {
    constexpr const char* kFunction = "WritePdfPage";
    const int number = number_of(form, {kFunction, "form"});
    check(kFunction, [&] { return WritePdfPage(handle(), number, crop, media); });
    ++pages_;
  }

  // Makes the call and throws for its code. A refusal sets no errno, so with 0 in it beforehand no
  // older failure can pass for the reason.
  template <typename Call>
  void check(const char* function, const Call& call) {
    const std::int32_t code = [&call] {
      const detail::ErrnoKept errno_kept;
      errno = 0;
      return call();
    }();
    if (code == 0) return;
    unfinished_ = false;  // whoever gets the error knows that the file is incomplete
    if (encoder_ != nullptr) encoder_->rethrow();
    if (output_ != nullptr) output_->throw_failure(function, code);
    throw Error(function, code);
  }

  // The same for a call that gives an object's number.
  template <typename Call>
  int write(const char* function, const Call& call) {
    int number = 0;
    check(function, [&] { return call(&number); });
    return number;
  }

  // The same for one that writes bytes of data.
  template <typename Call>
  int write_data(const char* function, std::uint64_t bytes, const Call& call) {
    require_room(function, bytes);
    const int number = write(function, call);
    data_ += bytes;
    return number;
  }

  // Throws where no room is left for some bytes more and what finish() adds, with at least written
  // there already.
  void require_room(const char* function, std::uint64_t bytes, std::uint64_t written = 0) const {
    written = std::max({written, data_, output_ != nullptr ? output_->size() : 0});
    if (written + bytes + detail::kRestBytes <= detail::kMostBytes) return;
    throw Error(function,
                "the document would have more than 10^10 bytes, beyond which readers find nothing; "
                "write it as several documents",
                std::errc::file_too_large);
  }

  std::unique_ptr<detail::Encoder> encoder_;  // these outlive the C document, which knows them
  std::unique_ptr<detail::Output> output_;
  std::unique_ptr<JTPDFDocument, detail::Destroy> handle_;
  Unit unit_;
  Kind kind_;
  std::string path_;  // of a file
  std::uint32_t identity_ = detail::next_document();
  bool drawn_ = false;       // since the last form
  std::uint64_t pages_ = 0;  // how many are queued
  std::uint64_t data_ = 0;   // how many bytes of images and profiles were written
  bool unfinished_ = false;  // an open file that neither finish() nor an error has settled
  int exceptions_ = std::uncaught_exceptions();
};

// The version of the library that runs; JTPDF_VERSION_STRING is that of the headers.
inline std::string_view library_version() noexcept {
  return JTPDFGetVersion();
}

// ---- Diagnostics ------------------------------------------------------------------------------

// The process-wide switch for messages on stderr, for any thread at any time.
inline bool diagnostic_mode() noexcept {
  return JTPDFGetDiagnosticMode();
}
inline void set_diagnostic_mode(bool on) noexcept {
  JTPDFSetDiagnosticMode(on);
}

}  // namespace jtpdf

template <>
struct std::is_error_code_enum<jtpdf::Errc> : std::true_type {};

#endif  // C++17
#endif  // JTPDF_JTPDF_HPP
