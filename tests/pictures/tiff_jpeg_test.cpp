#include "formats/tiff_jpeg.h"

#include <gtest/gtest.h>

#include <string>

#include "as_bytes.h"

namespace pictures {
namespace {

using namespace std::string_literals;

std::string Segment(char marker, const std::string& data) {
  return "\xFF"s + marker + '\0' + static_cast<char>(data.size() + 2) + data;
}

// One table of 64 equal numbers.
std::string Quantisation(char number, char value) {
  return Segment('\xDB', std::string(1, number) + std::string(64, value));
}

std::string Frame(int height, int width = 16, char sampling = '\x11', char kind = '\xC0') {
  return Segment(kind, "\x08\0"s + static_cast<char>(height) + '\0' + static_cast<char>(width) +
                           "\3\1"s + sampling + "\0\2\x11\1\3\x11\1"s);
}

const std::string kScan = Segment('\xDA', "\3\1\0\2\x11\3\x11\0\x3F\0"s);
const std::string kStart = "\xFF\xD8", kEnd = "\xFF\xD9";

std::string Strip(int height, const std::string& data) {
  return kStart + Frame(height) + kScan + data + kEnd;
}

class JoinJpegStrips : public testing::Test {
 protected:
  JoinJpegStrips() {
    page_.width = 16;
    page_.height = 20;
    page_.rowsPerStrip = 8;
    page_.components = 3;
    page_.ycc = true;
    strips_ = {Strip(8, "one"), Strip(8, "two"), Strip(4, "three")};
    tables_ = kStart + Quantisation(0, 7) + Quantisation(1, 9) + kEnd;
  }

  // The joined JPEG; empty where there is none.
  std::string Join() {
    page_.strips.clear();
    for (const std::string& strip : strips_) page_.strips.push_back(AsBytes(strip));
    page_.tables = AsBytes(tables_);
    const auto joined = pictures::JoinJpegStrips(page_);
    std::string text;
    if (joined) {
      for (const Bytes piece : joined->pieces) text.append(piece.begin(), piece.end());
    }
    return text;
  }

  static std::string Head(char transform, const std::string& restarts) {
    return kStart + Segment('\xEE', "Adobe\0\x64\0\0\0\0"s + transform) + Quantisation(0, 7) +
           Quantisation(1, 9) + Frame(20) + restarts + kScan;
  }

  JpegStrips page_;
  std::vector<std::string> strips_;
  std::string tables_;
};

TEST_F(JoinJpegStrips, PutsRestartMarkersBetweenThem) {
  EXPECT_EQ(Join(), Head('\1', Segment('\xDD', "\0\2"s)) + "one\xFF\xD0two\xFF\xD1three" + kEnd);
}

TEST_F(JoinJpegStrips, CountsRestartMarkersByEight) {
  page_.height = 80;
  strips_.assign(10, Strip(8, "x"));
  const std::string joined = Join();
  EXPECT_EQ(joined.substr(joined.rfind("x\xFF\xD7")), "x\xFF\xD7x\xFF\xD0x\xFF\xD9");
}

TEST_F(JoinJpegStrips, NeedsNoneForOneStrip) {
  page_.rowsPerStrip = 20;
  page_.ycc = false;
  strips_ = {Strip(20, "all")};
  EXPECT_EQ(Join(), Head('\0', "") + "all" + kEnd);
  strips_ = {kStart + Segment('\xDD', "\0\1"s) + Frame(20) + kScan + "all" + kEnd};
  EXPECT_EQ(Join(), Head('\0', Segment('\xDD', "\0\1"s)) + "all" + kEnd);
}

TEST_F(JoinJpegStrips, TakesTablesThatEveryStripRepeats) {
  const std::string tables = tables_.substr(2, tables_.size() - 4);
  for (std::string& strip : strips_) strip.insert(2, tables);
  const std::string joined = Join();
  tables_.clear();
  EXPECT_EQ(Join(), joined);
  strips_[1] = kStart + Quantisation(0, 8) + strips_[1].substr(2 + Quantisation(0, 7).size());
  EXPECT_EQ(Join(), "");
}

TEST_F(JoinJpegStrips, PassesOverWhatIsBehindAStripsEnd) {
  const std::string joined = Join();
  strips_[0] += "\0\0"s;
  EXPECT_EQ(Join(), joined);
  strips_[0].resize(strips_[0].size() - 4);
  EXPECT_EQ(Join(), "");  // it has no end
}

TEST_F(JoinJpegStrips, LeavesAloneWhatIsNoPartOfOneScan) {
  const std::vector<std::string> good = strips_;
  const std::string odd[] = {
      kStart + Frame(8, 24) + kScan + "x" + kEnd,                           // wider
      kStart + Frame(16) + kScan + "x" + kEnd,                              // higher
      kStart + Frame(8, 16, '\x21') + kScan + "x" + kEnd,                   // other sampling
      kStart + Frame(8, 16, '\x11', '\xC1') + kScan + "x" + kEnd,           // another process
      kStart + Frame(8) + Segment('\xDA', "\1\1\0\0\x3F\0"s) + "x" + kEnd,  // one component
      kStart + Segment('\xDD', "\0\1"s) + Frame(8) + kScan + "x" + kEnd,    // restarts
      kStart + Frame(8) + Frame(8) + kScan + "x" + kEnd,
      kStart + "stray" + Frame(8) + kScan + "x" + kEnd,
      kStart + kScan + "x" + kEnd,
      kStart + Frame(8) + kEnd,
      "",
      Strip(8, "two").substr(0, 9)};
  for (const std::string& strip : odd) {
    for (size_t place = 0; place < 2; ++place) {
      strips_ = good;
      strips_[place] = strip;
      EXPECT_EQ(Join(), "") << strip;
    }
  }
  strips_ = good;
  EXPECT_NE(Join(), "");
}

TEST_F(JoinJpegStrips, LeavesAlonePagesOfOtherSizes) {
  page_.rowsPerStrip = 12;
  EXPECT_EQ(Join(), "");
  page_.rowsPerStrip = 0;
  EXPECT_EQ(Join(), "");
  page_.rowsPerStrip = 8;
  page_.height = 30;  // the last strip is too short
  EXPECT_EQ(Join(), "");
  page_.height = 70'000;
  EXPECT_EQ(Join(), "");
}

TEST_F(JoinJpegStrips, LeavesDamagedTablesAlone) {
  const std::string good = tables_;
  for (const std::string& tables :
       {good.substr(0, 30), "xx"s + good, kStart + Segment('\xDB', "\0short"s) + kEnd,
        kStart + Segment('\xC4', std::string(17, '\xFF')) + kEnd,
        kStart + Segment('\xC4', "\0"s) + kEnd, Strip(8, "a picture")}) {
    tables_ = tables;
    EXPECT_EQ(Join(), "");
  }
}

}  // namespace
}  // namespace pictures
