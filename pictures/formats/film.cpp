#include "formats/film.h"

#include <utility>

namespace pictures {

DecodedImage Film::Frame(uint64_t number) {
  for (; drawn_ <= number; ++drawn_) DrawNext();
  return Seen();
}

std::unique_ptr<Film> FilmShelf::Take(uint64_t number) {
  const std::lock_guard lock(mutex_);
  std::unique_ptr<Film>* best = nullptr;
  for (std::unique_ptr<Film>& film : films_) {
    const bool isPast = film->Drawn() > number + 1;
    if (!isPast && (best == nullptr || film->Drawn() > (*best)->Drawn())) best = &film;
  }
  std::unique_ptr<Film> taken;
  if (best != nullptr) {
    taken = std::move(*best);
    std::swap(*best, films_.back());
    films_.pop_back();
  }
  over_ = number + 1 == frames_;
  if (over_) films_.clear();
  return taken;
}

void FilmShelf::PutBack(std::unique_ptr<Film> film) {
  const std::lock_guard lock(mutex_);
  if (!over_) films_.push_back(std::move(film));
}

void ShareFilms(std::vector<ImagePlan>* plans) {
  const auto films = std::make_shared<FilmShelf>(plans->size());
  for (ImagePlan& plan : *plans) plan.films = films;
}

}  // namespace pictures
