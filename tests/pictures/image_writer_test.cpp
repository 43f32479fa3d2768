#include "image_writer.h"

#include <gtest/gtest.h>
#include <jtpdf/jtpdf.h>

#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "as_bytes.h"

namespace pictures {
namespace {

int32_t Append(void* to, const char* data, size_t size) {
  static_cast<std::string*>(to)->append(data, size);
  return 0;
}

// A document in memory that holds images and nothing else.
class ImageWriterTest : public testing::Test {
 protected:
  ImageWriterTest()
      : document_(CreateCallbackPdfDoc(PDFCoordinateUnitPoint, Append, &text_)),
        images_(document_.get(), 6) {
    EXPECT_EQ(InitPdfDoc(document_.get()), 0);
  }

  int Write(const EncodedImage& image, const std::wstring& name = L"") {
    int number = 0;
    EXPECT_EQ(images_.Write(image, {kPdfImageRolePhoto, name}, &number), 0);
    return number;
  }
  // Ends the document; gives the object, from its dictionary's first entry to its end.
  std::string Object(int number) {
    if (document_) {
      EXPECT_EQ(FinalizePdfDoc(document_.get(), nullptr), 0);
      document_.reset();
    }
    const std::string head = "\r\n" + std::to_string(number) + " 0 obj\r\n<<\r\n";
    const size_t begin = text_.find(head), end = text_.find("endobj", begin);
    EXPECT_NE(begin, std::string::npos) << number;
    return begin == std::string::npos ? "" : text_.substr(begin + head.size(), end - begin);
  }
  // What the image is written as, without the entries that all of them have.
  std::string Written(const EncodedImage& image, const std::wstring& name = L"") {
    std::string text = Object(Write(image, name));
    for (const char* const line :
         {"/Type /XObject\r\n", "/Subtype /Image\r\n", "/Width 4\r\n", "/Height 2\r\n",
          "/JTImageType /Photo\r\n", "/Intent /RelativeColorimetric\r\n"}) {
      const size_t at = text.find(line);
      EXPECT_NE(at, std::string::npos) << line << text;
      if (at != std::string::npos) text.erase(at, std::strlen(line));
    }
    return text.substr(0, text.find("endobj"));
  }

  std::string text_;
  struct Destroy {
    void operator()(JTPDFDocument* document) const { DestroyPdfDoc(document); }
  };
  std::unique_ptr<JTPDFDocument, Destroy> document_;
  ImageWriter images_;
};

EncodedImage Grey(std::string_view data) {
  EncodedImage image;
  image.pixels.pieces = {AsBytes(data)};
  image.pixels.width = 4;
  image.pixels.height = 2;
  image.pixels.colour = Colour::kGrey;
  return image;
}

TEST_F(ImageWriterTest, WritesDataInPiecesBehindEachOther) {
  EncodedImage image = Grey("abc");
  image.pixels.pieces.push_back(AsBytes("de"));
  EXPECT_EQ(Written(image),
            "/BitsPerComponent 8\r\n/ColorSpace /DeviceGray\r\n/Filter /FlateDecode\r\n"
            "/Length 5\r\n>>\r\nstream\r\nabcde\r\nendstream\r\n");
}

TEST_F(ImageWriterTest, GivesThePredictorTheShapeOfTheRows) {
  EncodedImage image = Grey("x");
  image.pixels.colour = Colour::kRgb;
  image.pixels.bits = 16;
  image.pixels.predictor = 15;
  const std::string text = Written(image);
  EXPECT_NE(text.find("/DecodeParms\r\n<<\r\n/BitsPerComponent 16\r\n/Colors 3\r\n/Columns 4\r\n"
                      "/Predictor 15\r\n>>\r\n"),
            std::string::npos)
      << text;
}

TEST_F(ImageWriterTest, CountsOneColourOfSamplesWithAPalette) {
  EncodedImage image = Grey("x");
  image.pixels.colour = Colour::kRgb;
  image.pixels.palette = Buffer::CopyOf(AsBytes(std::string_view("(A)\r\\\n\0BC", 9)));
  image.pixels.predictor = 15;
  image.pixels.bits = 2;
  const std::string text = Written(image);
  EXPECT_NE(text.find("/ColorSpace [/Indexed /DeviceRGB 2 (\\(A\\)\\r\\\\\n\\000BC)]\r\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("/Colors 1\r\n"), std::string::npos);
}

TEST_F(ImageWriterTest, WritesAPaletteInHexadecimalsWhereTheseAreShorter) {
  EncodedImage image = Grey("x");
  image.pixels.palette = Buffer::CopyOf(AsBytes(std::string_view("\0\0\xA5", 3)));
  EXPECT_NE(Written(image).find("[/Indexed /DeviceGray 2 <0000A5>]"), std::string::npos);
}

TEST_F(ImageWriterTest, NamesTheParametersOfFaxData) {
  EncodedImage image = Grey("x");
  image.pixels.filter = Filter::kCcitt;
  image.pixels.bits = 1;
  image.pixels.ccitt = {4, true, true, true, false};
  image.pixels.decode = {1, 0};
  EXPECT_EQ(Written(image),
            "/BitsPerComponent 1\r\n/ColorSpace /DeviceGray\r\n/Decode [1 0]\r\n"
            "/DecodeParms\r\n<<\r\n/BlackIs1 true\r\n/Columns 4\r\n/EncodedByteAlign true\r\n"
            "/EndOfBlock false\r\n/EndOfLine true\r\n/K 4\r\n/Rows 2\r\n>>\r\n"
            "/Filter /CCITTFaxDecode\r\n/Length 1\r\n>>\r\nstream\r\nx\r\nendstream\r\n");
}

TEST_F(ImageWriterTest, LeavesColoursAndAlphaToJpeg2000) {
  EncodedImage image = Grey("x");
  image.pixels.filter = Filter::kJpx;
  EXPECT_EQ(Written(image),
            "/BitsPerComponent 8\r\n/Filter /JPXDecode\r\n/SMaskInData 1\r\n"
            "/Length 1\r\n>>\r\nstream\r\nx\r\nendstream\r\n");
}

TEST_F(ImageWriterTest, WritesColourKeysAndNames) {
  EncodedImage image = Grey("x");
  image.pixels.colourKey = {7, 9};
  image.pixels.filter = Filter::kNone;
  EXPECT_EQ(Written(image, L"\u00e9\U0001F600"),
            "/BitsPerComponent 8\r\n/ColorSpace /DeviceGray\r\n"
            "/JTImageName (\xFE\xFF\\000\xE9\xD8=\xDE\\000)\r\n"
            "/Mask [7 9]\r\n/Length 1\r\n>>\r\nstream\r\nx\r\nendstream\r\n");
}

TEST_F(ImageWriterTest, WritesTheSoftMaskBeforeTheImage) {
  EncodedImage image = Grey("x");
  image.alpha = EncodedStream{};
  image.alpha->pieces = {AsBytes("alpha")};
  image.alpha->colour = Colour::kGrey;
  image.alpha->width = 8;
  const int number = Write(image);
  EXPECT_NE(Object(number).find("/SMask " + std::to_string(number - 1) + " 0 R\r\n"),
            std::string::npos);
  EXPECT_NE(Object(number - 1).find("/JTImageType /Alpha\r\n"), std::string::npos);
}

TEST_F(ImageWriterTest, WritesEachProfileOnceAndSaysItsComponents) {
  const struct {
    Colour colour;
    std::string entries;
  } kCases[] = {{Colour::kGrey, "/Alternate /DeviceGray\r\n/Filter /FlateDecode\r\n/N 1\r\n"},
                {Colour::kRgb, "/Alternate /DeviceRGB\r\n/Filter /FlateDecode\r\n/N 3\r\n"},
                {Colour::kCmyk, "/Alternate /DeviceCMYK\r\n/Filter /FlateDecode\r\n/N 4\r\n"}};
  std::vector<int> images;
  for (const auto& [colour, entries] : kCases) {
    EncodedImage image = Grey("x");
    image.pixels.colour = colour;
    image.profile = Buffer::CopyOf(AsBytes(entries));
    images.push_back(Write(image));
    EXPECT_EQ(Write(image), images.back() + 1);
  }
  for (size_t i = 0; i < images.size(); ++i) {
    const std::string profile = Object(images[i] - 1);
    EXPECT_TRUE(profile.starts_with(kCases[i].entries)) << profile;
    const std::string space =
        "/ColorSpace [/ICCBased " + std::to_string(images[i] - 1) + " 0 R]\r\n";
    EXPECT_NE(Object(images[i]).find(space), std::string::npos);
    EXPECT_NE(Object(images[i] + 1).find(space), std::string::npos);
  }
}

}  // namespace
}  // namespace pictures
