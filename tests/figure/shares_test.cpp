// Thread shares: consecutive runs covering every item once, sizes within one
// of each other, ShareOf naming the share of each item; OnThreads runs each
// share once.
#include "figure/shares.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>

namespace splinecore::detail {
namespace {

TEST(Shares, CoverEveryItemOnceInRunsWithinOneOfEachOther) {
  for (std::size_t n : {1, 2, 3, 7, 64, 1001})
    for (std::size_t parts = 1; parts <= 5; ++parts) {
      EXPECT_EQ(ShareBegin(n, 0, parts), 0u);
      EXPECT_EQ(ShareBegin(n, parts, parts), n);
      for (std::size_t p = 0; p < parts; ++p) {
        const std::size_t size = ShareBegin(n, p + 1, parts) - ShareBegin(n, p, parts);
        EXPECT_TRUE(size == n / parts || size == n / parts + 1) << n << " in " << parts << ", share " << p;
        for (std::size_t k = ShareBegin(n, p, parts); k < ShareBegin(n, p + 1, parts); ++k)
          EXPECT_EQ(ShareOf(k, n, parts), p) << n << " in " << parts << ", item " << k;
      }
    }
  // One share per `least` items begun, up to the threads given.
  EXPECT_EQ(Shares(4, 0, 64), 1u);
  EXPECT_EQ(Shares(4, 63, 64), 1u);
  EXPECT_EQ(Shares(4, 64, 64), 2u);
  EXPECT_EQ(Shares(4, 1000, 64), 4u);
  EXPECT_EQ(Shares(1, 1000, 64), 1u);
}

TEST(Shares, OnThreadsRunsEachShareOnce) {
  std::atomic<int> runs[5] = {};
  OnThreads(5, [&](std::size_t part) { ++runs[part]; });
  for (const std::atomic<int>& r : runs) EXPECT_EQ(r.load(), 1);
}

}  // namespace
}  // namespace splinecore::detail
