// JPEG 2000 files of no more than headers.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "formats/jpeg2000_codestream.h"
#include "formats/jpeg2000_file.h"
#include "image.h"

namespace pictures {
namespace {

// A grey picture of 8 bits whose tiles hold nothing.
struct Header {
  uint32_t right = 16, bottom = 16, left = 0, top = 0;
  uint32_t tileWidth = 16, tileHeight = 16, tileLeft = 0, tileTop = 0;
  uint8_t depth = 8;
  uint8_t levels = 5;
  std::vector<uint8_t> quantisation = std::vector<uint8_t>(1 + 3 * 5 + 1, 0x40);
};

class Codestream {
 public:
  explicit Codestream(const Header& header) {
    Put({0xFF, 0x4F, 0xFF, 0x51, 0, 41, 0, 0});
    for (const uint32_t number :
         {header.right, header.bottom, header.left, header.top, header.tileWidth, header.tileHeight,
          header.tileLeft, header.tileTop}) {
      PutNumber(number);
    }
    Put({0, 1, static_cast<uint8_t>(header.depth - 1), 1, 1});           // one component
    Put({0xFF, 0x52, 0, 12, 0, 0, 0, 1, 0, header.levels, 4, 4, 0, 0});  // coding style
    Put({0xFF, 0x5C, 0, static_cast<uint8_t>(2 + header.quantisation.size())});
    Put(header.quantisation);
    Put({0xFF, 0x90, 0, 10, 0, 0, 0, 0, 0, 14, 0, 1, 0xFF, 0xD9});  // the first tile
  }
  const std::vector<uint8_t>& Get() const { return bytes_; }
  // What is wrong with it; empty for nothing.
  std::string Problem() const {
    try {
      ReadCodestream(Bytes(bytes_));
      return "";
    } catch (const ImageError& error) {
      return error.what();
    }
  }

 private:
  void Put(const std::vector<uint8_t>& bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  }
  void PutNumber(uint32_t number) {
    for (int shift = 24; shift >= 0; shift -= 8) {
      bytes_.push_back(static_cast<uint8_t>(number >> shift));
    }
  }

  std::vector<uint8_t> bytes_;
};

void ExpectProblem(const Header& header, const std::string& words) {
  EXPECT_NE(Codestream(header).Problem().find(words), std::string::npos)
      << Codestream(header).Problem();
}

TEST(Jpeg2000Codestream, IsReadToItsEnd) {
  EXPECT_EQ(Codestream({}).Problem(), "");
}

TEST(Jpeg2000Codestream, HasNoMoreTilesThanCanBeNumbered) {
  Header header;
  header.tileWidth = header.tileHeight = 1;
  header.right = header.bottom = 256;
  ExpectProblem(header, "more than 65535 tiles");
  header.right = 65535;
  header.bottom = 1;
  ExpectProblem(header, "ends before its picture does");  // of its tiles there is one
}

TEST(Jpeg2000Codestream, HasTilesWhereItsPictureIs) {
  Header header;
  header.left = header.tileWidth = 5;
  ExpectProblem(header, "tiles that are not where the picture is");
  header.left = 4;
  header.right = 5;
  EXPECT_EQ(Codestream(header).Problem(), "");
}

TEST(Jpeg2000Codestream, HasSamplesOfUpTo38Bits) {
  Header header;
  header.depth = 38;
  EXPECT_EQ(Codestream(header).Problem(), "");
  header.depth = 39;
  ExpectProblem(header, "samples of more than 38 bits");
}

TEST(Jpeg2000Codestream, HasAStepForEachBand) {
  Header header;
  header.quantisation.pop_back();
  ExpectProblem(header, "other quantisation than levels");
  header.levels = 4;
  EXPECT_EQ(Codestream(header).Problem(), "");
}

TEST(Jpeg2000Codestream, HasAStyleOfQuantisationThatThereIs) {
  Header header;
  header.quantisation.assign(1 + 2 * 16, 0x40);
  for (const uint8_t style : {1, 2}) {
    header.quantisation[0] = style;
    EXPECT_EQ(Codestream(header).Problem(), "") << int{style};
  }
  header.quantisation[0] = 3;
  ExpectProblem(header, "other quantisation than levels");
}

std::string Box(std::string_view name, std::string_view data) {
  std::string box(3, '\0');
  box += static_cast<char>(8 + data.size());
  return box.append(name).append(data);
}

// A file of the picture above with these boxes in its header and behind that.
Jpeg2000File ReadFile(const std::string& header, const std::string& behind = "") {
  using namespace std::string_literals;
  const std::vector<uint8_t> stream = Codestream({}).Get();
  const std::string file =
      std::string(kJp2Magic) + Box("ftyp", "jp2 \0\0\0\0jp2 "s) +
      Box("jp2h", Box("ihdr", "\0\0\0\x10\0\0\0\x10\0\1\7\7\0\0"s) + header) + behind +
      Box("jp2c", {reinterpret_cast<const char*>(stream.data()), stream.size()});
  return ReadJpeg2000File(Bytes(reinterpret_cast<const uint8_t*>(file.data()), file.size()));
}

std::string ColoursOf(int number) {
  using namespace std::string_literals;
  return Box("colr", "\1\0\0\0\0\0"s + static_cast<char>(number));
}

TEST(Jpeg2000File, KnowsItsColoursByNumber) {
  using Model = Jpeg2000File::Model;
  for (const auto& [number, model] :
       {std::pair(12, Model::kCmyk), std::pair(16, Model::kRgb), std::pair(17, Model::kGrey),
        std::pair(18, Model::kYcc), std::pair(19, Model::kUnknown)}) {
    EXPECT_EQ(ReadFile(ColoursOf(number)).model, model) << number;
  }
  EXPECT_EQ(ReadFile(ColoursOf(17) + ColoursOf(16)).model, Model::kGrey);
  EXPECT_EQ(ReadFile(ColoursOf(19) + ColoursOf(16)).model, Model::kRgb);
}

TEST(Jpeg2000File, TellsWhetherItsChannelsAreInOrder) {
  using namespace std::string_literals;
  const auto channels = [](const std::string& list) { return ReadFile(Box("cdef", list)); };
  const std::string usual = "\0\2\0\0\0\0\0\1\0\1\0\0\0\2"s,
                    turned = "\0\2\0\0\0\0\0\2\0\1\0\0\0\1"s;
  EXPECT_FALSE(channels(usual).reordered);
  EXPECT_FALSE(channels(usual).alpha);
  EXPECT_TRUE(channels(turned).reordered);
  EXPECT_TRUE(channels("\0\1\0\0\0\1\0\0"s).alpha);
}

TEST(Jpeg2000File, HasExifDataByAName) {
  using namespace std::string_literals;
  const std::string exif = "II*\0\x08\0\0\0\1\0\x12\1\3\0\1\0\0\0\6\0\0\0\0\0\0\0"s;  // turned
  const auto orientation = [&](const std::string& prefix) {
    return ReadFile("", Box("uuid", "JpgTiffExif->JP2" + prefix + exif)).exif.orientation;
  };
  EXPECT_EQ(orientation(""), 6);
  EXPECT_EQ(orientation("Exif\0\0"s), 6);
  EXPECT_EQ(orientation("Exif\0\1"s), std::nullopt);
}

TEST(Jpeg2000File, HasOneStreamWhereItsBoxesAreDamaged) {
  using namespace std::string_literals;
  const Jpeg2000File file = ReadFile("", "\0\0\0\2bad."s);
  EXPECT_EQ(file.streams, 1u);
  EXPECT_FALSE(file.damage.empty());
}

}  // namespace
}  // namespace pictures
