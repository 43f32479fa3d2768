// The C interface of pictures, and its C++ face, over the shared library as programs have it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "jtpdf/pictures.hpp"

namespace {

using jtpdf::Document;
using jtpdf::Picture;
using jtpdf::PictureWriter;

const std::string kImages = JTPDF_EXAMPLE_IMAGES;

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

std::string FileOf(Document& doc) {
  doc.finish();
  return std::string(doc.bytes().begin(), doc.bytes().end());
}

size_t Count(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

// A JPEG file with the profile in a segment behind its start.
std::string WithProfile(const std::string& jpeg, const std::string& profile) {
  const std::string data = std::string("ICC_PROFILE\0\1\1", 14) + profile;
  const size_t size = data.size() + 2;
  const std::string head = {'\xFF', '\xE2', static_cast<char>(size >> 8), static_cast<char>(size)};
  return jpeg.substr(0, 2) + head + data + jpeg.substr(2);
}

template <typename Body>
std::string MessageOf(const Body& body) {
  try {
    body();
  } catch (const jtpdf::PictureError& error) {
    return error.what();
  }
  return "no PictureError was thrown";
}

TEST(JtpdfPicture, TellsWhatIsKnownFromTheHeader) {
  const Picture photo = Picture::file(kImages + "/coast.jpg");
  ASSERT_EQ(photo.frames(), 1u);
  const jtpdf::PictureInfo info = photo.info();
  EXPECT_STREQ(info.format, "JPEG");
  EXPECT_STREQ(info.colors, "RGB");
  EXPECT_STREQ(info.reason, "");
  EXPECT_STREQ(info.profile, "none");
  EXPECT_STREQ(info.problem, "");
  EXPECT_EQ(info.bitsPerComponent, 8);
  EXPECT_EQ(info.orientation, 1);
  EXPECT_GT(info.width, 0);
  EXPECT_EQ(info.size, std::filesystem::file_size(kImages + "/coast.jpg"));
  EXPECT_FALSE(info.hasAlpha);
  const jtpdf::PictureInfo balloon = Picture::file(kImages + "/balloon-rgba.png").info();
  EXPECT_STREQ(balloon.format, "PNG");
  EXPECT_TRUE(balloon.hasAlpha);
  EXPECT_TRUE(Picture::file(kImages + "/tulips-palette.png").info().hasPalette);
  EXPECT_TRUE(photo.notes().empty());
}

TEST(JtpdfPicture, IsTheSameFromAFileMemoryAndAStream) {
  const std::string path = kImages + "/balloon-rgba.png";
  const std::string bytes = ReadFile(path);
  std::vector<std::string> documents;
  std::istringstream stream(bytes);
  const Picture pictures[] = {Picture::file(std::filesystem::path(path)), Picture::memory(bytes),
                              Picture::stream(stream)};
  for (const Picture& picture : pictures) {
    Document doc = Document::memory();
    PictureWriter(doc).add_page(picture, {"A4", "", "1cm"});
    documents.push_back(FileOf(doc));
  }
  EXPECT_EQ(documents[0], documents[1]);
  EXPECT_EQ(documents[0], documents[2]);
  EXPECT_EQ(Count(documents[0], "/SMask "), 2u) << "of the image and of the graphics state";
}

struct Film {
  const char* file;
  unsigned frames;
};

void PrintTo(const Film& film, std::ostream* to) {
  *to << film.file;
}

class JtpdfFilm : public testing::TestWithParam<Film> {
 protected:
  const std::string path_ = std::string(JTPDF_FILMS) + GetParam().file;
};

INSTANTIATE_TEST_SUITE_P(All, JtpdfFilm,
                         testing::Values(Film{"/gif/film-0", 3}, Film{"/gif/film-2", 3},
                                         Film{"/gif/film-3", 3}, Film{"/webp/film", 2},
                                         Film{"/png/animation-over", 3},
                                         Film{"/jpeg/two-pictures", 2}));

// The data of the images, masks included.
std::vector<std::string> ImagesIn(const std::string& pdf) {
  std::vector<std::string> images;
  const std::string begin = ">>\r\nstream\r\n";
  size_t end = 0;
  for (size_t at = pdf.find(begin); at != std::string::npos; at = pdf.find(begin, end)) {
    const std::string head = pdf.substr(end, at - end);
    end = pdf.find("\r\nendstream", at);
    if (Count(head, "/Subtype /Image") > 0) images.push_back(pdf.substr(at, end - at));
  }
  return images;
}

TEST_P(JtpdfFilm, HasOneFrameUnlessAllAreAskedFor) {
  const Picture first = Picture::file(path_);
  EXPECT_EQ(first.frames(), 1u);
  ASSERT_FALSE(first.notes().empty());
  jtpdf::PictureLimits limits;
  limits.all_frames = true;
  EXPECT_EQ(Picture::file(path_, limits).frames(), GetParam().frames);
  const std::string bytes = ReadFile(path_);
  EXPECT_EQ(Picture::memory(bytes, limits).frames(), GetParam().frames);
  std::istringstream stream(bytes);
  EXPECT_EQ(Picture::stream(stream, limits).frames(), GetParam().frames);
}

#ifdef JTPDF_COMMAND
TEST_P(JtpdfFilm, HasTheFramesThatTheCommandMakes) {
  FILE* const pipe =
      popen(("'" JTPDF_COMMAND "' --quiet --all-frames '" + path_ + "'").c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::string made;
  char piece[4096];
  while (const size_t count = fread(piece, 1, sizeof piece, pipe)) made.append(piece, count);
  ASSERT_EQ(pclose(pipe), 0);
  const std::vector<std::string> expected = ImagesIn(made);
  ASSERT_GE(expected.size(), GetParam().frames);

  const Picture film = Picture::file(path_, {0, 0, true});
  Document doc = Document::memory();
  PictureWriter pictures(doc);
  for (unsigned frame = 0; frame < film.frames(); ++frame) pictures.add_page(film, {}, frame);
  EXPECT_EQ(ImagesIn(FileOf(doc)), expected);

  // In another order, too.
  Document backwards = Document::memory();
  PictureWriter again(backwards);
  for (unsigned frame = film.frames(); frame > 0; --frame) again.write(film, frame - 1);
  std::vector<std::string> images = ImagesIn(FileOf(backwards));
  std::sort(images.begin(), images.end());
  std::vector<std::string> sorted = expected;
  std::sort(sorted.begin(), sorted.end());
  EXPECT_EQ(images, sorted);
}
#endif

TEST(JtpdfPicture, PassesBytesThroughUnchanged) {
  const std::string bytes = ReadFile(kImages + "/coast.jpg");
  Document doc = Document::memory();
  PictureWriter(doc).add_page(Picture::memory(bytes));
  EXPECT_NE(FileOf(doc).find(bytes), std::string::npos);
}

TEST(JtpdfPictureWriter, MakesPicturesSmallestWithoutLoss) {
  for (const char* name : {"/coast.jpg", "/coast-rgb.png"}) {
    const Picture picture = Picture::file(kImages + name);
    std::vector<std::string> files;
    for (const int level : {12, jtpdf::smallest}) {
      Document doc = Document::memory();
      PictureWriter(doc, level).add_page(picture);
      files.push_back(FileOf(doc));
    }
    EXPECT_LT(files[1].size(), files[0].size()) << name;
  }
}

TEST(JtpdfPictureWriter, TakesEntriesOfThePageThatWereSetBefore) {
  Document doc = Document::memory();
  doc.set_page_entry("/TrimBox", "[10 10 500 700]");
  PictureWriter(doc).add_page(Picture::file(kImages + "/coast.jpg"), {"A4"});
  EXPECT_EQ(Count(FileOf(doc), "/TrimBox [10 10 500 700]"), 1u);
}

TEST(JtpdfPictureWriter, WritesAProfileOnceForAllPictures) {
  Document doc = Document::memory();
  PictureWriter pictures(doc);
  const std::string bytes =
      WithProfile(ReadFile(kImages + "/maple-bgr.jpg"), ReadFile(kImages + "/bgr.icc"));
  const Picture swapped = Picture::memory(bytes);
  EXPECT_STREQ(swapped.info().profile, "used");
  const jtpdf::Image first = pictures.write(swapped);
  const jtpdf::Image second = pictures.write(swapped);
  EXPECT_NE(first, second);
  doc.draw_image(first, jtpdf::paper::a4);
  doc.add_page(jtpdf::paper::a4);
  EXPECT_EQ(Count(FileOf(doc), "/N 3\r\n"), 1u);
}

TEST(JtpdfPictureWriter, LaysOutInTheUnitOfTheDocument) {
  Document doc = Document::memory(jtpdf::millimeter);
  PictureWriter pictures(doc);
  const Picture photo = Picture::file(kImages + "/coast.jpg");
  const jtpdf::PictureLayout layout = pictures.lay_out(photo, {"A4^T", "", "1cm:2cm"});
  EXPECT_NEAR(layout.page.width.in(jtpdf::millimeter), 297, 1e-9);
  EXPECT_NEAR(layout.page.height.in(jtpdf::millimeter), 210, 1e-9);
  EXPECT_LE(layout.image.width.in(jtpdf::millimeter), 257 + 1e-9);
  EXPECT_LE(layout.image.height.in(jtpdf::millimeter), 190 + 1e-9);
  jtpdf::PicturePage turned{"", "100dpi"};
  turned.turn = 90;
  const jtpdf::PictureLayout own = pictures.lay_out(photo, turned);
  EXPECT_NEAR(own.page.width.in(jtpdf::inch), photo.info().height / 100.0, 1e-9);
  EXPECT_EQ(own.image.angle.degrees, 270);
  turned.turn = 0;
  EXPECT_NEAR(pictures.lay_out(photo, turned).page.width.in(jtpdf::inch),
              photo.info().width / 100.0, 1e-9);
  jtpdf::PicturePage exact{"10cmx10cm"};
  exact.fit = jtpdf::Fit::exact;
  EXPECT_NEAR(pictures.lay_out(photo, exact).image.width.in(jtpdf::centimeter), 10, 1e-9);
  doc.discard();
}

TEST(JtpdfPictureWriter, FitsAPictureIntoABoxOfTheCanvas) {
  using jtpdf::millimeter;
  Document doc = Document::memory(millimeter);
  const PictureWriter pictures(doc);
  const Picture photo = Picture::file(kImages + "/coast.jpg");
  const double shape = static_cast<double>(photo.info().width) / photo.info().height;
  const jtpdf::Box room = {20 * millimeter, 30 * millimeter, 60 * millimeter, 60 * millimeter};
  const jtpdf::Box place = pictures.fit(photo, room);
  EXPECT_NEAR(place.left.in(millimeter), 20, 1e-9);
  EXPECT_NEAR(place.width.in(millimeter), 60, 1e-9);
  EXPECT_NEAR(place.height.in(millimeter), 60 / shape, 1e-9);
  EXPECT_NEAR(place.bottom.in(millimeter), 60 - 30 / shape, 1e-9);
  const jtpdf::Box turned = pictures.fit(photo, room, jtpdf::Fit::into, 90);
  EXPECT_EQ(turned.angle.degrees, 270);
  const jtpdf::Box upright = turned.upright();
  EXPECT_EQ(upright.angle.degrees, 0);
  EXPECT_NEAR(upright.height.in(millimeter), 60, 1e-9);
  EXPECT_NEAR(upright.bottom.in(millimeter), 30, 1e-9);
  const JTPDFRect same = JTPDFUprightPicture(
      {turned.left.in(millimeter), turned.bottom.in(millimeter), turned.width.in(millimeter),
       turned.height.in(millimeter), turned.angle.degrees});
  EXPECT_EQ(same.left, upright.left.in(millimeter));
  EXPECT_EQ(same.width, upright.width.in(millimeter));
  EXPECT_NEAR(pictures.fit(photo, room, jtpdf::Fit::exact).height.in(millimeter), 60, 1e-9);
  // "shrink" goes by the size that the picture has by itself: 96 dots per inch, where none is said.
  const jtpdf::Box wide = {{}, {}, 9 * jtpdf::inch, 9000 * jtpdf::inch};
  const double own = pictures.lay_out(photo).page.width.in(jtpdf::inch);
  EXPECT_NEAR(pictures.fit(photo, wide, jtpdf::Fit::shrink).width.in(jtpdf::inch),
              std::min(9.0, own), 1e-9);
  for (const jtpdf::Box& none :
       {jtpdf::Box{{}, {}, {}, 1 * millimeter}, jtpdf::Box{{}, {}, 1 * millimeter, -1 * millimeter},
        jtpdf::Box{{}, {}, std::nan("") * millimeter, 1 * millimeter}}) {
    EXPECT_EQ(MessageOf([&] { pictures.fit(photo, none); }),
              "box: has no room for a picture; its width and height have to be above 0");
  }
  EXPECT_EQ(MessageOf([&] { pictures.fit(photo, room, jtpdf::Fit::into, 45); }),
            "turn: 45 is none of 0, 90, 180, 270 and 360");
  EXPECT_EQ(MessageOf([&] { pictures.fit(photo, room, static_cast<jtpdf::Fit>(5)); }),
            "fit: 5 is none of 0 to 4");
  EXPECT_EQ(MessageOf([&] { pictures.fit(photo, room, {}, {}, 1); }),
            "has no frame 1; there are 1");
  doc.discard();
}

TEST(JtpdfPictureWriter, CountsItsPagesWithThoseOfTheDocument) {
  Document doc = Document::memory();
  PictureWriter pictures(doc);
  pictures.add_page(Picture::file(kImages + "/coast.jpg"));
  doc.add_bookmark("behind", doc.page_count());
  pictures.add_page(Picture::file(kImages + "/city.jpg"));
  EXPECT_EQ(doc.page_count(), 2);
  EXPECT_EQ(Count(FileOf(doc), "/Type /Page\r\n"), 2u);
}

TEST(JtpdfPicture, SaysWhatIsWrongInPlainWords) {
  const std::string photo = ReadFile(kImages + "/coast.jpg");
  const std::string text(100, 'x');
  const std::string empty;
  const std::string cut = photo.substr(0, 300);
  EXPECT_EQ(MessageOf([] { Picture::file("/nowhere/a.png"); }),
            "cannot be read: No such file or directory; check the name");
  EXPECT_EQ(MessageOf([] { Picture::file("/"); }),
            "cannot be read: Is a directory; name a file in it");
  EXPECT_EQ(MessageOf([&] { Picture::memory(empty); }),
            "is empty; it holds no picture, copy or save it again");
  EXPECT_EQ(MessageOf([&] { Picture::memory(text); }).substr(0, 29),
            "is no picture of a known kind");
  EXPECT_NE(MessageOf([&] { Picture::memory(cut); }), "no PictureError was thrown");
  EXPECT_EQ(MessageOf([&] { Picture::memory(photo, {100}); }).substr(0, 6), "claims");
  EXPECT_NE(MessageOf([&] { Picture::memory(photo, {100}); }).find("allow it with maxPixels"),
            std::string::npos);
  std::istringstream stream(photo);
  EXPECT_EQ(MessageOf([&] {
              Picture::stream(stream, {0, 1000});
            }),
            "holds more than 1000 bytes; if that is right, allow it with maxBytes");
}

TEST(JtpdfPicture, RefusesWhatIsAskedForByItsName) {
  Document doc = Document::memory();
  PictureWriter pictures(doc);
  const Picture photo = Picture::file(kImages + "/coast.jpg");
  const auto message = [&](const jtpdf::PicturePage& page) {
    return MessageOf([&] { pictures.add_page(photo, page); });
  };
  EXPECT_EQ(message({"A9"}).substr(0, 26), "page: \"A9\" is no page size");
  EXPECT_EQ(message({"", "1"}).substr(0, 24), "would need a page of 1 x");
  EXPECT_EQ(message({"", "big"}).substr(0, 12), "image: \"big\"");
  EXPECT_EQ(message({"", "", "wide"}).substr(0, 14), "border: \"wide\"");
  EXPECT_EQ(message({"A4", "", "20cm"}),
            "has no room left on its page inside the border; choose a smaller border or a larger "
            "page");
  jtpdf::PicturePage turned;
  turned.turn = 45;
  EXPECT_EQ(message(turned), "turn: 45 is none of 0, 90, 180, 270 and 360");
  EXPECT_EQ(MessageOf([&] { pictures.write(photo, 1); }), "has no frame 1; there are 1");
  EXPECT_EQ(MessageOf([&] { photo.info(7); }), "has no frame 7; there are 1");
  EXPECT_EQ(MessageOf([&] { PictureWriter(doc, 14); }), "level: 14 is none of 0 to 13");
  EXPECT_EQ(doc.page_count(), 0) << "nothing of it is in the document";
}

TEST(JtpdfPictureWriter, GivesTheFailuresOfTheDocument) {
  Document doc = Document::to([](std::string_view) { throw std::runtime_error("disk"); });
  PictureWriter pictures(doc);
  EXPECT_THROW(pictures.add_page(Picture::file(kImages + "/coast.jpg")), std::runtime_error);
  doc.discard();

  JTPDFDocument* const closed = CreateMemoryPdfDoc(1);
  JTPDFPictureError error;
  JTPDFPictureWriter* const writer = JTPDFCreatePictureWriter(closed, 1, 6, &error);
  JTPDFPicture* const picture =
      JTPDFOpenPictureFile((kImages + "/coast.jpg").c_str(), nullptr, nullptr);
  EXPECT_EQ(kJTPDFPictureDocument,
            JTPDFAddPicturePage(writer, picture, 0, nullptr, nullptr, &error));
  EXPECT_EQ(-1, error.code);
  EXPECT_EQ(0, std::strncmp(error.message, "the document refused it", 23)) << error.message;
  EXPECT_EQ(kJTPDFPictureDocument, JTPDFWritePicture(writer, picture, 0, nullptr, nullptr));
  JTPDFClosePicture(picture);
  JTPDFDestroyPictureWriter(writer);
  DestroyPdfDoc(closed);
}

TEST(JtpdfPictureInterface, TakesACallbackThatFailsOrLies) {
  JTPDFPictureError error;
  const auto fail = [](void*, char*, size_t, size_t*) -> int32_t { return ETIMEDOUT; };
  EXPECT_EQ(nullptr, JTPDFOpenPictureStream(fail, nullptr, nullptr, &error));
  EXPECT_EQ(kJTPDFPictureUnusable, error.result);
  EXPECT_EQ(ETIMEDOUT, error.code);
  const auto lie = [](void*, char*, size_t size, size_t* count) -> int32_t {
    *count = size + 1;
    return 0;
  };
  EXPECT_EQ(nullptr, JTPDFOpenPictureStream(lie, nullptr, nullptr, &error));
  EXPECT_EQ(kJTPDFPictureArgument, error.result);
  EXPECT_EQ(kJTPDFPictureArgument, JTPDFGetPictureInfo(nullptr, 0, nullptr, &error));
  EXPECT_EQ(kJTPDFPictureArgument, JTPDFWritePicture(nullptr, nullptr, 0, nullptr, &error));
  EXPECT_EQ(kJTPDFPictureArgument,
            JTPDFAddPicturePage(nullptr, nullptr, 0, nullptr, nullptr, &error));
  EXPECT_EQ(kJTPDFPictureArgument,
            JTPDFLayOutPicture(nullptr, nullptr, 0, nullptr, nullptr, &error));
  EXPECT_STREQ("writer: is null", error.message);
  EXPECT_EQ(kJTPDFPictureArgument,
            JTPDFFitPicture(nullptr, nullptr, 0, {0, 0, 1, 1, 0}, 0, 0, nullptr, &error));
  EXPECT_EQ(0u, JTPDFCountPictureFrames(nullptr));
  EXPECT_EQ(nullptr, JTPDFGetPictureNote(nullptr, 0, 0));
  EXPECT_EQ(nullptr, JTPDFOpenPictureFile(nullptr, nullptr, &error));
  EXPECT_EQ(kJTPDFPictureArgument, error.result);
  EXPECT_EQ(nullptr, JTPDFOpenPictureStream(nullptr, nullptr, nullptr, &error));
  EXPECT_EQ(nullptr, JTPDFCreatePictureWriter(nullptr, 1, 6, &error));
  JTPDFClosePicture(nullptr);
  JTPDFDestroyPictureWriter(nullptr);
}

TEST(JtpdfPictureInterface, CutsLongMessagesBetweenCharacters) {
  Document doc = Document::memory();
  PictureWriter pictures(doc);
  std::string page;
  for (int i = 0; i < 1000; ++i) page += "ä";
  const std::string message =
      MessageOf([&] { pictures.lay_out(Picture::file(kImages + "/coast.jpg"), {page}); });
  EXPECT_GE(message.size(), 1010u);
  EXPECT_EQ(message.substr(message.size() - 2), "ä");
}

TEST(JtpdfPictureInterface, WorksOnDifferentPicturesAtOnce) {
  std::vector<std::string> results(4);
  std::vector<std::thread> threads;
  for (std::string& result : results) {
    threads.emplace_back([&result] {
      Document doc = Document::memory();
      PictureWriter pictures(doc);
      for (const char* name : {"/balloon-rgba.png", "/coast-rgb.png", "/coast.jpg"}) {
        pictures.add_page(Picture::file(kImages + name), {"A5"});
      }
      result = FileOf(doc);
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::string& result : results) EXPECT_EQ(result, results[0]);
}

}  // namespace
