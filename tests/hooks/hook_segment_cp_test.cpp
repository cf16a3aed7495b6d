// A hook made from a control point, as a host turns a point into a hook in
// its place: until it hangs under a carrier it answers as the point did. A
// new point's cached tangent flags mean nothing before its first getter.
#include <gtest/gtest.h>

#include "figure_test.h"

namespace splinecore {
namespace {

TEST(HookFromPoint, AnswersAsThePointUntilItHangs) {
  test::TestFigure f;
  f.AddMuscleTable(8);
  f.cache.nextId = 5;  // an id a fresh record would not have
  SegmentCP* before = f.NewCP(Vector(0, 0, 0));
  SegmentCP* point = f.NewCP(Vector(2, 1, 0), cpflag::smooth);
  SegmentCP* below = f.NewCP(Vector(2, 1, 0));
  SegmentCP* after = f.NewCP(Vector(4, 0, 0));
  test::Link({before, point, after}, false);
  test::TestFigure::Stack({point, below});
  point->indelta = Delta{10, 20, 1.5f};
  point->outdelta = Delta{-5, 0, 2};
  MuscleCPData* data = f.AddMuscleData(point);
  auto* hook = new HookSegmentCP(point, 0.25f);
  hook->cache = point->cache;  // the host stores it, as for any new point
  EXPECT_TRUE(hook->IsHook() && hook->IsSmooth());
  EXPECT_TRUE(hook->head == hook && hook->prev == before && hook->next == after);  // in the point's place
  EXPECT_TRUE(hook->stackPrev == nullptr && hook->stackNext == below);                // and in its stack
  test::ExpectVector(hook->Getp(), Vector(2, 1, 0));
  test::ExpectVector(hook->Getscreenp(), Vector(2, 1, 0));  // nothing cached yet
  EXPECT_EQ(hook->GetMuscleCPData(), data);  // found by the point's id
  const Delta in = hook->Getindelta(), out = hook->Getoutdelta();
  EXPECT_TRUE(in.pitch == 10 && in.yaw == 20 && in.magnitude == 1.5f);
  EXPECT_TRUE(out.pitch == -5 && out.yaw == 0 && out.magnitude == 2);
  EXPECT_EQ(hook->GetS(), 0.25f);
  Vector t[4];
  EXPECT_EQ(hook->GetTangents(&t[0], &t[1], &t[2], &t[3], 0), 0);  // a hook has none of its own
  delete hook;  // frees the muscle data of the shared id
  delete point;
  delete before;
  delete below;
  delete after;
}

// A new point's model caches are stale until its first getter, whatever
// flags the host gave it: its model stamp matches no generation.
TEST(NewPoint, CachedTangentFlagsAreStaleUntilTheFirstGetter) {
  test::TestFigure f;
  SegmentCP* c = f.NewCP(Vector(2, 1, 0), cpflag::itCached | cpflag::otCached);
  f.Open({c});
  c->it = c->ot = Vector(9, 9, 9);
  test::ExpectVector(c->Getit(), Vector(0, 0, 0));  // a lone point has no tangent
  test::ExpectVector(c->Getot(), Vector(0, 0, 0));
}

}  // namespace
}  // namespace splinecore
