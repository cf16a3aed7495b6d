// Hook placement: positions and piece points for runs of one, two and three
// hooks, in screen space (through a turned, scaled and moved view) and in
// muscle mode, and the marking of a run by Getscreenp.
#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <vector>

#include "marrow/marrow.h"
#include "test_figure.h"

namespace splinecore {
namespace {

using test::MakeMatrix;
using test::TestFigure;

const Vector kSentinel(-77, -77, -77);

Vector X(float x) { return Vector(x, 0, 0); }

// Carrier at the origin, its next at (3,0,0). Both are end points with
// half-chord tangents (-1.5,0,0), doubled on the segment's sides, so the
// segment's Bezier points are (3,0,0), (2,0,0), (1,0,0), (0,0,0): a point at
// parameter s from the carrier lies at x = 3s, and every piece is evenly
// spaced. The view maps (x,y,z) to (10 - 2y, 20 + 2x, 30 + 2z) and back
// exactly, so the screen-space arithmetic is exact.
class HookRangeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    F().SetScreen(MakeMatrix({0, -2, 0, 10, 2, 0, 0, 20, 0, 0, 2, 30}),
                  MakeMatrix({0, 0.5f, 0, -10, -0.5f, 0, 0, 5, 0, 0, 0.5f, -15}));
    carrier = F().NewCP(X(0));
    end = F().NewCP(X(3));
    carrier->indelta = Delta{0, 0, 2};
    carrier->outdelta = Delta{0, 0, 1};
    end->indelta = Delta{0, 0, 1};
    end->outdelta = Delta{0, 0, 2};
    F().Open({carrier, end});
  }
  void TearDown() override {
    figure_.reset();
    EXPECT_EQ(MarrowLiveBlocks(), live_);
  }
  TestFigure& F() { return *figure_; }

  // Hooks with the given s hung below the carrier in this order; every
  // member they write starts as the sentinel.
  std::vector<HookSegmentCP*> Run(std::initializer_list<float> params) {
    std::vector<HookSegmentCP*> hooks;
    for (float s : params) {
      HookSegmentCP* h = F().NewHook(s);
      for (Vector* v : {&h->p, &h->hit, &h->hot, &h->pit, &h->pot, &h->mhit, &h->mhot, &h->mpit, &h->mpot}) {
        *v = kSentinel;
      }
      F().Open({h});
      hooks.push_back(h);
    }
    carrier->stackNext = hooks.empty() ? nullptr : hooks.front();
    SegmentCP* above = carrier;
    for (HookSegmentCP* h : hooks) {
      h->stackPrev = above;
      above->stackNext = h;
      above = h;
    }
    above->stackNext = nullptr;
    carrier->SetHead();
    return hooks;
  }

  long live_ = MarrowLiveBlocks();
  std::unique_ptr<TestFigure> figure_ = std::make_unique<TestFigure>();
  SegmentCP* carrier = nullptr;
  SegmentCP* end = nullptr;
};

TEST_F(HookRangeTest, OneHookSplitsTheSegmentInTwoEvenPieces) {
  HookSegmentCP* h = Run({0.25f})[0];
  HookRange(carrier);
  EXPECT_EQ(h->p == X(0.75f), 1);
  EXPECT_EQ(h->hit == X(0.25f), 1);
  EXPECT_EQ(h->hot == X(0.5f), 1);
  EXPECT_EQ(h->pit == X(1.5f), 1);
  EXPECT_EQ(h->pot == X(2.25f), 1);
  EXPECT_EQ(h->mhit == kSentinel, 1);
}

TEST_F(HookRangeTest, TwoHooksOnlyTheLastGetsTheClosingPiece) {
  std::vector<HookSegmentCP*> run = Run({0.25f, 0.75f});
  HookRange(carrier);
  EXPECT_EQ(run[0]->p == X(0.75f), 1);
  EXPECT_EQ(run[0]->hit == X(0.25f), 1);
  EXPECT_EQ(run[0]->hot == X(0.5f), 1);
  EXPECT_EQ(run[0]->pit == kSentinel, 1);
  EXPECT_EQ(run[0]->pot == kSentinel, 1);
  EXPECT_EQ(run[1]->p == X(2.25f), 1);
  EXPECT_EQ(run[1]->hit == X(1.25f), 1);
  EXPECT_EQ(run[1]->hot == X(1.75f), 1);
  EXPECT_EQ(run[1]->pit == X(2.5f), 1);
  EXPECT_EQ(run[1]->pot == X(2.75f), 1);
}

TEST_F(HookRangeTest, ThreeHooksCutFourPieces) {
  std::vector<HookSegmentCP*> run = Run({0.25f, 0.5f, 0.75f});
  HookRange(carrier);
  const float expected[3][3] = {{0.75f, 0.25f, 0.5f}, {1.5f, 1.0f, 1.25f}, {2.25f, 1.75f, 2.0f}};
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(run[i]->p == X(expected[i][0]), 1) << i;
    EXPECT_EQ(run[i]->hit == X(expected[i][1]), 1) << i;
    EXPECT_EQ(run[i]->hot == X(expected[i][2]), 1) << i;
  }
  EXPECT_EQ(run[1]->pit == kSentinel, 1);
  EXPECT_EQ(run[2]->pit == X(2.5f), 1);
  EXPECT_EQ(run[2]->pot == X(2.75f), 1);
}

TEST_F(HookRangeTest, UnsortedRunCutsBackwardPieces) {
  std::vector<HookSegmentCP*> run = Run({0.75f, 0.25f});
  HookRange(carrier);
  EXPECT_EQ(run[0]->p == X(2.25f), 1);
  EXPECT_EQ(run[0]->hit == X(0.75f), 1);
  EXPECT_EQ(run[0]->hot == X(1.5f), 1);
  // From s = 0.75 back to s = 0.25.
  EXPECT_EQ(run[1]->p == X(0.75f), 1);
  EXPECT_EQ(run[1]->hit == X(1.75f), 1);
  EXPECT_EQ(run[1]->hot == X(1.25f), 1);
  EXPECT_EQ(run[1]->pit == X(1.5f), 1);
  EXPECT_EQ(run[1]->pot == X(2.25f), 1);
}

TEST_F(HookRangeTest, ParameterIsSnappedAndKept) {
  HookSegmentCP* h = Run({0.6f})[0];
  HookRange(carrier);
  EXPECT_EQ(h->s, 0.5f);
  EXPECT_EQ(h->p == X(1.5f), 1);
}

TEST_F(HookRangeTest, MusclePathWritesTheMuscleMembers) {
  std::vector<HookSegmentCP*> run = Run({0.25f, 0.75f});
  MHookRange(carrier);
  EXPECT_EQ(run[0]->p == X(0.75f), 1);
  EXPECT_EQ(run[0]->mhit == X(0.25f), 1);
  EXPECT_EQ(run[0]->mhot == X(0.5f), 1);
  EXPECT_EQ(run[0]->mpit == kSentinel, 1);
  EXPECT_EQ(run[1]->p == X(2.25f), 1);
  EXPECT_EQ(run[1]->mhit == X(1.25f), 1);
  EXPECT_EQ(run[1]->mhot == X(1.75f), 1);
  EXPECT_EQ(run[1]->mpit == X(2.5f), 1);
  EXPECT_EQ(run[1]->mpot == X(2.75f), 1);
  for (HookSegmentCP* h : run) {
    for (Vector* v : {&h->hit, &h->hot, &h->pit, &h->pot}) EXPECT_EQ(*v == kSentinel, 1);
  }
}

TEST_F(HookRangeTest, NoRunOrNoNextWritesNothing) {
  SegmentCP* below = F().NewCP(X(0));
  HookSegmentCP* h = F().NewHook(0.25f);
  h->p = kSentinel;
  h->hit = kSentinel;
  F().Open({below});
  F().Open({h});
  TestFigure::Stack({carrier, below, h});  // h belongs to `below`, not the carrier
  HookRange(carrier);
  MHookRange(carrier);
  EXPECT_EQ(h->p == kSentinel, 1);
  // `below` has no next.
  HookRange(below);
  MHookRange(below);
  EXPECT_EQ(h->p == kSentinel, 1);
  EXPECT_EQ(h->hit == kSentinel, 1);
}

TEST_F(HookRangeTest, GetscreenpOfOneHookPlacesAndMarksTheWholeRun) {
  std::vector<HookSegmentCP*> run = Run({0.25f, 0.75f});
  for (HookSegmentCP* h : run) h->flags |= cpflag::itCached | cpflag::otCached | cpflag::screenitCached;
  // Screen image of (2.25,0,0).
  EXPECT_EQ(run[1]->Getscreenp() == Vector(10, 24.5f, 30), 1);
  EXPECT_EQ(run[0]->p == X(0.75f), 1);
  for (HookSegmentCP* h : run) {
    EXPECT_TRUE(h->IsScreenpCached());
    EXPECT_FALSE(h->IsItCached());
    EXPECT_FALSE(h->IsOtCached());
    EXPECT_FALSE(h->IsScreenitCached());
  }
  EXPECT_EQ(run[0]->screenp == Vector(10, 21.5f, 30), 1);

  // Placed: the accessors and a second query do not place again.
  run[0]->hit = kSentinel;
  EXPECT_EQ(*run[0]->Gethit() == kSentinel, 1);
  // A new screen generation does.
  ++F().cache.screenGeneration;
  EXPECT_EQ(*run[0]->Gethit() == X(0.25f), 1);
}

}  // namespace
}  // namespace splinecore
