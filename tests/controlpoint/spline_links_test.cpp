// Splines and stacks: head derivation, deletion with its repairs, Touch.
#include <gtest/gtest.h>

#include "marrow/marrow.h"
#include "test_figure.h"

namespace splinecore {
namespace {

using test::TestFigure;

class SplineTest : public ::testing::Test {
 protected:
  void TearDown() override {
    figure_.reset();
    EXPECT_EQ(MarrowLiveBlocks(), live_);
  }
  SegmentCP* At(float x, std::uint32_t flags = 0) { return figure_->NewCP(Vector(x, 0, 0), flags); }
  long live_ = MarrowLiveBlocks();
  std::unique_ptr<TestFigure> figure_ = std::make_unique<TestFigure>();
};

TEST_F(SplineTest, SetHeadDerivesHeadsAndHookFlags) {
  SegmentCP* a = At(0);
  SegmentCP* h1 = At(1, cpflag::hook);
  SegmentCP* h2 = At(2, cpflag::hook | cpflag::hasHooks);  // stale flags are cleared
  SegmentCP* b = At(3, cpflag::lastHook);
  SegmentCP* h3 = At(4, cpflag::hook);
  for (SegmentCP* cp : {a, h1, h2, b, h3}) figure_->Open({cp});
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

TEST_F(SplineTest, DeletingTheFirstOfAnOpenSpline) {
  SegmentCP* a = At(0);
  SegmentCP* b = At(1);
  SegmentCP* c = At(2);
  SegmentCP* first = figure_->Open({a, b, c});
  figure_->Unregister(a);
  DeleteCP(&first, a);
  figure_->Register(first);
  EXPECT_EQ(first, b);
  EXPECT_EQ(b->prev, nullptr);
  EXPECT_EQ(b->next, c);
}

TEST_F(SplineTest, DeletingTheLastOfAnOpenSpline) {
  SegmentCP* a = At(0);
  SegmentCP* b = At(1);
  SegmentCP* c = At(2);
  SegmentCP* first = figure_->Open({a, b, c});
  DeleteCP(&first, c);
  EXPECT_EQ(first, a);
  EXPECT_EQ(b->next, nullptr);
  EXPECT_FALSE(b->IsLoopEnd());
}

TEST_F(SplineTest, DeletingTheLastOfAClosedSplineMovesLoopEnd) {
  SegmentCP* a = At(0);
  SegmentCP* b = At(1);
  SegmentCP* c = At(2);
  SegmentCP* first = figure_->Closed({a, b, c});
  DeleteCP(&first, c);
  EXPECT_EQ(first, a);
  EXPECT_TRUE(b->IsLoopEnd());
  EXPECT_EQ(b->next, a);
  EXPECT_EQ(a->prev, b);
}

TEST_F(SplineTest, DeletingTheFirstOfAClosedSpline) {
  SegmentCP* a = At(0);
  SegmentCP* b = At(1);
  SegmentCP* c = At(2);
  SegmentCP* first = figure_->Closed({a, b, c});
  figure_->Unregister(a);
  DeleteCP(&first, a);
  figure_->Register(first);
  EXPECT_EQ(first, b);
  EXPECT_EQ(b->prev, c);
  EXPECT_EQ(c->next, b);
  EXPECT_TRUE(c->IsLoopEnd());
  EXPECT_FALSE(b->IsLoopEnd());
}

TEST_F(SplineTest, DeletingTheOnlyPointOfAClosedSplineEmptiesIt) {
  SegmentCP* a = At(0);
  SegmentCP* first = figure_->Closed({a});
  figure_->Unregister(a);
  DeleteCP(&first, a);
  EXPECT_EQ(first, nullptr);
}

TEST_F(SplineTest, DeletingAPointNotOnTheSplineChangesNothing) {
  SegmentCP* a = At(0);
  SegmentCP* b = At(1);
  SegmentCP* stranger = At(5);
  SegmentCP* first = figure_->Closed({a, b});
  figure_->Open({stranger});
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
  SegmentCP* a = figure_->NewCP(Vector(1, 2, 3));
  SegmentCP* b = figure_->NewCP(Vector(9, 9, 9));
  SegmentCP* c = figure_->NewCP(Vector(8, 8, 8));
  SegmentCP* first = figure_->Open({a});
  figure_->Unregister(a);
  figure_->Open({b});
  figure_->Open({c});
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
  SegmentCP* a = figure_->NewCP(Vector(1, 2, 3));
  SegmentCP* h = At(0, cpflag::hook);
  SegmentCP* c = figure_->NewCP(Vector(8, 8, 8));
  figure_->Open({a});
  SegmentCP* first = figure_->Open({h});
  figure_->Unregister(h);
  figure_->Open({c});
  TestFigure::Stack({a, h, c});
  EXPECT_TRUE(a->IsHasHooks());
  DeleteCP(&first, h);
  EXPECT_EQ(a->stackNext, c);
  EXPECT_EQ(c->stackPrev, a);
  EXPECT_FALSE(a->IsHasHooks());
  EXPECT_EQ(c->p == Vector(8, 8, 8), 1);  // only a removed top hands down p
}

TEST_F(SplineTest, DeleteAllFreesAClosedSplineOnceAndLeavesStacksValid) {
  SegmentCP* a = At(0);
  SegmentCP* b = At(1);
  SegmentCP* c = At(2);
  SegmentCP* other = At(1);
  SegmentCP* below = At(1);
  figure_->Closed({a, b, c});
  figure_->Unregister(a);
  figure_->Open({other});
  figure_->Open({below});
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
