#include "formats/film.h"

#include <utility>

namespace pictures {

DecodedImage Film::Frame(uint64_t number) {
  for (; drawn_ <= number; ++drawn_) DrawNext();
  return Seen();
}

DecodedImage FilmShelf::Frame(uint64_t number, const std::function<std::unique_ptr<Film>()>& make) {
  const std::lock_guard lock(mutex_);
  std::unique_ptr<Film> film = TakeNearest(number);
  if (!film) film = make();
  DecodedImage image = film->Frame(number);
  if (number == 0) over_ = false;
  if (number + 1 == frames_) over_ = true;
  if (over_) {
    films_.clear();
  } else {
    films_.push_back(std::move(film));
  }
  return image;
}

std::unique_ptr<Film> FilmShelf::TakeNearest(uint64_t number) {
  std::unique_ptr<Film>* nearest = nullptr;
  for (std::unique_ptr<Film>& film : films_) {
    const bool isPast = film->Drawn() > number + 1;
    if (!isPast && (nearest == nullptr || film->Drawn() > (*nearest)->Drawn())) nearest = &film;
  }
  if (nearest == nullptr) return nullptr;
  std::swap(*nearest, films_.back());
  std::unique_ptr<Film> film = std::move(films_.back());
  films_.pop_back();
  return film;
}

void ShareFilms(std::vector<ImagePlan>* plans) {
  if (plans->size() == 1) return;
  const auto films = std::make_shared<FilmShelf>(plans->size());
  for (ImagePlan& plan : *plans) plan.films = films;
}

}  // namespace pictures
