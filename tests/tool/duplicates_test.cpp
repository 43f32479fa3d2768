#include "duplicates.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace pictures::tool {
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

// One lane of the hash, which takes each fourth word of eight bytes.
uint64_t Mix(uint64_t lane, uint64_t word) {
  lane = (lane ^ word) * 0x9E3779B97F4A7C15;
  return lane ^ lane >> 29;
}

uint64_t WordAt(const std::string& bytes, size_t at) {
  uint64_t word;
  std::memcpy(&word, &bytes[at], 8);
  return word;
}

// Other bytes with the same hash: the word that follows in the lane makes good for one that
// differs.
std::string WithTheSameHash(std::string bytes, size_t at, uint64_t seed) {
  uint64_t lane = seed;
  for (size_t i = 0; i < at; i += 32) lane = Mix(lane, WordAt(bytes, i));
  const uint64_t word = WordAt(bytes, at), other = word ^ 1;
  const uint64_t next = WordAt(bytes, at + 32) ^ Mix(lane, word) ^ Mix(lane, other);
  std::memcpy(&bytes[at], &other, 8);
  std::memcpy(&bytes[at + 32], &next, 8);
  return bytes;
}

uint64_t SampleHashOf(const std::string& bytes) {
  return SampleHash({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
}

TEST_F(DuplicateFinderTest, TellsFilesApartWhoseHashesAgree) {
  // Of a small file the sample is the whole: this is how its hash is made.
  const std::string small(4096, 'x');
  const std::string other = WithTheSameHash(small, 1024, small.size());
  ASSERT_NE(small, other);
  ASSERT_EQ(SampleHashOf(small), SampleHashOf(other));
  // And so are those of a large one, where the samples do not look.
  const std::string large(100'000, 'x');
  const std::string alike = WithTheSameHash(large, 20'000, 0);
  ASSERT_EQ(SampleHashOf(large), SampleHashOf(alike));
  EXPECT_EQ(Add(large), 0u);
  EXPECT_EQ(Add(alike), 1u);
  EXPECT_EQ(Add(large), 0u);
  EXPECT_EQ(Add(alike), 1u);
}

}  // namespace
}  // namespace pictures::tool
