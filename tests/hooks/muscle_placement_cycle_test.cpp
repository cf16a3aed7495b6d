// Fault found by fuzzing: muscle-mode hook placement recursed without end
// when two runs' segments end on each other's hooks. Placing one run asks
// for the muscle position of its segment's far end, a hook of the other run,
// whose placement asks for a hook of the first run again; a hook must count
// as placed from the moment its placement starts, as a stale screen position
// does.
#include <gtest/gtest.h>

#include "figure_test.h"

namespace splinecore {
namespace {

using test::ExpectVector;
using test::Neutral;
using test::TestFigure;

TEST(MusclePlacementCycle, RunsEndingOnEachOthersHooksReturn) {
  // c1 -> h2 and c2 -> h1, with h1 below c1 and h2 below c2: each segment
  // ends on a hook of the other. Every muscle and screen query returns, and
  // a placed hook stays where it is when asked again.
  TestFigure f;
  SegmentCP* c1 = Neutral(f.NewCP(Vector(0, 0, 0)));
  SegmentCP* c2 = Neutral(f.NewCP(Vector(0, 4, 0)));
  HookSegmentCP* h1 = Neutral(f.NewHook(0.25f));
  HookSegmentCP* h2 = Neutral(f.NewHook(0.75f));
  h1->p = Vector(1, 1, 0);
  h2->p = Vector(3, 3, 0);
  f.Open({c1, h2});
  f.Open({c2, h1});
  TestFigure::Stack({c1, h1});
  TestFigure::Stack({c2, h2});
  f.AddMuscleTable(static_cast<std::uint16_t>(f.cache.nextId));
  f.SetMuscleMode(true);

  for (SegmentCP* k : {static_cast<SegmentCP*>(h1), static_cast<SegmentCP*>(h2), c1, c2}) {
    const Vector p = k->Getmp();
    const Vector handles = k->Getmit() + k->Getmot();
    const Vector screen = k->Getscreenp();
    EXPECT_TRUE(std::isfinite(p.x + p.y + handles.x + handles.y + screen.x + screen.y));
  }
  EXPECT_TRUE(h1->IsMpCached() && h2->IsMpCached());
  const Vector placed = h1->p;
  ExpectVector(h1->Getmp(), placed);
}

}  // namespace
}  // namespace splinecore
