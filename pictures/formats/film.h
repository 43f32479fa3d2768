// film.h - the frames of an animation, each drawn over those before it: whoever wants the next one
// goes on where the last one was left.
#ifndef JTPDF_PICTURES_FILM_H
#define JTPDF_PICTURES_FILM_H

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "bytes.h"
#include "image.h"

namespace pictures {

class Film {
 public:
  // With a copy of the file's bytes, which are unmapped between one frame and the next.
  explicit Film(Bytes file) : file_(Buffer::CopyOf(file)) {}
  virtual ~Film() = default;
  Film(const Film&) = delete;
  Film& operator=(const Film&) = delete;

  // What is seen with frame `number`, from 0 on, which must not lie behind it.
  DecodedImage Frame(uint64_t number);
  // How many frames have been drawn.
  uint64_t Drawn() const { return drawn_; }

 protected:
  Bytes File() const { return file_.View(); }

 private:
  virtual void DrawNext() = 0;
  virtual DecodedImage Seen() const = 0;

  Buffer file_;
  uint64_t drawn_ = 0;
};

// The film of a file between its frames, and further ones where threads ask for them in another
// order than theirs. One thread at a time draws: what comes behind that, packing, takes longer.
class FilmShelf {
 public:
  explicit FilmShelf(uint64_t frames) : frames_(frames) {}

  // Frame `number`, from the film that is nearest to it and not past it, or a new one. Nothing is
  // kept behind the last frame, until the first is wanted again.
  DecodedImage Frame(uint64_t number, const std::function<std::unique_ptr<Film>()>& make);

 private:
  std::unique_ptr<Film> TakeNearest(uint64_t number);

  const uint64_t frames_;
  std::mutex mutex_;
  std::vector<std::unique_ptr<Film>> films_;
  bool over_ = false;
};

// Gives the plans of an animation's frames a shelf; one that stands alone needs none.
void ShareFilms(std::vector<ImagePlan>* plans);

// Decodes frame `number` by a film of that kind, which is made from a plan and a file.
template <typename FilmOfFormat>
DecodedImage DecodeFrame(const ImagePlan& plan, Bytes file, uint64_t number) {
  if (!plan.films) return FilmOfFormat(plan, file).Frame(number);
  return plan.films->Frame(number, [&] { return std::make_unique<FilmOfFormat>(plan, file); });
}

}  // namespace pictures

#endif  // JTPDF_PICTURES_FILM_H
