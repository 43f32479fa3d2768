// ordered_work.h - work done in parallel and used in order, with a bound on what waits in between.
#ifndef JTPDF_TOOL_ORDERED_WORK_H
#define JTPDF_TOOL_ORDERED_WORK_H

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace tool {

// Calls body(i) for every i below `count`, from `jobs` threads. The body must not throw.
template <class Body>
void ForEachInParallel(size_t count, unsigned jobs, const Body& body) {
  std::atomic<size_t> next = 0;
  const auto work = [&] {
    for (size_t i = next++; i < count; i = next++) body(i);
  };
  std::vector<std::jthread> helpers;
  for (size_t i = 1; i < std::min<size_t>(jobs, count); ++i) helpers.emplace_back(work);
  work();
}

// What may be produced ahead of its use: a few items whatever they weigh, so that every job has
// something to do, and more of them as long as together they are light.
struct WorkBounds {
  uint64_t weight = 0;
  size_t items = 0;
};

// Calls produce(i) for every i below `count` from `jobs` threads, and consume(i, product) in order
// from the calling one. weigh(i) estimates the memory a product holds until it is consumed.
// An exception from consume ends the work and is passed on; produce must not throw.
template <class Product, class Weigh, class Produce, class Consume>
void RunInOrder(size_t count, unsigned jobs, WorkBounds bounds, const Weigh& weigh,
                const Produce& produce, const Consume& consume) {
  if (jobs <= 1 || count <= 1) {
    for (size_t i = 0; i < count; ++i) consume(i, produce(i));
    return;
  }
  std::mutex mutex;
  std::condition_variable roomMade, productMade;
  std::deque<std::optional<Product>> window;  // of the items `used` to `begun`
  size_t used = 0, begun = 0;
  uint64_t weight = 0;
  bool stop = false;

  const auto mayBegin = [&] {
    if (stop || begun == count) return true;  // to notice that there is nothing more to do
    const size_t ahead = begun - used;
    return ahead <= jobs || (ahead < bounds.items && weight + weigh(begun) <= bounds.weight);
  };
  const auto work = [&] {
    std::unique_lock lock(mutex);
    for (;;) {
      roomMade.wait(lock, mayBegin);
      if (stop || begun == count) return;
      const size_t i = begun++;
      weight += weigh(i);
      window.emplace_back();
      lock.unlock();
      Product product = produce(i);
      lock.lock();
      window[i - used] = std::move(product);
      if (i == used) productMade.notify_one();
    }
  };

  std::vector<std::jthread> helpers;
  // Whatever ends this function, the helpers must be told before they are waited for.
  struct Stopper {
    std::mutex& mutex;
    std::condition_variable& roomMade;
    bool& stop;
    ~Stopper() {
      {
        const std::lock_guard lock(mutex);
        stop = true;
      }
      roomMade.notify_all();
    }
  } stopper{mutex, roomMade, stop};
  for (size_t i = 0; i < std::min<size_t>(jobs, count); ++i) helpers.emplace_back(work);

  std::unique_lock lock(mutex);
  struct Unlock {  // before the stopper locks
    std::unique_lock<std::mutex>& lock;
    ~Unlock() {
      if (lock.owns_lock()) lock.unlock();
    }
  } unlock{lock};
  while (used < count) {
    productMade.wait(lock, [&] { return !window.empty() && window.front().has_value(); });
    Product product = std::move(*window.front());
    lock.unlock();
    consume(used, std::move(product));
    lock.lock();
    window.pop_front();
    weight -= weigh(used);
    ++used;
    roomMade.notify_all();
  }
}

}  // namespace tool

#endif  // JTPDF_TOOL_ORDERED_WORK_H
