// pictures.hpp - the C++ face of pictures.h: pictures from files to images and pages. C++17.
//
//     auto doc = jtpdf::Document::file("scans.pdf");
//     jtpdf::PictureWriter pictures(doc);
//     for (const char* scan : scans) {
//       const auto picture = jtpdf::Picture::file(scan);
//       for (unsigned frame = 0; frame < picture.frames(); ++frame) {
//         pictures.add_page(picture, {"A4", "", "1cm"}, frame);
//       }
//     }
//     doc.finish();
//
// What a call cannot do is a PictureError, whose text is about the picture without its name; what
// the document cannot do is an Error as with every call of it. Link jtpdf::pictures, or what
// pkg-config says of jtpdf-pictures.
#ifndef JTPDF_PICTURES_HPP
#define JTPDF_PICTURES_HPP

#include <istream>
#include <optional>
#include <stdexcept>

#include "jtpdf/jtpdf.hpp"
#include "jtpdf/pictures.h"

namespace jtpdf {

// A picture that cannot be used, or a page that cannot be made of it.
class PictureError : public std::runtime_error {
 public:
  explicit PictureError(const JTPDFPictureError& error)
      : std::runtime_error(error.message), result_(error.result), code_(error.code) {}

  // Whether it is the picture, and not what was asked for, that is wrong.
  bool unusable() const noexcept { return result_ == kJTPDFPictureUnusable; }
  // The system's error number where a picture could not be read; else 0.
  std::int32_t code() const noexcept { return code_; }

 private:
  std::int32_t result_;
  std::int32_t code_;
};

namespace detail {

[[noreturn]] inline void throw_picture_error(const JTPDFPictureError& error) {
  if (error.result == kJTPDFPictureNoMemory) throw std::bad_alloc();
  throw PictureError(error);
}

// Reads a stream for JTPDFOpenPictureStream, and keeps what it throws.
struct PictureStream {
  static std::int32_t read(void* context, char* buffer, std::size_t size, std::size_t* count) {
    PictureStream& self = *static_cast<PictureStream*>(context);
    try {
      self.stream.read(buffer, static_cast<std::streamsize>(size));
      *count = static_cast<std::size_t>(self.stream.gcount());
      return self.stream.bad() ? EIO : 0;
    } catch (...) {
      self.exception = std::current_exception();
      return EIO;
    }
  }

  std::istream& stream;
  std::exception_ptr exception = {};
};

}  // namespace detail

// What a picture may take, where 0 stands for the usual bound, and what is taken of it.
struct PictureLimits {
  std::uint64_t max_pixels = 0;
  std::uint64_t max_bytes = 0;
  bool all_frames = false;  // of animations, too, and all pictures of JPEG and HEIF files
};

// What is known of a frame from its header; the texts live as long as the picture. pictures.h says
// what each member is.
using PictureInfo = JTPDFPictureInfo;

// A picture that is open: its bytes, and what its headers say.
class Picture {
 public:
  // Opens a file; the path is UTF-8, or a std::filesystem::path.
  static Picture file(std::string_view path, const PictureLimits& limits = {}) {
    const detail::NarrowText text(path, {"JTPDFOpenPictureFile", "path"});
    return opened(
        [&](const JTPDFPictureLimits* bounds, JTPDFPictureError* error) {
          return JTPDFOpenPictureFile(text.c_str(), bounds, error);
        },
        limits);
  }
  template <typename Path, typename = detail::IfPath<Path>>
  static Picture file(const Path& path, const PictureLimits& limits = {}) {
    return file(std::string_view(path.native()), limits);
  }
  // Opens the bytes, which are not copied and have to outlive the picture.
  static Picture memory(LastingBytes bytes, const PictureLimits& limits = {}) {
    return opened(
        [&](const JTPDFPictureLimits* bounds, JTPDFPictureError* error) {
          return JTPDFOpenPictureMemory(bytes.data(), bytes.size(), bounds, error);
        },
        limits);
  }
  // Reads the stream to its end.
  static Picture stream(std::istream& stream, const PictureLimits& limits = {}) {
    detail::PictureStream source{stream};
    return opened(
        [&](const JTPDFPictureLimits* bounds, JTPDFPictureError* error) {
          JTPDFPicture* const picture =
              JTPDFOpenPictureStream(detail::PictureStream::read, &source, bounds, error);
          if (source.exception != nullptr) std::rethrow_exception(source.exception);
          return picture;
        },
        limits);
  }

  // How many pictures of the file there are: the pages of a TIFF file, else one, or with all_frames
  // all that it has.
  unsigned frames() const noexcept { return JTPDFCountPictureFrames(handle()); }

  PictureInfo info(unsigned frame = 0) const {
    PictureInfo info;
    JTPDFPictureError error;
    if (JTPDFGetPictureInfo(handle(), frame, &info, &error) != 0) {
      detail::throw_picture_error(error);
    }
    return info;
  }
  // Remarks on what is done with a frame.
  std::vector<std::string> notes(unsigned frame = 0) const {
    std::vector<std::string> notes;
    while (const char* note =
               JTPDFGetPictureNote(handle(), frame, static_cast<unsigned>(notes.size()))) {
      notes.emplace_back(note);
    }
    return notes;
  }

  // The picture of the C interface, for calls of its own; the face stays the owner.
  JTPDFPicture* handle() const noexcept { return handle_.get(); }

 private:
  struct Close {
    void operator()(JTPDFPicture* picture) const noexcept { JTPDFClosePicture(picture); }
  };

  explicit Picture(JTPDFPicture* handle) noexcept : handle_(handle) {}

  template <typename Open>
  static Picture opened(const Open& open, const PictureLimits& limits) {
    const JTPDFPictureLimits bounds = {limits.max_pixels, limits.max_bytes, limits.all_frames};
    JTPDFPictureError error;
    JTPDFPicture* const picture = open(&bounds, &error);
    if (picture == nullptr) detail::throw_picture_error(error);
    return Picture(picture);
  }

  std::unique_ptr<JTPDFPicture, Close> handle_;
};

// How a picture is scaled to its size.
enum class Fit : std::int32_t {
  into = kJTPDFPictureInto,    // as large as it can be inside
  fill = kJTPDFPictureFill,    // as small as it can be to leave nothing of the size free
  exact = kJTPDFPictureExact,  // stretched to it
  shrink = kJTPDFPictureShrink,
  enlarge = kJTPDFPictureEnlarge  // the one way only
};

// A page of one picture, in measures as people write them; empty ones follow the picture.
struct PicturePage {
  std::string page = {};    // "A4", "Letter", "A4^T" for landscape, "10cmx15cm"
  std::string image = {};   // "10cmx15cm", "x15cm", "50%", "300dpi"
  std::string border = {};  // "1cm", or "1cm:2cm" above and below, left and right
  Fit fit = Fit::into;
  std::optional<int> turn = {};  // degrees clockwise; none: as the picture says
  bool auto_orient = false;      // turns the page where the picture lies the other way
};

// Where a picture goes on its page.
struct PictureLayout {
  Box page;
  Box image;
};

// The level that makes pictures as small as they get without loss, however long that takes.
inline constexpr int smallest = JTPDF_PICTURE_SMALLEST;

// Writes pictures into a document, which has to outlive it and to stay where it is. One for all
// pictures of a document writes each colour profile once.
class PictureWriter {
 public:
  // level, 0 to 12 or smallest, says how hard decoded pixels are compressed.
  explicit PictureWriter(Document& doc, int level = 6) : doc_(doc) {
    JTPDFPictureError error;
    handle_.reset(JTPDFCreatePictureWriter(doc.handle(), doc.unit().points(), level, &error));
    if (handle_ == nullptr) detail::throw_picture_error(error);
  }

  // Writes a frame as an image, with its soft mask and colour profile.
  Image write(const Picture& picture, unsigned frame = 0) {
    int number = 0;
    JTPDFPictureError error = {};
    doc_.call("JTPDFWritePicture", [&] {
      JTPDFWritePicture(handle_.get(), picture.handle(), frame, &number, &error);
      return error.result == kJTPDFPictureDocument ? error.code : 0;
    });
    if (error.result != 0) detail::throw_picture_error(error);
    return Image(number, doc_.identity());
  }

  // Where the frame goes on such a page.
  PictureLayout lay_out(const Picture& picture, const PicturePage& page = {},
                        unsigned frame = 0) const {
    const auto text = [](const std::string& measure) {
      return measure.empty() ? nullptr : measure.c_str();
    };
    const JTPDFPicturePage record = {text(page.page),    text(page.image),
                                     text(page.border),  static_cast<std::int32_t>(page.fit),
                                     turn_of(page.turn), page.auto_orient};
    JTPDFPictureLayout layout;
    JTPDFPictureError error;
    if (JTPDFLayOutPicture(handle_.get(), picture.handle(), frame, &record, &layout, &error) != 0) {
      detail::throw_picture_error(error);
    }
    return {box(layout.page), box(layout.image)};
  }

  // Where the frame goes in a box of the canvas: in its middle, turned as the picture says or by
  // degrees clockwise. What stands around or beneath it goes by upright() of the result.
  Box fit(const Picture& picture, const Box& into, Fit how = Fit::into,
          std::optional<int> turn = {}, unsigned frame = 0) const {
    const Unit unit = doc_.unit();
    const JTPDFRect room = {into.left.in(unit), into.bottom.in(unit), into.width.in(unit),
                            into.height.in(unit), into.angle.degrees};
    JTPDFRect image;
    JTPDFPictureError error;
    if (JTPDFFitPicture(handle_.get(), picture.handle(), frame, room,
                        static_cast<std::int32_t>(how), turn_of(turn), &image, &error) != 0) {
      detail::throw_picture_error(error);
    }
    return box(image);
  }

  // Writes a frame and adds a page of it, drawn over what was drawn before.
  Image add_page(const Picture& picture, const PicturePage& page = {}, unsigned frame = 0) {
    const PictureLayout layout = lay_out(picture, page, frame);
    const Image image = write(picture, frame);
    doc_.draw_image(image, layout.image);
    doc_.add_page(layout.page);
    return image;
  }

 private:
  struct Destroy {
    void operator()(JTPDFPictureWriter* writer) const noexcept {
      JTPDFDestroyPictureWriter(writer);
    }
  };

  static std::int32_t turn_of(std::optional<int> turn) noexcept {
    return !turn ? 0 : *turn == 0 ? 360 : *turn;
  }

  Box box(const JTPDFRect& rect) const noexcept {
    const Unit unit = doc_.unit();
    return {rect.left * unit, rect.bottom * unit, rect.width * unit, rect.height * unit,
            Angle{rect.angle}};
  }

  Document& doc_;
  std::unique_ptr<JTPDFPictureWriter, Destroy> handle_;
};

}  // namespace jtpdf

#endif  // JTPDF_PICTURES_HPP
