#include "duplicates.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace tool {
namespace {

class DuplicateFinderTest : public testing::Test {
 protected:
  ~DuplicateFinderTest() override {
    for (const std::string& path : paths_) std::remove(path.c_str());
  }

  size_t Add(const std::string& bytes) {
    const size_t number = paths_.size();
    paths_.push_back(testing::TempDir() + "jtpdf-duplicate-" + std::to_string(getpid()) + "-" +
                     std::to_string(number));
    std::ofstream(paths_.back(), std::ios::binary) << bytes;
    const ImageSource source = ImageSource::Open(paths_.back(), false);
    return finder_.FirstLike(number, SampleHash(source.View()), source.Identity());
  }
  size_t AddAgain(size_t other) {
    paths_.push_back(paths_[other]);
    const ImageSource source = ImageSource::Open(paths_.back(), false);
    opened_ = 0;
    return finder_.FirstLike(paths_.size() - 1, SampleHash(source.View()), source.Identity());
  }

  int opened_ = 0;
  std::vector<std::string> paths_;
  DuplicateFinder finder_{[this](size_t i) {
    ++opened_;
    return ImageSource::Open(paths_[i], false);
  }};
};

TEST_F(DuplicateFinderTest, FindsEqualBytesInOtherFiles) {
  EXPECT_EQ(Add("first"), 0u);
  EXPECT_EQ(Add("other"), 1u);
  EXPECT_EQ(Add("first"), 0u);
  EXPECT_EQ(Add("other"), 1u);
}

TEST_F(DuplicateFinderTest, ReadsNothingWhereNoHashAgrees) {
  for (int i = 0; i < 50; ++i) Add(std::to_string(i));
  EXPECT_EQ(opened_, 0);
}

TEST_F(DuplicateFinderTest, ReadsNothingForTheSameFile) {
  Add("first");
  EXPECT_EQ(AddAgain(0), 0u);
  EXPECT_EQ(opened_, 0);
}

TEST_F(DuplicateFinderTest, TellsFilesApartThatDifferBetweenTheSamples) {
  std::string bytes(100'000, 'x');
  EXPECT_EQ(Add(bytes), 0u);
  bytes[20'000] = 'y';
  ASSERT_EQ(SampleHash({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()}),
            SampleHash(ImageSource::Open(paths_[0], false).View()));
  EXPECT_EQ(Add(bytes), 1u);
  EXPECT_EQ(Add(bytes), 1u);
}

}  // namespace
}  // namespace tool
