#include "formats/jpeg2000_codestream.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "image.h"

namespace pictures {
namespace {

// A grey picture of 8 bits whose tiles hold nothing.
struct Header {
  uint32_t right = 16, bottom = 16, left = 0, top = 0;
  uint32_t tileWidth = 16, tileHeight = 16, tileLeft = 0, tileTop = 0;
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
    Put({0, 1, 7, 1, 1});                                                // one component
    Put({0xFF, 0x52, 0, 12, 0, 0, 0, 1, 0, header.levels, 4, 4, 0, 0});  // coding style
    Put({0xFF, 0x5C, 0, static_cast<uint8_t>(2 + header.quantisation.size())});
    Put(header.quantisation);
    Put({0xFF, 0x90, 0, 10, 0, 0, 0, 0, 0, 14, 0, 1, 0xFF, 0xD9});  // the first tile
  }
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

}  // namespace
}  // namespace pictures
