// In a checked build a getter whose preconditions do not hold aborts with a
// message naming the rule, instead of crashing later (or reading garbage).
// Every build runs this test: without SPLINECORE_CHECKED it compiles the
// getters' own files with the checks (tests/CMakeLists.txt).
#include <gtest/gtest.h>

#include "test_figure.h"

namespace splinecore {
namespace {

using test::TestFigure;
using Getter = Vector& (SegmentCP::*)();

const Getter kModelGetters[] = {&SegmentCP::Getp, &SegmentCP::Getmp,  &SegmentCP::Getmusclep, &SegmentCP::Getnonmusclep,
                                &SegmentCP::Getit, &SegmentCP::Getot, &SegmentCP::Getmit,      &SegmentCP::Getmot};
const Getter kScreenGetters[] = {&SegmentCP::Getscreenp, &SegmentCP::Getscreenit, &SegmentCP::Getscreenot};

class CheckedGettersTest : public ::testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
  TestFigure f;
};

TEST_F(CheckedGettersTest, MissingRecordsAbortNamingTheRule) {
  SegmentCP* cp = f.NewCP(Vector(1, 2, 3));
  f.Open({cp});
  cp->cache = nullptr;
  for (Getter g : kModelGetters) EXPECT_DEATH((cp->*g)(), "cache is not set");
  for (Getter g : kScreenGetters) EXPECT_DEATH((cp->*g)(), "cache is not set");
  cp->cache = &f.cache;
  cp->head = nullptr;
  EXPECT_DEATH(cp->Getit(), "head is not set");
  cp->head = cp;
  f.cache.view = nullptr;
  for (Getter g : kScreenGetters) EXPECT_DEATH((cp->*g)(), "view record is not set");
  for (const Getter* g = kModelGetters; g != kModelGetters + 4; ++g) (cp->**g)();  // positions need no view
  f.cache.view = &f.view;
  EXPECT_EQ(cp->Getscreenp(), Vector(1, 2, 3));  // all in place: answers
}

TEST_F(CheckedGettersTest, HookWithoutCarrierAbortsForTangentsOnly) {
  HookSegmentCP* hook = f.NewHook(0.5f);
  f.Open({f.NewCP(Vector(0, 0, 0)), hook});
  EXPECT_DEATH(hook->Getscreenit(), "a hook has no carrier above it");
  EXPECT_DEATH(hook->Getit(), "a hook has no carrier above it");
  hook->Getp();  // a hook's position without a carrier is defined
}

}  // namespace
}  // namespace splinecore
