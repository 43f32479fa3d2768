#include "formats/film.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace pictures {
namespace {

// Its pictures are as wide as frames have been drawn.
class CountedFilm : public Film {
 public:
  CountedFilm(const ImagePlan&, Bytes file) : Film(file) {
    ++made;
    ++living;
  }
  ~CountedFilm() override { --living; }

  static inline int made = 0;
  static inline int drawn = 0;
  static inline int living = 0;

 private:
  void DrawNext() override {
    if (File().size() == Drawn()) throw Damaged("a frame is missing");
    ++drawn;
  }
  DecodedImage Seen() const override {
    DecodedImage image;
    image.pixels = Raster(static_cast<uint32_t>(Drawn()), 1, 8, 1);
    return image;
  }
};

class FilmTest : public testing::Test {
 protected:
  FilmTest() : file_(10, 0), plans_(10) {
    CountedFilm::made = CountedFilm::drawn = 0;
    ShareFilms(&plans_);
  }
  uint32_t Width(size_t number) {
    // At another place each time, as a file is that is mapped anew.
    const std::vector<uint8_t> file = file_;
    return DecodeFrame<CountedFilm>(plans_[number], Bytes(file), number).pixels.width;
  }

  std::vector<uint8_t> file_;
  std::vector<ImagePlan> plans_;
};

TEST_F(FilmTest, EachFrameIsDrawnOnce) {
  for (size_t i = 0; i < 10; ++i) EXPECT_EQ(Width(i), i + 1);
  EXPECT_EQ(CountedFilm::made, 1);
  EXPECT_EQ(CountedFilm::drawn, 10);
}

TEST_F(FilmTest, TheSameFrameAgainIsNotDrawnAgain) {
  EXPECT_EQ(Width(3), 4u);
  EXPECT_EQ(Width(3), 4u);
  EXPECT_EQ(CountedFilm::drawn, 4);
}

TEST_F(FilmTest, AnEarlierFrameBeginsAnew) {
  EXPECT_EQ(Width(3), 4u);
  EXPECT_EQ(Width(2), 3u);
  EXPECT_EQ(CountedFilm::made, 2);
  // Of two films the nearer one goes on.
  EXPECT_EQ(Width(4), 5u);
  EXPECT_EQ(CountedFilm::drawn, 4 + 3 + 1);
}

TEST_F(FilmTest, NothingIsKeptBehindTheLastFrame) {
  EXPECT_EQ(Width(8), 9u);
  EXPECT_EQ(Width(2), 3u);
  EXPECT_EQ(CountedFilm::living, 2);
  EXPECT_EQ(Width(9), 10u);
  EXPECT_EQ(CountedFilm::drawn, 9 + 3 + 1);
  EXPECT_EQ(CountedFilm::living, 0);
  EXPECT_EQ(Width(8), 9u);  // of a thread that was later
  EXPECT_EQ(CountedFilm::living, 0);
  EXPECT_EQ(Width(0), 1u);
  EXPECT_EQ(CountedFilm::living, 1);
}

TEST_F(FilmTest, ADamagedFrameTakesItsFilmAlong) {
  file_.resize(5);
  EXPECT_EQ(Width(4), 5u);
  EXPECT_THROW(Width(5), Damaged);
  EXPECT_EQ(CountedFilm::living, 0);
}

TEST_F(FilmTest, ThreadsGetTheirFrames) {
  std::vector<std::thread> threads;
  for (size_t first = 0; first < 3; ++first) {
    threads.emplace_back([this, first] {
      for (size_t i = first; i < 10; i += 3) EXPECT_EQ(Width(i), i + 1);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(Film, StandsAloneWithoutAShelf) {
  CountedFilm::made = 0;
  const uint8_t one[] = {1};
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(DecodeFrame<CountedFilm>(ImagePlan(), Bytes(one), 0).pixels.width, 1u);
  }
  EXPECT_EQ(CountedFilm::made, 2);
}

}  // namespace
}  // namespace pictures
