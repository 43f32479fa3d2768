#include "zlib_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "flate.h"

namespace pictures {
namespace {

constexpr uint64_t kMuch = uint64_t{1} << 40;

std::vector<uint8_t> Scattered(size_t count) {
  std::vector<uint8_t> bytes(count);
  for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(i * i >> 5);
  return bytes;
}

std::optional<uint64_t> SizeOf(Bytes stream, uint64_t most = kMuch) {
  return InflatedSize(std::array{stream}, most);
}

TEST(InflatedSize, CountsWhatAStreamHolds) {
  for (const size_t count : {0, 1, 32767, 32768, 32769, 65536, 300'000}) {
    EXPECT_EQ(SizeOf(Deflate(Scattered(count), 6).View()), count);
    EXPECT_EQ(SizeOf(Deflate(std::vector<uint8_t>(count), 6).View()), count);
  }
}

TEST(InflatedSize, TakesAStreamInAnyPieces) {
  const Buffer stream = Deflate(Scattered(5000), 6);
  for (const size_t step : {1, 2, 7, 4096}) {
    std::vector<Bytes> pieces{Bytes()};
    for (size_t at = 0; at < stream.Size(); at += step) {
      pieces.push_back(stream.View().subspan(at, std::min(step, stream.Size() - at)));
      pieces.push_back({});
    }
    EXPECT_EQ(InflatedSize(pieces, kMuch), 5000u);
    pieces.push_back(stream.View());  // behind its end
    EXPECT_EQ(InflatedSize(pieces, kMuch), 5000u);
  }
}

TEST(InflatedSize, IsNothingOfOneThatIsCutOff) {
  const Buffer stream = Deflate(Scattered(5000), 6);
  for (size_t size = 0; size < stream.Size(); ++size) {
    EXPECT_EQ(SizeOf(stream.View().first(size)), std::nullopt) << size;
  }
  EXPECT_EQ(InflatedSize({}, kMuch), std::nullopt);
}

TEST(InflatedSize, IsNothingOfOneThatIsDamaged) {
  Buffer stream = Deflate(Scattered(5000), 0);  // stored: its checksum alone can tell
  stream.Data()[stream.Size() / 2] ^= 1;
  EXPECT_EQ(SizeOf(stream.View()), std::nullopt);
  const std::vector<uint8_t> nonsense(100, 0xEE);
  EXPECT_EQ(SizeOf(nonsense), std::nullopt);
}

TEST(InflatedSize, StopsAtTheMostItMayHold) {
  const Buffer stream = Deflate(std::vector<uint8_t>(1'000'000), 6);
  EXPECT_EQ(SizeOf(stream.View(), 1'000'000), 1'000'000u);
  EXPECT_EQ(SizeOf(stream.View(), 999'999), std::nullopt);
}

}  // namespace
}  // namespace pictures
