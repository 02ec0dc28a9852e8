#include "tool/script/align.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>

#include "tool/run/ordered_pool.h"

namespace dravenna {
namespace {

std::size_t matched(const std::vector<std::uint64_t>& a, const std::vector<std::uint64_t>& b) {
  std::size_t aAt = 0;
  std::size_t bAt = 0;
  std::size_t count = 0;
  for (const EqualRun& run : alignSequences(a, b)) {
    EXPECT_GE(run.a, aAt);
    EXPECT_GE(run.b, bAt);
    for (std::size_t i = 0; i < run.length; ++i) EXPECT_EQ(a[run.a + i], b[run.b + i]);
    aAt = run.a + run.length;
    bAt = run.b + run.length;
    count += run.length;
  }
  return count;
}

TEST(Align, FindsWhatWasKept) {
  EXPECT_EQ(matched({}, {1, 2}), 0U);
  EXPECT_EQ(matched({1, 2, 3}, {1, 2, 3}), 3U);
  EXPECT_EQ(matched({1, 2, 3, 4}, {1, 9, 3, 4}), 3U);
  EXPECT_EQ(matched({7, 7, 1, 7}, {7, 1, 7, 7}), 3U);
  EXPECT_EQ(matched({1, 2, 3}, {3, 1, 2}), 2U);
  EXPECT_EQ(matched({1, 2, 3, 4}, {2, 3, 4, 1}), 3U);
}

TEST(Align, KeepsEverythingThatInsertionsLeave) {
  std::mt19937 random(7);
  for (int round = 0; round < 200; ++round) {
    std::vector<std::uint64_t> a;
    std::vector<std::uint64_t> b;
    for (int i = 0; i < 60; ++i) {
      const std::uint64_t value = random() % 25;  // many that come again
      a.push_back(value);
      if (random() % 10 == 0) b.push_back(1000 + random() % 5);
      b.push_back(value);
    }
    EXPECT_EQ(matched(a, b), a.size());
  }
}

TEST(Align, ManyEqualItemsEndInTime) {
  std::vector<std::uint64_t> a(200000, 1);
  std::vector<std::uint64_t> b(200000, 2);
  a.front() = b.back() = 3;
  EXPECT_LE(matched(a, b), 1U);
}

TEST(OrderedPool, GivesResultsInOrderAndNeverRunsFarAhead) {
  std::atomic<std::size_t> started{0};
  std::size_t next = 0;
  std::size_t furthest = 0;
  const bool whole = runOrdered<std::size_t>(
      2000, 4,
      [&](std::size_t i) {
        ++started;
        // Some items take until the others are as far ahead as they may be.
        while (i % 97 == 0 && started < std::min<std::size_t>(i + 14, 2000)) std::this_thread::yield();
        return i * 2;
      },
      [&](std::size_t i, std::size_t&& result) {
        EXPECT_EQ(i, next++);
        EXPECT_EQ(result, i * 2);
        furthest = std::max(furthest, started.load() - i);
        return true;
      });
  EXPECT_TRUE(whole);
  EXPECT_EQ(next, 2000U);
  EXPECT_LE(furthest, 20U);
}

TEST(OrderedPool, EndsOnARefusalAndOnAnException) {
  std::size_t taken = 0;
  EXPECT_FALSE(runOrdered<int>(
      500, 3, [](std::size_t) { return 1; }, [&](std::size_t, int&&) { return ++taken < 10; }));
  EXPECT_EQ(taken, 10U);
  EXPECT_THROW(runOrdered<int>(
                   500, 3, [](std::size_t i) { return i == 250 ? throw std::runtime_error("x") : 1; },
                   [](std::size_t, int&&) { return true; }),
               std::runtime_error);
}

}  // namespace
}  // namespace dravenna
