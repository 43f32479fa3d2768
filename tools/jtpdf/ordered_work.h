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
#include <new>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace pictures::tool {

// The first exception of several threads, kept for the one that waits for them. Keeping it takes no
// memory, which may be what has run out.
class FirstFailure {
 public:
  // Called in a catch block.
  void Keep() {
    const std::lock_guard lock(mutex_);
    if (!failure_) failure_ = std::current_exception();
  }
  void Rethrow() const {
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  std::mutex mutex_;
  std::exception_ptr failure_;
};

// Threads that are waited for when this ends; by std::jthread, where every standard library had it.
class Threads {
 public:
  Threads() = default;
  Threads(const Threads&) = delete;
  Threads& operator=(const Threads&) = delete;
  ~Threads() { Join(); }

  // Starts up to `count` of them. Where there is no room for more, fewer do the work; those that
  // run are not given up, since they may wait for the caller.
  template <class Work>
  void Start(size_t count, const Work& work) {
    threads_.reserve(count);
    try {
      while (threads_.size() < count) threads_.emplace_back(work);
    } catch (const std::system_error&) {
    } catch (const std::bad_alloc&) {
    }
  }
  bool Empty() const { return threads_.empty(); }
  void Join() {
    for (std::thread& thread : threads_) thread.join();
    threads_.clear();
  }

 private:
  std::vector<std::thread> threads_;
};

// Calls body(i) for every i below `count`, from `jobs` threads. The first exception of the body is
// passed on when all have ended.
template <class Body>
void ForEachInParallel(size_t count, unsigned jobs, const Body& body) {
  const size_t threads = std::max<size_t>(std::min<size_t>(jobs, count), 1);
  // By the handful, where there are many: the counter is what the threads share.
  const size_t handful = std::min<size_t>(16, count / (threads * 4) + 1);
  std::atomic<size_t> next = 0;
  FirstFailure failure;
  const auto visit = [&] {
    for (size_t i = next.fetch_add(handful); i < count; i = next.fetch_add(handful)) {
      for (size_t k = i; k < std::min(count, i + handful); ++k) body(k);
    }
  };
  const auto work = [&] {
    try {
      visit();
    } catch (...) {
      failure.Keep();
    }
  };
  Threads helpers;
  helpers.Start(threads - 1, work);
  work();
  helpers.Join();
  failure.Rethrow();
}

// What may be produced ahead of its use: a few items whatever they weigh, so that every job has
// something to do, and more of them as long as together they are light.
struct WorkBounds {
  uint64_t weight = 0;
  size_t items = 0;
};

// The items that have been begun and not yet used, shared by the workers and the user.
template <class Product, class Weigh>
class WorkWindow {
 public:
  WorkWindow(size_t count, unsigned jobs, WorkBounds bounds, const Weigh& weigh)
      : count_(count), jobs_(jobs), bounds_(bounds), weigh_(weigh) {}

  struct Batch {
    size_t first = 0;
    size_t size = 0;  // 0: there is nothing more to do
  };

  // Takes the next items to produce, waiting for room. Light ones come by the dozen: handing over
  // one small picture costs more than making it.
  Batch Take() {
    std::unique_lock lock(mutex_);
    roomMade_.wait(lock, [&] { return stop_ || begun_ == count_ || MayBegin(); });
    Batch batch{begun_, 0};
    if (stop_) return batch;
    uint64_t batchWeight = 0;
    while (begun_ < count_ && batch.size < kMostInBatch && MayBegin()) {
      const uint64_t next = weigh_(begun_);
      if (batch.size > 0 && batchWeight + next > bounds_.weight / kBatches) break;
      batchWeight += next;
      weight_ += next;
      ++begun_;
      ++batch.size;
    }
    window_.resize(begun_ - used_);
    return batch;
  }

  void Put(const Batch& batch, std::vector<Product> products) {
    const std::lock_guard lock(mutex_);
    for (size_t i = 0; i < batch.size; ++i) {
      window_[batch.first + i - used_] = std::move(products[i]);
    }
    if (batch.first == used_) productMade_.notify_one();
  }

  // Called in a worker's catch block: Get passes the exception on.
  void Fail() {
    const std::lock_guard lock(mutex_);
    if (!failure_) failure_ = std::current_exception();
    productMade_.notify_one();
  }

  // Waits for the next product, and gives it with all that are ready behind it.
  std::vector<Product> Get() {
    std::unique_lock lock(mutex_);
    const auto ready = [&] { return !window_.empty() && window_.front().has_value(); };
    productMade_.wait(lock, [&] { return failure_ || ready(); });
    if (failure_) std::rethrow_exception(failure_);
    std::vector<Product> products;
    for (size_t i = 0; i < window_.size() && window_[i].has_value(); ++i) {
      products.push_back(std::move(*window_[i]));
    }
    return products;
  }

  // Says that `count` products were used: only then their room is free.
  void Release(size_t count) {
    const std::lock_guard lock(mutex_);
    for (size_t i = 0; i < count; ++i) weight_ -= weigh_(used_ + i);
    window_.erase(window_.begin(), window_.begin() + static_cast<std::ptrdiff_t>(count));
    used_ += count;
    roomMade_.notify_all();
  }

  void Stop() {
    const std::lock_guard lock(mutex_);
    stop_ = true;
    roomMade_.notify_all();
  }

 private:
  static constexpr size_t kMostInBatch = 64;
  static constexpr uint64_t kBatches = 16;

  bool MayBegin() const {
    const size_t ahead = begun_ - used_;
    return ahead <= jobs_ || (ahead < bounds_.items && weight_ + weigh_(begun_) <= bounds_.weight);
  }

  const size_t count_;
  const unsigned jobs_;
  const WorkBounds bounds_;
  const Weigh& weigh_;
  std::mutex mutex_;
  std::condition_variable roomMade_, productMade_;
  std::deque<std::optional<Product>> window_;  // of the items used_ to begun_
  size_t used_ = 0, begun_ = 0;
  uint64_t weight_ = 0;
  bool stop_ = false;
  std::exception_ptr failure_;
};

// Calls produce(i) for every i below `count` from `jobs` threads, and consume(i, product) in order
// from the calling one. weigh(i) estimates the memory a product holds until it is consumed.
// An exception from either ends the work and is passed on.
template <class Product, class Weigh, class Produce, class Consume>
void RunInOrder(size_t count, unsigned jobs, WorkBounds bounds, const Weigh& weigh,
                const Produce& produce, const Consume& consume) {
  const auto workAlone = [&] {
    for (size_t i = 0; i < count; ++i) consume(i, produce(i));
  };
  if (jobs <= 1 || count <= 1) return workAlone();
  WorkWindow<Product, Weigh> window(count, jobs, bounds, weigh);
  Threads helpers;
  // Whatever ends this function, the helpers are told before they are waited for.
  struct Stopper {
    WorkWindow<Product, Weigh>& window;
    ~Stopper() { window.Stop(); }
  } stopper{window};
  helpers.Start(std::min<size_t>(jobs, count), [&] {
    try {
      for (auto batch = window.Take(); batch.size > 0; batch = window.Take()) {
        std::vector<Product> products;
        products.reserve(batch.size);
        for (size_t k = 0; k < batch.size; ++k) products.push_back(produce(batch.first + k));
        window.Put(batch, std::move(products));
      }
    } catch (...) {
      window.Fail();
    }
  });
  if (helpers.Empty()) return workAlone();
  for (size_t used = 0; used < count;) {
    std::vector<Product> products = window.Get();
    for (size_t k = 0; k < products.size(); ++k) consume(used + k, std::move(products[k]));
    used += products.size();
    window.Release(products.size());
  }
}

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_ORDERED_WORK_H
