#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "as_bytes.h"
#include "flate.h"
#include "formats/decoder.h"
#include "formats/icc.h"
#include "formats/samples.h"

namespace pictures {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

// Its name; of a decoder that is not in this build, too, which then must not be found.
std::string_view Recognised(std::string_view head, std::string_view wanted) {
  const std::span<const Decoder* const> all = Decoders();
  const bool built = std::ranges::any_of(all, [&](const Decoder* d) { return d->name == wanted; });
  const Decoder* found = Recognise(AsBytes(head));
  if (found == nullptr) return built ? "none" : wanted;
  return found->name;
}

TEST(Recognise, GoesByTheFirstBytes) {
  constexpr std::pair<std::string_view, std::string_view> kHeads[] = {
      {"\xFF\xD8\xFF\xE0"sv, "JPEG"},
      {"\x89PNG\r\n\x1A\n...."sv, "PNG"},
      {"\0\0\0\x0CjP  \r\n\x87\n"sv, "JPEG 2000"},
      {"\xFF\x4F\xFF\x51"sv, "JPEG 2000"},
      {"II*\0"sv, "TIFF"},
      {"MM\0+"sv, "TIFF"},
      {"RIFF....WEBP"sv, "WebP"},
      {"\0\0\0\x18\x66typheic\0\0\0\0"sv, "HEIF"},
      {"\0\0\0\x1C\x66typavif\0\0\0\0"sv, "HEIF"},
      {"\xFF\x0A"sv, "JPEG XL"},
      {"\0\0\0\x0CJXL \r\n\x87\n"sv, "JPEG XL"},
      {"BM34567890\0\0\0\0\x0C\0\0\0"sv, "BMP"},
      {"P5 1"sv, "PNM"},
      {"P7\nWIDTH"sv, "PNM"},
      {"GIF87a"sv, "GIF"}};
  for (const auto& [head, name] : kHeads) EXPECT_EQ(Recognised(head, name), name);
  for (const std::string_view other :
       {""sv, "\xFF\xD8"sv, "RIFF....WAVE"sv, "GIF90a"sv, "II"sv, "P8 1"sv, "P5x"sv, "BM"sv,
        "BM34567890\0\0\0\0\x0B\0\0\0"sv}) {
    EXPECT_EQ(Recognise(AsBytes(other)), nullptr);
  }
}

TEST(CheckSize, RefusesNothingAndTooMuch) {
  const ReadLimits limits{100, false};
  EXPECT_NO_THROW(CheckSize(10, 10, limits));
  EXPECT_THROW(CheckSize(10, 11, limits), ImageError);
  EXPECT_THROW(CheckSize(0, 10, limits), ImageError);
  EXPECT_THROW(CheckSize(uint64_t{1} << 32, 1, {~uint64_t{0}, false}), ImageError);
  EXPECT_THROW(CheckSize(UINT64_MAX, UINT64_MAX, {~uint64_t{0}, false}), ImageError);
}

TEST(SetMemory, RefusesMoreThanFourBytesForEachPixelThatIsAllowed) {
  const ReadLimits limits{100'000'000, false};
  ImagePlan plan;
  SetMemory(400e6, limits, &plan);
  EXPECT_EQ(plan.memory, 400'000'000u);
  EXPECT_THROW(SetMemory(400e6 + 1, limits, &plan), ImageError);
  EXPECT_THROW(SetMemory(1e300, {~uint64_t{0}, false}, &plan), ImageError);
  EXPECT_NO_THROW(SetMemory(64 << 20, {1, false}, &plan));  // the least that every picture may take
  EXPECT_THROW(SetMemory((64 << 20) + 1, {1, false}, &plan), ImageError);
}

TEST(CheckStored, RefusesMoreThanAPdfImageHolds) {
  ImagePlan plan;
  plan.size = 0xFFFF'FFFF;
  EXPECT_NO_THROW(CheckStored(plan));
  plan.size = size_t{1} << 32;
  EXPECT_THROW(CheckStored(plan), ImageError);
  plan.decodeReason = "decoded";
  EXPECT_NO_THROW(CheckStored(plan));
}

TEST(JudgeProfile, LeavesOutWhatIsTooLargeAndSaysSo) {
  std::string profile(kMostProfile, '\0');
  profile.replace(12, 8, "mntrRGB ").replace(36, 4, "acsp");
  ImagePlan plan;
  JudgeProfile(&plan, AsBytes(profile));
  EXPECT_EQ(plan.profile, ProfileUse::kUsed);
  EXPECT_EQ(plan.profileSize, kMostProfile);
  JudgeProfile(&plan, AsBytes(profile + "x"));
  EXPECT_EQ(plan.profile, ProfileUse::kLeftOut);
  ASSERT_EQ(plan.notes.size(), 1u);
  EXPECT_TRUE(plan.notes[0].always);
}

TEST(Samples, ReadBackAsTheyWereWrittenAtEveryDepth) {
  for (const int bits : {1, 2, 4, 8, 16}) {
    std::vector<uint8_t> row(64, 0xAA);
    std::vector<unsigned> samples;
    SampleWriter writer(row.data(), bits);
    for (unsigned i = 0; i < 21; ++i) {
      samples.push_back(i * 2654435761u >> 7 & MaxSample(bits));
      writer.Put(samples.back());
    }
    writer.Finish();
    for (size_t i = 0; i < samples.size(); ++i) {
      EXPECT_EQ(SampleAt(row.data(), i, bits), samples[i]) << bits << " bits, " << i;
    }
  }
}

TEST(Samples, OfOddDepthsCrossBytes) {
  const uint8_t row[] = {0xAB, 0xCD, 0xEF};
  EXPECT_EQ(SampleAt(row, 0, 12), 0xABCu);
  EXPECT_EQ(SampleAt(row, 1, 12), 0xDEFu);
  EXPECT_EQ(SampleAt(row, 1, 3), 2u);  // 101 010 11|1 100...
  EXPECT_EQ(SampleAt(row, 2, 3), 7u);
  EXPECT_EQ(SampleAt(row, 2, 7), 0x3Du);
}

TEST(SampleWriter, FillsTheLastByteWithOnes) {
  uint8_t byte = 0;
  SampleWriter writer(&byte, 1);
  writer.Put(0);
  writer.Put(1);
  writer.Finish();
  EXPECT_EQ(byte, 0x7F);
}

TEST(Rescale, KeepsBlackAndWhite) {
  for (int from = 1; from <= 16; ++from) {
    const int to = PdfBits(from);
    EXPECT_EQ(Rescale(0, from, to), 0u);
    EXPECT_EQ(Rescale(MaxSample(from), from, to), MaxSample(to));
  }
  EXPECT_EQ(Rescale(0x800, 12, 16), 0x8008u);
}

TEST(Inflate, StopsAtTheMostItMay) {
  const Buffer packed = Deflate(Buffer::CopyOf(AsBytes(std::string(100'000, 'x'))).View(), 6);
  EXPECT_EQ(Inflate(packed.View(), 100'000).bytes.Size(), 100'000u);
  EXPECT_TRUE(Inflate(packed.View(), 99'999).bytes.Empty());
  EXPECT_TRUE(Inflate(packed.View(), 99'999).tooLarge);
  EXPECT_TRUE(Inflate(AsBytes("no zlib stream"), 1000).bytes.Empty());
  EXPECT_FALSE(Inflate(AsBytes("no zlib stream"), 1000).tooLarge);
}

TEST(Deflate, KnowsEveryLevel) {
  const std::string text(5000, 'a');
  for (int level = 0; level <= 12; ++level) {
    const Buffer packed = Deflate(AsBytes(text), level);
    const Buffer back = Inflate(packed.View(), text.size()).bytes;
    ASSERT_EQ(back.Size(), text.size()) << level;
    EXPECT_EQ(std::memcmp(back.Data(), text.data(), text.size()), 0);
    EXPECT_EQ(packed.Size() > text.size(), level == 0);
  }
}

TEST(ReadProfile, TellsTheSpaceOfWholeProfilesOnly) {
  std::string profile(132, '\0');
  profile.replace(0, 4, "\0\0\0\x84"s).replace(12, 8, "mntrRGB ").replace(36, 4, "acsp");
  EXPECT_TRUE(ReadProfile(AsBytes(profile)).valid);
  EXPECT_EQ(ReadProfile(AsBytes(profile)).space, "RGB ");
  EXPECT_FALSE(ReadProfile(AsBytes(profile.substr(0, 131))).valid);
  EXPECT_FALSE(ReadProfile(AsBytes(std::string(profile).replace(36, 4, "nope"))).valid);
  EXPECT_FALSE(ReadProfile(AsBytes(std::string(profile).replace(12, 4, "link"))).valid);
  EXPECT_FALSE(ReadProfile(AsBytes(std::string(profile).replace(3, 1, "\x85"))).valid);
}

}  // namespace
}  // namespace pictures
