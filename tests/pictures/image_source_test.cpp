#include "image_source.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace pictures {
namespace {

class ImageSourceTest : public testing::Test {
 protected:
  ~ImageSourceTest() override { std::remove(path_.c_str()); }

  void Write(size_t size) {
    std::ofstream(path_, std::ios::binary | std::ios::trunc) << std::string(size, 'x');
  }

  const std::string path_ =
      testing::TempDir() + "jtpdf-source-" + std::to_string(getpid()) + ".bin";
  static constexpr size_t kLarge = 1'000'000;  // mapped
};

size_t Count(Bytes bytes, uint8_t byte) {
  return static_cast<size_t>(std::count(bytes.begin(), bytes.end(), byte));
}

TEST_F(ImageSourceTest, OfAnUnchangedFileIsUnchanged) {
  for (const size_t size : {size_t{10}, kLarge}) {
    Write(size);
    const ImageSource source = ImageSource::Open(path_, false);
    EXPECT_EQ(source.IsMapped(), size == kLarge);
    EXPECT_EQ(Count(source.View(), 'x'), size);
    EXPECT_NO_THROW(source.CheckUnchanged());
  }
}

TEST_F(ImageSourceTest, ReadsZerosWhereTheFileWasCutShortAndSaysSo) {
  for (const bool touch : {false, true}) {
    Write(kLarge);
    const ImageSource source = ImageSource::Open(path_, touch);
    ASSERT_EQ(truncate(path_.c_str(), 5000), 0);
    EXPECT_EQ(source.View()[4999], 'x');
    EXPECT_EQ(Count(source.View(), 'x'), 5000u);
    EXPECT_EQ(Count(source.View(), 0), kLarge - 5000);
    EXPECT_THROW(source.CheckUnchanged(), InputChanged);
  }
}

TEST_F(ImageSourceTest, SaysThatItWasCutShortWithoutItsName) {
  Write(kLarge);
  const ImageSource source = ImageSource::Open(path_, false);
  ASSERT_EQ(truncate(path_.c_str(), 5000), 0);
  std::remove(path_.c_str());
  EXPECT_NO_THROW(source.CheckUnchanged());  // nothing of what is gone was asked for
  EXPECT_EQ(source.View()[kLarge - 1], 0);
  EXPECT_THROW(source.CheckUnchanged(), InputChanged);
}

TEST_F(ImageSourceTest, NoticesBytesThatChangedInPlace) {
  Write(kLarge);
  struct stat before;
  ASSERT_EQ(stat(path_.c_str(), &before), 0);
  const ImageSource source = ImageSource::Open(path_, false);
  timespec times[2] = {before.st_atim, before.st_mtim};
  times[1].tv_sec += 1;
  ASSERT_EQ(utimensat(AT_FDCWD, path_.c_str(), times, 0), 0);
  EXPECT_THROW(source.CheckUnchanged(), InputChanged);
}

TEST_F(ImageSourceTest, TellsEachMapsFailureApart) {
  Write(kLarge);
  const ImageSource cut = ImageSource::Open(path_, false);
  std::remove(path_.c_str());
  const std::vector<ImageSource> others = [&] {
    Write(kLarge);
    std::vector<ImageSource> sources;
    for (int i = 0; i < 20; ++i) sources.push_back(ImageSource::Open(path_, false));
    return sources;
  }();
  for (const ImageSource& other : others) {
    EXPECT_EQ(Count(other.View(), 'x'), kLarge);
    EXPECT_NO_THROW(other.CheckUnchanged());
  }
  EXPECT_NO_THROW(cut.CheckUnchanged());
}

TEST_F(ImageSourceTest, PutsZerosInNoOtherMap) {
  const std::string whole = path_ + ".whole";
  std::ofstream(whole, std::ios::binary) << std::string(kLarge, 'y');
  Write(kLarge);
  const ImageSource before = ImageSource::Open(whole, false);
  const ImageSource cut = ImageSource::Open(path_, false);
  const ImageSource after = ImageSource::Open(whole, false);
  ASSERT_EQ(truncate(path_.c_str(), 5000), 0);
  EXPECT_EQ(Count(cut.View(), 0), kLarge - 5000);
  for (const ImageSource* other : {&before, &after}) {
    EXPECT_EQ(Count(other->View(), 'y'), kLarge);
    EXPECT_NO_THROW(other->CheckUnchanged());
  }
  std::remove(whole.c_str());
}

TEST_F(ImageSourceTest, GivesTheMemoryOfItsMapBack) {
  Write(kLarge);
  const auto maps = [&] {
    std::ifstream file("/proc/self/maps");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    return text.find(path_) != std::string::npos;
  };
  {
    const ImageSource source = ImageSource::Open(path_, true);
    EXPECT_TRUE(maps());
  }
  EXPECT_FALSE(maps());
}

TEST_F(ImageSourceTest, ReadsWhatIsTooMuchToMap) {
  Write(70'000);
  std::vector<ImageSource> sources;
  for (int i = 0; i < 1100; ++i) sources.push_back(ImageSource::Open(path_, false));
  EXPECT_FALSE(sources.back().IsMapped());
  EXPECT_EQ(Count(sources.back().View(), 'x'), 70'000u);
  EXPECT_EQ(sources.back().Identity(), sources.front().Identity());
}

}  // namespace
}  // namespace pictures
