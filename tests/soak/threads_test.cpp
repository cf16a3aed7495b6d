// Separate figures on separate threads: four soaks at once, each on its own
// figures, must each give what the same soak gives alone (the library keeps
// no global state; the memory services' counters are atomic).
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "marrow/marrow.h"
#include "soak.h"

namespace splinecore::soak {
namespace {

TEST(ThreadsSoakTest, FourFiguresSoakedAtOnceAnswerAsAlone) {
  constexpr int kThreads = 4;
  SoakOptions options[kThreads];
  for (int i = 0; i < kThreads; ++i) {
    options[i].seed = 1000 + static_cast<std::uint64_t>(i);
    options[i].edits = 600;
  }
  const long live = MarrowLiveBlocks();
  SoakResult together[kThreads];
  {
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&, i] { together[i] = RunSoak(options[i]); });
    }
    for (std::thread& t : threads) t.join();
  }
  EXPECT_EQ(MarrowLiveBlocks(), live);
  for (int i = 0; i < kThreads; ++i) {
    const SoakResult alone = RunSoak(options[i]);
    EXPECT_EQ(together[i].edits, options[i].edits);
    EXPECT_EQ(together[i].mismatches + together[i].findings, 0) << together[i].report;
    EXPECT_EQ(together[i].figures, alone.figures);
    EXPECT_EQ(together[i].report, alone.report);
  }
}

}  // namespace
}  // namespace splinecore::soak
