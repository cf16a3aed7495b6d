// The memory services: zero-filled blocks, exact counters, per-thread
// failure injection.
#include <cstring>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "marrow/marrow.h"

namespace {

TEST(Marrow, BlocksAreZeroFilled) {
  for (int round = 0; round < 4; ++round) {
    auto* block = static_cast<unsigned char*>(AllocSeg(300));
    std::vector<unsigned char> zero(300, 0);
    EXPECT_EQ(std::memcmp(block, zero.data(), zero.size()), 0);
    std::memset(block, 0xab, 300);  // a reused block must come back clean
    FreeSeg(block);
  }
}

TEST(Marrow, CountsEveryEntryAndLiveBlocks) {
  const long live = MarrowLiveBlocks();
  const long segAllocs = MarrowAllocSegCount();
  const long extFrees = MarrowFreeExtCount();
  void* seg = AllocSeg(8);
  void* ext = AllocExt(8);
  EXPECT_EQ(MarrowLiveBlocks(), live + 2);
  FreeExt(seg);  // slice records cross the pools
  FreeSeg(ext);
  FreeSeg(nullptr);
  EXPECT_EQ(MarrowLiveBlocks(), live);
  EXPECT_EQ(MarrowAllocSegCount(), segAllocs + 1);
  EXPECT_EQ(MarrowFreeExtCount(), extFrees + 1);
}

TEST(Marrow, FailureInjectionIsPerThreadAndCountsDown) {
  MarrowFailAfter(1);
  void* first = AllocExt(8);
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(AllocExt(8), nullptr);
  EXPECT_EQ(AllocSeg(8), nullptr);
  void* other = nullptr;
  std::thread([&other] { other = AllocSeg(8); }).join();
  EXPECT_NE(other, nullptr);
  MarrowFailAfter(-1);
  void* again = AllocSeg(8);
  EXPECT_NE(again, nullptr);
  FreeExt(first);
  FreeSeg(other);
  FreeSeg(again);
}

TEST(Marrow, CountersAreExactUnderConcurrentUse) {
  const long live = MarrowLiveBlocks();
  const long allocs = MarrowAllocSegCount();
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([] {
      for (int i = 0; i < 10000; ++i) FreeSeg(AllocSeg(16));
    });
  for (auto& t : threads) t.join();
  EXPECT_EQ(MarrowAllocSegCount(), allocs + 40000);
  EXPECT_EQ(MarrowLiveBlocks(), live);
}

}  // namespace
