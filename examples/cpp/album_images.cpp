// album_images.cpp - writes the images of the album, each once, whatever the pages draw of it
// later.
//
// The library never encodes: it takes image files as they are (JPEG, JPEG 2000) and pixels as a
// zlib stream. Most come from the image directory; a few pixels are made here.
#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

#include "album.hpp"

namespace album {
namespace {

using jtpdf::ColorSpace;
using jtpdf::Compression;
using jtpdf::ImageData;
using jtpdf::Role;

// A picture in a file of its own.
struct Picture {
  std::string_view name;
  std::string_view file;
  Compression compression;
  int width, height;
  ColorSpace color_space;
  std::string_view title;  // for the image's dictionary: any script will do
};

constexpr std::string_view kKeyedFern = "fern, white left out";

constexpr Picture kPictures[] = {
    {"dusk", "dusk.jpg", Compression::jpeg, 1440, 1080, ColorSpace::rgb, "Сумерки"},
    {"coast", "coast.jpg", Compression::jpeg, 1040, 780, ColorSpace::rgb, "Ακτή"},
    {"forest", "forest.jpg", Compression::jpeg, 1040, 780, ColorSpace::gray, "霧の森"},
    {"tulips", "tulips.jpg", Compression::jpeg, 880, 550, ColorSpace::cmyk, "Τουλίπες"},
    {"maple", "maple-bgr.jpg", Compression::jpeg, 640, 760, ColorSpace::rgb, "楓"},
    {"city", "city.jpg", Compression::jpeg, 1800, 600, ColorSpace::rgb, "Ночной город"},
    {"fern", "fern.gray.zlib", Compression::flate, 420, 800, ColorSpace::gray, "Φτέρη"},
    {kKeyedFern, "fern.gray.zlib", Compression::flate, 420, 800, ColorSpace::gray, "Φτέρη"},
};

// One colour that shows where a plane of opacity lets it: clouds, shadows and the lettering.
struct Stencil {
  std::string_view name;
  int width, height, bits;
  Color ink;
  Role role;
};

constexpr Stencil kStencils[] = {
    {"cloud", 420, 240, 8, Color::white, Role::photo},
    {"shadow", 400, 300, 8, 0x1e1814_rgb, Role::shape},
    {"title", 1400, 400, 4, kPaper, Role::text},
};

constexpr std::pair<std::string_view, Color> kCaptions[] = {
    {"caption-prints", kInk},    {"caption-shapes", kPaper},   {"caption-turned", kPaper},
    {"caption-inks", kInk},      {"caption-jpeg2000", kPaper}, {"caption-softmask", kPaper},
    {"caption-colorkey", kInk},  {"caption-profile", kInk},    {"caption-sheet", kInk},
    {"caption-contact", kPaper},
};

// Wraps data as a zlib stream of stored blocks, which are not compressed at all (RFC 1950; RFC
// 1951, 3.2.4). For a few pixels of our own this is all that it takes.
std::string StoredZlib(jtpdf::Bytes data) {
  std::string stream = "\x78\x01";
  const auto put = [&stream](unsigned byte) { stream += static_cast<char>(byte & 255); };
  const char* rest = data.begin();
  do {
    const auto left = static_cast<unsigned>(data.end() - rest);
    const unsigned length = std::min(left, 65535U);
    for (const unsigned byte :
         {length == left ? 1U : 0U, length, length >> 8, ~length, ~length >> 8}) {
      put(byte);
    }
    stream.append(rest, length);
    rest += length;
  } while (rest != data.end());

  unsigned low = 1, high = 0;  // Adler-32
  for (const char byte : data) {
    low = (low + static_cast<unsigned char>(byte)) % 65521;
    high = (high + low) % 65521;
  }
  for (const unsigned byte : {high >> 8, high, low >> 8, low}) put(byte);
  return stream;
}

class ImageWriter {
 public:
  ImageWriter(jtpdf::Document& doc, const std::string& image_dir)
      : doc_(doc), image_dir_(image_dir) {}

  Images WriteAll() {
    for (const Picture& picture : kPictures) WritePicture(picture);
    for (const Stencil& stencil : kStencils) WriteStencil(stencil, stencil.name);
    for (const auto& [name, ink] : kCaptions) {
      WriteStencil({name, 2000, 160, 4, ink, Role::text}, "caption");
    }
    WriteAurora();
    WriteMapleWithProfile();
    WriteBalloon();
    WriteSky();
    return std::move(images_);
  }

 private:
  std::string Read(std::string_view name) const {
    const std::string path = image_dir_ + "/" + std::string(name);
    std::ifstream file(path, std::ios::binary);
    if (!file) {
      throw std::system_error(errno, std::generic_category(),
                              path + " (the last argument is the directory of the image files)");
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
  }

  void Keep(std::string_view name, jtpdf::Image image) { images_.emplace(name, image); }

  // A picture as its file holds it, with two entries of ours in the image's dictionary.
  void WritePicture(const Picture& picture) {
    const std::string bytes = Read(picture.file);
    const ImageData data{bytes, picture.compression, picture.width, picture.height,
                         8,     picture.color_space};
    const jtpdf::ImageTags tags{
        Role::photo,
        picture.name,
        {{"/JTAlbum/Title", picture.title}, {"/JTAlbum/Photographer", kAuthor}}};
    Keep(picture.name, picture.name == kKeyedFern ? doc_.write_image_without_white(data, tags)
                                                  : doc_.write_image(data, tags));
  }

  // One pixel of ink under a soft mask of any size.
  void WriteStencil(const Stencil& stencil, std::string_view recorded_name) {
    const std::array<std::uint8_t, 3> pixel = {stencil.ink.red, stencil.ink.green,
                                               stencil.ink.blue};
    const std::string opacity = Read(std::string(stencil.name) + ".alpha.zlib");
    const ImageData alpha{opacity,        Compression::flate, stencil.width,
                          stencil.height, stencil.bits,       ColorSpace::gray};
    Keep(stencil.name, doc_.write_image_with_alpha({StoredZlib(pixel), Compression::flate, 1, 1},
                                                   alpha, {stencil.role, recorded_name}));
  }

  // A JP2 file says itself which colours it holds.
  void WriteAurora() {
    Keep("aurora", doc_.write_jpeg2000_image({Read("aurora.jp2"), Compression::jpeg2000, 1080, 810},
                                             {Role::background, "aurora"}));
  }

  // The maple once more, in the colour space of the profile that puts red and blue in their places.
  void WriteMapleWithProfile() {
    const jtpdf::Profile profile =
        doc_.write_icc_profile(StoredZlib(Read("bgr.icc")), Compression::flate);
    constexpr std::string_view kName = "maple with its profile";
    Keep(kName, doc_.write_image({Read("maple-bgr.jpg"), Compression::jpeg, 640, 760, 8, profile},
                                 {Role::photo, kName}));
  }

  // Raw pixels and, beside them, how opaque each of them is.
  void WriteBalloon() {
    const std::string opacity = Read("balloon.alpha.zlib");
    const ImageData alpha{opacity, Compression::flate, 440, 600, 8, ColorSpace::gray};
    Keep("balloon",
         doc_.write_image_with_alpha({Read("balloon.rgb.zlib"), Compression::flate, 440, 600},
                                     alpha, {Role::clip_art, "balloon"}));
  }

  // A gradient: one column of pixels, to be stretched over a page.
  void WriteSky() {
    constexpr std::size_t kRows = 400;
    constexpr Color kTop{44, 110, 190}, kMiddle{150, 200, 236}, kBottom{255, 238, 205};
    std::array<std::uint8_t, 3 * kRows> pixels = {};
    for (std::size_t row = 0; row < kRows; row++) {
      const double part = static_cast<double>(row) / (kRows / 2.0);
      const Color color =
          part < 1 ? Blend(kTop, kMiddle, part) : Blend(kMiddle, kBottom, std::min(part - 1, 1.0));
      pixels[3 * row] = color.red;
      pixels[3 * row + 1] = color.green;
      pixels[3 * row + 2] = color.blue;
    }
    Keep("sky", doc_.write_image({StoredZlib(pixels), Compression::flate, 1, kRows},
                                 {Role::background, "sky"}));
  }

  jtpdf::Document& doc_;
  const std::string& image_dir_;
  Images images_;
};

}  // namespace

Images WriteImages(jtpdf::Document& doc, const std::string& image_dir) {
  return ImageWriter(doc, image_dir).WriteAll();
}

}  // namespace album
