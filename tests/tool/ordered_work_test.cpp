#include "ordered_work.h"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>

namespace pictures::tool {
namespace {

TEST(RunInOrder, UsesEveryProductOnceInOrderWhateverTheJobs) {
  for (const unsigned jobs : {1u, 2u, 3u, 16u}) {
    for (const size_t count : {0u, 1u, 2u, 500u}) {
      std::vector<size_t> used;
      RunInOrder<std::string>(
          count, jobs, {1000, 50}, [](size_t i) { return i % 7 * 30; },
          [](size_t i) {
            if (i % 11 == 0) std::this_thread::sleep_for(std::chrono::microseconds(200));
            return std::to_string(i);
          },
          [&](size_t i, const std::string& product) {
            EXPECT_EQ(product, std::to_string(i));
            used.push_back(i);
          });
      ASSERT_EQ(used.size(), count);
      for (size_t i = 0; i < count; ++i) EXPECT_EQ(used[i], i);
    }
  }
}

// Counts what exists at a time: products that were begun and are not used up.
TEST(RunInOrder, HoldsFewHeavyProductsHoweverManyThereAre) {
  std::atomic<int> alive = 0, most = 0;
  const auto begin = [&] {
    const int now = ++alive;
    for (int seen = most; now > seen && !most.compare_exchange_weak(seen, now);) {
    }
    return 0;
  };
  RunInOrder<int>(
      300, 3, {1000, 64}, [](size_t) { return 900; }, [&](size_t) { return begin(); },
      [&](size_t, int) {
        std::this_thread::sleep_for(std::chrono::microseconds(100));
        --alive;
      });
  EXPECT_LE(most, 4);  // one for each job and the one in use
}

TEST(RunInOrder, PassesAnExceptionOnAndStopsTheWorkers) {
  std::atomic<size_t> produced = 0;
  EXPECT_THROW(RunInOrder<int>(
                   100000, 4, {100, 64}, [](size_t) { return 10; },
                   [&](size_t) { return static_cast<int>(++produced); },
                   [](size_t i, int) {
                     if (i == 20) throw std::runtime_error("enough");
                   }),
               std::runtime_error);
  EXPECT_LT(produced, 1000u);
}

TEST(RunInOrder, PassesOnWhatAWorkerThrowsBehindTheProductsBeforeIt) {
  for (const unsigned jobs : {1u, 4u}) {
    size_t used = 0;
    EXPECT_THROW(RunInOrder<size_t>(
                     1000, jobs, {100, 64}, [](size_t) { return 10; },
                     [](size_t i) {
                       if (i == 500) throw std::bad_alloc();
                       return i;
                     },
                     [&](size_t i, size_t product) {
                       EXPECT_EQ(product, i);
                       ++used;
                     }),
                 std::bad_alloc);
    EXPECT_GT(used, 300u);
    EXPECT_LE(used, 500u);
  }
}

TEST(ForEachInParallel, PassesAnExceptionOnWhenAllHaveEnded) {
  for (const unsigned jobs : {1u, 4u}) {
    std::atomic<int> inside = 0;
    EXPECT_THROW(ForEachInParallel(1000, jobs,
                                   [&](size_t i) {
                                     ++inside;
                                     std::this_thread::sleep_for(std::chrono::microseconds(10));
                                     --inside;
                                     if (i == 333) throw std::bad_alloc();
                                   }),
                 std::bad_alloc);
    EXPECT_EQ(inside, 0);
  }
}

TEST(ForEachInParallel, SharesTheWork) {
  std::mutex mutex;
  std::map<std::thread::id, int> visits;
  ForEachInParallel(64, 4, [&](size_t) {
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    const std::lock_guard lock(mutex);
    ++visits[std::this_thread::get_id()];
  });
  EXPECT_GT(visits.size(), 1u);
}

TEST(ForEachInParallel, VisitsEachOnce) {
  std::vector<std::atomic<int>> visits(1000);
  ForEachInParallel(visits.size(), 4, [&](size_t i) { ++visits[i]; });
  for (const auto& count : visits) EXPECT_EQ(count, 1);
}

}  // namespace
}  // namespace pictures::tool
