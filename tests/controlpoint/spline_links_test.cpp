// Splines and stacks: head derivation, deletion with its repairs, Touch.
#include <gtest/gtest.h>

#include "figure_test.h"

namespace splinecore {
namespace {

using test::TestFigure;

class SplineTest : public test::FigureTest {
 protected:
  SegmentCP* At(float x, std::uint32_t flags = 0) { return f.NewCP(Vector(x, 0, 0), flags); }
  // DeleteCP, keeping the figure's registration on the spline's first point.
  void Delete(SegmentCP** first, SegmentCP* x) {
    f.Unregister(*first);
    DeleteCP(first, x);
    if (*first != nullptr) f.Register(*first);
  }
};

TEST_F(SplineTest, SetHeadDerivesHeadsAndHookFlags) {
  SegmentCP *a = At(0), *h1 = At(1, cpflag::hook), *b = At(3, cpflag::lastHook), *h3 = At(4, cpflag::hook);
  SegmentCP* h2 = At(2, cpflag::hook | cpflag::hasHooks);  // stale flags are cleared
  for (SegmentCP* cp : {a, h1, h2, b, h3}) f.Open({cp});
  TestFigure::Stack({a, h1, h2, b, h3});
  b->SetHead();  // from any member: the whole stack
  EXPECT_EQ(a->head, a);
  EXPECT_TRUE(a->IsHasHooks());
  EXPECT_EQ(h1->head, h1);
  EXPECT_FALSE(h1->IsLastHook());
  EXPECT_EQ(h2->head, h2);
  EXPECT_TRUE(h2->IsLastHook());
  EXPECT_FALSE(h2->IsHasHooks());
  EXPECT_EQ(b->head, a);
  EXPECT_TRUE(b->IsHasHooks());
  EXPECT_FALSE(b->IsLastHook());
  EXPECT_EQ(h3->head, h3);
  EXPECT_FALSE(h3->IsLastHook());  // the bottom: no stackNext
}

TEST_F(SplineTest, DeletingTheFirstPointMakesItsNextFirst) {
  for (bool closed : {false, true}) {
    SCOPED_TRACE(closed ? "closed" : "open");
    SegmentCP *a = At(0), *b = At(1), *c = At(2);
    SegmentCP* first = closed ? f.Closed({a, b, c}) : f.Open({a, b, c});
    Delete(&first, a);
    EXPECT_EQ(first, b);
    EXPECT_EQ(b->prev, closed ? c : nullptr);
    EXPECT_EQ(b->next, c);
    EXPECT_EQ(c->next, closed ? b : nullptr);
    EXPECT_EQ(c->IsLoopEnd() != 0, closed);
    EXPECT_FALSE(b->IsLoopEnd());
  }
}

TEST_F(SplineTest, DeletingTheLastPointEndsTheSplineAtItsPrev) {
  for (bool closed : {false, true}) {
    SCOPED_TRACE(closed ? "closed" : "open");
    SegmentCP *a = At(0), *b = At(1), *c = At(2);
    SegmentCP* first = closed ? f.Closed({a, b, c}) : f.Open({a, b, c});
    DeleteCP(&first, c);
    EXPECT_EQ(first, a);
    EXPECT_EQ(b->next, closed ? a : nullptr);
    EXPECT_EQ(a->prev, closed ? b : nullptr);
    EXPECT_EQ(b->IsLoopEnd() != 0, closed);  // a closed spline's loopEnd moves to b
  }
}

TEST_F(SplineTest, DeletingTheOnlyPointOfAClosedSplineEmptiesIt) {
  SegmentCP* first = f.Closed({At(0)});
  Delete(&first, first);
  EXPECT_EQ(first, nullptr);
}

TEST_F(SplineTest, DeletingAPointNotOnTheSplineChangesNothing) {
  SegmentCP *a = At(0), *b = At(1), *stranger = At(5);
  SegmentCP* first = f.Closed({a, b});
  f.Open({stranger});
  const long live = MarrowLiveBlocks();
  DeleteCP(&first, stranger);
  SegmentCP* none = nullptr;
  DeleteCP(&none, a);
  DeleteCP(nullptr, a);
  EXPECT_EQ(MarrowLiveBlocks(), live);
  EXPECT_EQ(first, a);
  EXPECT_EQ(a->next, b);
  EXPECT_EQ(b->next, a);
}

TEST_F(SplineTest, DeletingAStackTopHandsItsPositionDown) {
  SegmentCP *a = f.NewCP(Vector(1, 2, 3)), *b = f.NewCP(Vector(9, 9, 9)), *c = f.NewCP(Vector(8, 8, 8));
  SegmentCP* first = f.Open({a});
  f.Unregister(a);
  f.Open({b});
  f.Open({c});
  TestFigure::Stack({a, b, c});
  DeleteCP(&first, a);
  EXPECT_EQ(first, nullptr);
  EXPECT_EQ(b->p == Vector(1, 2, 3), 1);
  EXPECT_EQ(c->p == Vector(1, 2, 3), 1);
  EXPECT_EQ(b->stackPrev, nullptr);
  EXPECT_EQ(b->head, b);
  EXPECT_EQ(c->head, b);
}

TEST_F(SplineTest, DeletingAMiddleMemberRelinksTheStack) {
  SegmentCP* a = f.NewCP(Vector(1, 2, 3));
  SegmentCP* h = At(0, cpflag::hook);
  SegmentCP* c = f.NewCP(Vector(8, 8, 8));
  f.Open({a});
  SegmentCP* first = f.Open({h});
  f.Unregister(h);
  f.Open({c});
  TestFigure::Stack({a, h, c});
  EXPECT_TRUE(a->IsHasHooks());
  DeleteCP(&first, h);
  EXPECT_EQ(a->stackNext, c);
  EXPECT_EQ(c->stackPrev, a);
  EXPECT_FALSE(a->IsHasHooks());
  EXPECT_EQ(c->p == Vector(8, 8, 8), 1);  // only a removed top hands down p
}

TEST_F(SplineTest, DeleteAllFreesAClosedSplineOnceAndLeavesStacksValid) {
  SegmentCP *a = At(0), *b = At(1), *c = At(2), *other = At(1), *below = At(1);
  f.Closed({a, b, c});
  f.Unregister(a);
  f.Open({other});
  f.Open({below});
  TestFigure::Stack({other, b, below});
  const long live = MarrowLiveBlocks();
  DeleteAllCP(a);
  EXPECT_EQ(MarrowLiveBlocks(), live - 3);
  EXPECT_EQ(other->stackNext, below);
  EXPECT_EQ(below->stackPrev, other);
  EXPECT_EQ(below->head, other);
}

TEST_F(SplineTest, TouchClearsConversionsAndMovesStamps) {
  SegmentCP cp;
  cp.flags = ~0u;
  cp.stamp = 0;
  cp.screenStamp = 10;
  cp.Touch(0);
  const std::uint32_t cleared =
      cpflag::converted | cpflag::mconverted | cpflag::mpCached | cpflag::motCached | cpflag::mitCached;
  EXPECT_EQ(cp.flags, ~cleared);
  EXPECT_EQ(cp.stamp, 255);  // wraps
  EXPECT_EQ(cp.screenStamp, 9);
  cp.Touch(2);
  EXPECT_FALSE(cp.IsTouched());
  cp.Touch(0);
  EXPECT_FALSE(cp.IsTouched());
  cp.Touch(3);  // bit 0 wins
  EXPECT_TRUE(cp.IsTouched());
  cp.Touch(0);
  EXPECT_TRUE(cp.IsTouched());
}

}  // namespace
}  // namespace splinecore
