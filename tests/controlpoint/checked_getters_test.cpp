// In a checked build a getter whose preconditions do not hold aborts with a
// message naming the rule, instead of crashing later (or reading garbage).
#include <gtest/gtest.h>

#include "test_figure.h"

namespace splinecore {
namespace {

using test::TestFigure;

class CheckedGettersTest : public ::testing::Test {
 protected:
  void SetUp() override {
#ifndef SPLINECORE_CHECKED_BUILD
    GTEST_SKIP() << "only a checked build (SPLINECORE_CHECKED) checks preconditions";
#endif
    GTEST_FLAG_SET(death_test_style, "threadsafe");
  }
  TestFigure f;
};

TEST_F(CheckedGettersTest, MissingRecordsAbortNamingTheRule) {
  SegmentCP* cp = f.NewCP(Vector(1, 2, 3));
  f.Open({cp});
  cp->cache = nullptr;
  EXPECT_DEATH(cp->Getp(), "cache is not set");
  cp->cache = &f.cache;
  cp->head = nullptr;
  EXPECT_DEATH(cp->Getit(), "head is not set");
  cp->head = cp;
  f.cache.view = nullptr;
  EXPECT_DEATH(cp->Getscreenp(), "view record is not set");
  f.cache.view = &f.view;
  EXPECT_EQ(cp->Getscreenp(), Vector(1, 2, 3));  // all in place: answers
}

TEST_F(CheckedGettersTest, HookWithoutCarrierAborts) {
  HookSegmentCP* hook = f.NewHook(0.5f);
  f.Open({f.NewCP(Vector(0, 0, 0)), hook});
  EXPECT_DEATH(hook->Getscreenit(), "a hook has no carrier above it");
}

}  // namespace
}  // namespace splinecore
