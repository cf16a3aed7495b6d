// Hook placement: positions and piece points for runs of one, two and three
// hooks, in screen space (through a turned, scaled and moved view) and in
// muscle mode, and the marking of a run by Getscreenp.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "figure_test.h"

namespace splinecore {
namespace {

using test::ExpectVector;
using test::kSentinel;
using test::TestFigure;
constexpr float kNone = std::numeric_limits<float>::quiet_NaN();  // member left as the sentinel

Vector X(float x) { return std::isnan(x) ? kSentinel : Vector(x, 0, 0); }

// Carrier at the origin, its next at (3,0,0). Both are end points with
// half-chord tangents (-1.5,0,0), doubled on the segment's sides, so the
// segment's Bezier points are (3,0,0), (2,0,0), (1,0,0), (0,0,0): a point at
// parameter s from the carrier lies at x = 3s, and every piece is evenly
// spaced. The view maps (x,y,z) to (10 - 2y, 20 + 2x, 30 + 2z) and back
// exactly, so the screen-space arithmetic is exact.
struct SegmentFigure {
  explicit SegmentFigure(TestFigure& figure) : f(figure) {
    f.SetScreen(Matrix{{{0, -2, 0, 10}, {2, 0, 0, 20}, {0, 0, 2, 30}}},
                Matrix{{{0, 0.5f, 0, -10}, {-0.5f, 0, 0, 5}, {0, 0, 0.5f, -15}}});
    f.Open({carrier = f.NewCP(X(0)), end = f.NewCP(X(3))});
    carrier->indelta = end->outdelta = Delta{0, 0, 2};
    carrier->outdelta = end->indelta = Delta{0, 0, 1};
  }
  // Hooks with the given s hung below the carrier in this order; every
  // member they write starts as the sentinel.
  std::vector<HookSegmentCP*> Run(const std::vector<float>& params) {
    std::vector<HookSegmentCP*> hooks;
    std::vector<SegmentCP*> stack{carrier};
    for (float s : params) {
      HookSegmentCP* h = f.NewHook(s);
      for (Vector* v : {&h->p, &h->hit, &h->hot, &h->pit, &h->pot, &h->mhit, &h->mhot, &h->mpit, &h->mpot})
        *v = kSentinel;
      f.Open({h});
      hooks.push_back(h);
      stack.push_back(h);
    }
    TestFigure::Stack(stack);
    return hooks;
  }
  TestFigure& f;
  SegmentCP *carrier = nullptr, *end = nullptr;
};

class HookRangeTest : public test::FigureTest {
 protected:
  SegmentFigure fig{f};
};

// x of each hook's position, in-piece handles and (last hook only) closing piece.
struct Placed {
  float p, hit, hot, pit, pot;
};
struct RunCase {
  const char* name;
  std::vector<float> s;
  float snapped;  // the first hook's s afterwards
  std::vector<Placed> expected;
};

const RunCase kRuns[] = {
    {"one hook: two even pieces", {0.25f}, 0.25f, {{0.75f, 0.25f, 0.5f, 1.5f, 2.25f}}},
    {"snapped 0.6 -> 0.5", {0.6f}, 0.5f, {{1.5f, 0.5f, 1.0f, 2.0f, 2.5f}}},
    {"two hooks: only the last gets the closing piece",
     {0.25f, 0.75f},
     0.25f,
     {{0.75f, 0.25f, 0.5f, kNone, kNone}, {2.25f, 1.25f, 1.75f, 2.5f, 2.75f}}},
    {"three hooks: four pieces",
     {0.25f, 0.5f, 0.75f},
     0.25f,
     {{0.75f, 0.25f, 0.5f, kNone, kNone}, {1.5f, 1.0f, 1.25f, kNone, kNone}, {2.25f, 1.75f, 2.0f, 2.5f, 2.75f}}},
    {"unsorted: the second piece runs back from s = 0.75 to s = 0.25",
     {0.75f, 0.25f},
     0.75f,
     {{2.25f, 0.75f, 1.5f, kNone, kNone}, {0.75f, 1.75f, 1.25f, 1.5f, 2.25f}}},
};

TEST(HookRange, RunsOfOneTwoAndThreeHooksOnTheScreenAndMusclePaths) {
  const long live = MarrowLiveBlocks();
  for (const RunCase& c : kRuns) {
    for (bool muscle : {false, true}) {
      SCOPED_TRACE(std::string(c.name) + (muscle ? ", muscle path" : ", screen path"));
      TestFigure figure;
      SegmentFigure fig(figure);
      const std::vector<HookSegmentCP*> run = fig.Run(c.s);
      muscle ? MHookRange(fig.carrier) : HookRange(fig.carrier);
      EXPECT_EQ(run[0]->s, c.snapped);
      for (std::size_t i = 0; i < run.size(); ++i) {
        SCOPED_TRACE(i);
        HookSegmentCP* h = run[i];
        const Placed& e = c.expected[i];
        ExpectVector(h->p, X(e.p));
        ExpectVector(muscle ? h->mhit : h->hit, X(e.hit));
        ExpectVector(muscle ? h->mhot : h->hot, X(e.hot));
        ExpectVector(muscle ? h->mpit : h->pit, X(e.pit));
        ExpectVector(muscle ? h->mpot : h->pot, X(e.pot));
        // The other path's members are left alone.
        for (Vector* v : muscle ? std::vector<Vector*>{&h->hit, &h->hot, &h->pit, &h->pot}
                                : std::vector<Vector*>{&h->mhit, &h->mhot, &h->mpit, &h->mpot})
          ExpectVector(*v, kSentinel);
      }
    }
  }
  EXPECT_EQ(MarrowLiveBlocks(), live);
}

TEST_F(HookRangeTest, NoRunOrNoNextWritesNothing) {
  SegmentCP* below = fig.f.NewCP(X(0));
  HookSegmentCP* h = fig.f.NewHook(0.25f);
  h->p = h->hit = kSentinel;
  fig.f.Open({below});
  fig.f.Open({h});
  TestFigure::Stack({fig.carrier, below, h});  // h belongs to `below`, not the carrier
  HookRange(fig.carrier);
  MHookRange(fig.carrier);
  ExpectVector(h->p, kSentinel);
  // `below` has no next.
  HookRange(below);
  MHookRange(below);
  ExpectVector(h->p, kSentinel);
  ExpectVector(h->hit, kSentinel);
}

TEST_F(HookRangeTest, GetscreenpOfOneHookPlacesAndMarksTheWholeRun) {
  std::vector<HookSegmentCP*> run = fig.Run({0.25f, 0.75f});
  for (HookSegmentCP* h : run) h->flags |= cpflag::itCached | cpflag::otCached | cpflag::screenitCached;
  ExpectVector(run[1]->Getscreenp(), Vector(10, 24.5f, 30));  // the screen image of (2.25,0,0)
  ExpectVector(run[0]->p, X(0.75f));
  for (HookSegmentCP* h : run) {
    EXPECT_TRUE(h->IsScreenpCached());
    EXPECT_FALSE(h->IsItCached());
    EXPECT_FALSE(h->IsOtCached());
    EXPECT_FALSE(h->IsScreenitCached());
  }
  ExpectVector(run[0]->screenp, Vector(10, 21.5f, 30));
  // Placed: the accessors and a second query do not place again.
  run[0]->hit = kSentinel;
  ExpectVector(*run[0]->Gethit(), kSentinel);
  // After a new screen generation, whichever accessor asks first places the
  // run (the last hook's pieces, from the table above).
  const std::pair<Vector* (HookSegmentCP::*)(), float> accessors[] = {
      {&HookSegmentCP::Gethit, 1.25f}, {&HookSegmentCP::Gethot, 1.75f},
      {&HookSegmentCP::Getpit, 2.5f}, {&HookSegmentCP::Getpot, 2.75f}};
  for (const auto& [get, x] : accessors) {
    for (HookSegmentCP* h : run) h->hit = h->hot = h->pit = h->pot = kSentinel;
    ++fig.f.cache.screenGeneration;
    ExpectVector(*(run[1]->*get)(), X(x));
  }
}

}  // namespace
}  // namespace splinecore
