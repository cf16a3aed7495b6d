// Slice lists, lookup, toggling a slice in a group, and reversal with the
// hooks that ride on the reversed spline.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "figure_invariants.h"
#include "groups/reverse_hook_run.h"
#include "marrow/marrow.h"
#include "splinecore/splinecore.h"
#include "test_figure.h"

namespace splinecore {
namespace {

using test::ExpectFigureInvariants;
using test::TestFigure;

class SliceTest : public ::testing::Test {
 protected:
  void TearDown() override {
    FreeSlices();
    fig_.reset();
    EXPECT_EQ(MarrowLiveBlocks(), liveAtStart_);
  }

  void FreeSlices() {
    while (slices != nullptr) DeleteSlice(&slices, slices);
  }

  SegmentCP* P(float x = 0) { return f.NewCP(Vector(x, 0, 0)); }
  // A hook on a spline of its own (so the figure deletes it).
  HookSegmentCP* H(float s) {
    HookSegmentCP* h = f.NewHook(s);
    f.Open({h});
    return h;
  }

  // The group list as a vector, in list order.
  static std::vector<SegmentCP*> Listed(GroupNode* list) {
    std::vector<SegmentCP*> out;
    for (; list != nullptr; list = list->next) out.push_back(list->cp);
    return out;
  }

  // The stack below x, top to bottom, as a vector (x excluded).
  static std::vector<SegmentCP*> Below(SegmentCP* x) {
    std::vector<SegmentCP*> out;
    for (SegmentCP* m = x->stackNext; m != nullptr && out.size() < 100; m = m->stackNext) out.push_back(m);
    return out;
  }

  long liveAtStart_ = MarrowLiveBlocks();
  std::unique_ptr<TestFigure> fig_ = std::make_unique<TestFigure>();
  TestFigure& f = *fig_;
  GroupNode*& group = f.cache.groupList;
  Slice* slices = nullptr;
};

// --- The list -----------------------------------------------------------------

TEST_F(SliceTest, AddSliceAppendsEmptyRecords) {
  Slice* a = AddSlice(&slices);
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(slices, a);
  EXPECT_EQ(a->first, nullptr);
  EXPECT_EQ(a->next, nullptr);
  a->first = P();
  f.Open({a->first});

  Slice* b = AddSlice(&slices);
  EXPECT_EQ(slices, a);
  EXPECT_EQ(a->next, b);
  EXPECT_EQ(b->first, nullptr);
  EXPECT_EQ(b->next, nullptr);
  EXPECT_EQ(MarrowLiveBlocks(), liveAtStart_ + 2 + 1);  // two slices, one control point
}

TEST_F(SliceTest, AddSliceWithoutMemoryLeavesTheListAlone) {
  Slice* a = AddSlice(&slices);
  MarrowFailAfter(0);
  Slice* b = AddSlice(&slices);
  MarrowFailAfter(-1);
  EXPECT_EQ(b, nullptr);
  EXPECT_EQ(slices, a);
  EXPECT_EQ(a->next, nullptr);
}

TEST_F(SliceTest, DeleteSliceUnlinksAndFreesOnlySlicesOfTheList) {
  Slice* a = AddSlice(&slices);
  Slice* b = AddSlice(&slices);
  Slice* c = AddSlice(&slices);
  SegmentCP* cp = P();
  f.Open({cp});
  b->first = cp;
  const long live = MarrowLiveBlocks();

  DeleteSlice(&slices, b);
  EXPECT_EQ(slices, a);
  EXPECT_EQ(a->next, c);
  EXPECT_EQ(MarrowLiveBlocks(), live - 1);
  EXPECT_EQ(cp->stamp, 255);  // the control point is left alone

  Slice* other = nullptr;
  Slice* stray = AddSlice(&other);
  DeleteSlice(&slices, stray);
  EXPECT_EQ(slices, a);
  EXPECT_EQ(a->next, c);
  EXPECT_EQ(c->next, nullptr);
  EXPECT_EQ(MarrowLiveBlocks(), live);
  DeleteSlice(&other, stray);

  DeleteSlice(&slices, a);
  EXPECT_EQ(slices, c);
  DeleteSlice(&slices, c);
  EXPECT_EQ(slices, nullptr);
  EXPECT_EQ(MarrowLiveBlocks(), live - 3);
}

// --- Lookup -------------------------------------------------------------------

TEST_F(SliceTest, MatchSliceCPFindsTheFirstSliceWhoseWalkMeetsThePoint) {
  SegmentCP* a = P();
  SegmentCP* b = P();
  SegmentCP* c = P();
  SegmentCP* d = P();
  SegmentCP* e = P();
  f.Closed({a, b, c});
  f.Open({d, e});
  Slice* empty = AddSlice(&slices);
  Slice* fromB = AddSlice(&slices);
  Slice* fromA = AddSlice(&slices);
  Slice* open = AddSlice(&slices);
  fromB->first = b;  // walks b, c and stops after c's loopEnd: a is not on it
  fromA->first = a;
  open->first = d;

  EXPECT_EQ(MatchSliceCP(slices, b), fromB);
  EXPECT_EQ(MatchSliceCP(slices, c), fromB);
  EXPECT_EQ(MatchSliceCP(slices, a), fromA);
  EXPECT_EQ(MatchSliceCP(slices, e), open);
  SegmentCP* loose = P();
  f.Open({loose});
  EXPECT_EQ(MatchSliceCP(slices, loose), nullptr);
  EXPECT_EQ(MatchSliceCP(nullptr, a), nullptr);
  EXPECT_EQ(empty->first, nullptr);
}

// --- GroupSlice -----------------------------------------------------------------

TEST_F(SliceTest, GroupSliceAddsAnUngroupedOpenSliceInOrderThenRemovesIt) {
  SegmentCP* a = P();
  SegmentCP* b = P();
  SegmentCP* c = P();
  f.Open({a, b, c});
  AddSlice(&slices)->first = a;
  const long live = MarrowLiveBlocks();

  GroupSlice(slices, b, &group);
  EXPECT_EQ(Listed(group), (std::vector<SegmentCP*>{a, b, c}));
  for (SegmentCP* x : {a, b, c}) EXPECT_TRUE(x->IsGrouped());
  EXPECT_EQ(MarrowLiveBlocks(), live + 3);  // the temporary marks are given back

  GroupSlice(slices, c, &group);
  EXPECT_EQ(group, nullptr);
  for (SegmentCP* x : {a, b, c}) EXPECT_FALSE(x->IsGrouped());
  EXPECT_EQ(MarrowLiveBlocks(), live);
}

TEST_F(SliceTest, GroupSliceTogglesAClosedSliceOnceAroundAndSkipsExemptPoints) {
  SegmentCP* a = P();
  SegmentCP* b = P();
  SegmentCP* c = P();
  SegmentCP* d = P();
  f.Closed({a, b, c, d});
  b->OnExempt();
  AddSlice(&slices)->first = a;

  GroupSlice(slices, a, &group);
  EXPECT_EQ(Listed(group), (std::vector<SegmentCP*>{a, c, d}));
  EXPECT_FALSE(b->IsGrouped());

  // b in the group does not take it out: b is skipped on its own account.
  b->AddToGroup(&group, 1);
  GroupSlice(slices, c, &group);
  EXPECT_EQ(Listed(group), (std::vector<SegmentCP*>{b}));
  EXPECT_TRUE(b->IsGrouped());
  EXPECT_FALSE(a->IsGrouped());
}

TEST_F(SliceTest, GroupSliceTogglesWholeStacks) {
  // Slice a - b - c. a's stack [a, s]: s is listed. b's stack [t, b]: t carries
  // `grouped` without being listed. c's stack [c, u]: nothing grouped.
  SegmentCP* a = P();
  SegmentCP* b = P();
  SegmentCP* c = P();
  SegmentCP* s = P();
  SegmentCP* t = P();
  SegmentCP* u = P();
  f.Open({a, b, c});
  for (SegmentCP* x : {s, t, u}) f.Open({x});
  TestFigure::Stack({a, s});
  TestFigure::Stack({t, b});
  TestFigure::Stack({c, u});
  AddSlice(&slices)->first = a;
  s->AddToGroup(&group, 1);
  t->OnGrouped();

  GroupSlice(slices, a, &group);

  EXPECT_EQ(Listed(group), (std::vector<SegmentCP*>{c}));
  EXPECT_FALSE(s->IsGrouped());
  EXPECT_FALSE(a->IsGrouped());
  EXPECT_TRUE(t->IsGrouped());  // not listed: nothing removed, b not added
  EXPECT_FALSE(b->IsGrouped());
  EXPECT_TRUE(c->IsGrouped());
  EXPECT_FALSE(u->IsGrouped());
}

TEST_F(SliceTest, GroupSliceMarksTheGroupFirstEvenWithoutAMatchingSlice) {
  SegmentCP* a = P();
  SegmentCP* b = P();
  SegmentCP* x = P();
  SegmentCP* loose = P();
  f.Open({a, b});
  f.Open({x});
  f.Open({loose});
  AddSlice(&slices)->first = a;
  x->AddToGroupNoCheck(&group);
  a->AddToGroupNoCheck(&group);  // listed without the flag
  const long live = MarrowLiveBlocks();

  GroupSlice(slices, loose, &group);
  EXPECT_TRUE(x->IsGrouped());
  EXPECT_TRUE(a->IsGrouped());
  EXPECT_EQ(Listed(group), (std::vector<SegmentCP*>{a, x}));
  EXPECT_EQ(MarrowLiveBlocks(), live);

  // a is listed but unmarked again: the marking makes its stack count as
  // grouped, so it leaves, while b's stack enters.
  a->OffGrouped();
  GroupSlice(slices, b, &group);
  EXPECT_EQ(Listed(group), (std::vector<SegmentCP*>{x, b}));
  EXPECT_FALSE(a->IsGrouped());
  EXPECT_TRUE(b->IsGrouped());
}

// --- ReverseSlice: links, deltas, touching --------------------------------------

TEST_F(SliceTest, ReverseSliceReversesAnOpenSpline) {
  SegmentCP* a = P();
  SegmentCP* b = P();
  SegmentCP* c = P();
  f.Open({a, b, c});
  Slice* slice = AddSlice(&slices);
  slice->first = a;

  ReverseSlice(slice);

  EXPECT_EQ(slice->first, c);
  EXPECT_EQ(c->prev, nullptr);
  EXPECT_EQ(c->next, b);
  EXPECT_EQ(b->prev, c);
  EXPECT_EQ(b->next, a);
  EXPECT_EQ(a->prev, b);
  EXPECT_EQ(a->next, nullptr);
  for (SegmentCP* x : {a, b, c}) EXPECT_FALSE(x->IsLoopEnd());
  f.Unregister(a);
  f.Register(c);
  ExpectFigureInvariants({c});
}

TEST_F(SliceTest, ReverseSliceMovesLoopEndToTheFormerFirstPoint) {
  SegmentCP* a = P();
  SegmentCP* b = P();
  SegmentCP* c = P();
  SegmentCP* d = P();
  f.Closed({a, b, c, d});
  Slice* slice = AddSlice(&slices);
  slice->first = a;

  ReverseSlice(slice);

  EXPECT_EQ(slice->first, d);
  EXPECT_EQ(d->next, c);
  EXPECT_EQ(c->next, b);
  EXPECT_EQ(b->next, a);
  EXPECT_EQ(a->next, d);
  EXPECT_EQ(d->prev, a);
  EXPECT_TRUE(a->IsLoopEnd());
  EXPECT_FALSE(d->IsLoopEnd());
  f.Unregister(a);
  f.Register(d);
  ExpectFigureInvariants({d});
}

TEST_F(SliceTest, ReverseSliceExchangesDeltasNegatingTheAngles) {
  SegmentCP* a = P();
  SegmentCP* b = P();
  f.Open({a, b});
  a->indelta = {1.5f, -2.0f, 3.0f};
  a->outdelta = {4.0f, 0.0f, 0.5f};
  Slice* slice = AddSlice(&slices);
  slice->first = a;

  ReverseSlice(slice);

  EXPECT_EQ(a->indelta.pitch, -4.0f);
  EXPECT_TRUE(std::signbit(a->indelta.yaw));  // -0: the angle is negated
  EXPECT_EQ(a->indelta.magnitude, 0.5f);
  EXPECT_EQ(a->outdelta.pitch, -1.5f);
  EXPECT_EQ(a->outdelta.yaw, 2.0f);
  EXPECT_EQ(a->outdelta.magnitude, 3.0f);
  f.Unregister(a);
  f.Register(b);
}

TEST_F(SliceTest, ReverseSliceTouchesEveryPointOnceWithModeZeroAndNoHook) {
  SegmentCP* a = P();
  SegmentCP* b = P();
  SegmentCP* c = P();
  f.Closed({a, b, c});
  HookSegmentCP* h = H(0.5f);
  TestFigure::Stack({b, h});
  for (SegmentCP* x : {a, b, c, static_cast<SegmentCP*>(h)}) {
    x->stamp = 7;
    x->screenStamp = 0;
    x->flags |= cpflag::converted | cpflag::mconverted | cpflag::mpCached;
  }
  a->OnTouched();
  Slice* slice = AddSlice(&slices);
  slice->first = a;

  ReverseSlice(slice);

  for (SegmentCP* x : {a, b, c}) {
    EXPECT_EQ(x->stamp, 6);
    EXPECT_EQ(x->screenStamp, 255);
    EXPECT_FALSE(x->IsConverted());
    EXPECT_FALSE(x->IsMconverted());
  }
  EXPECT_TRUE(a->IsTouched());
  EXPECT_FALSE(b->IsTouched());
  EXPECT_EQ(h->stamp, 7);
  EXPECT_TRUE(h->IsConverted());
  f.Unregister(a);
  f.Register(slice->first);
}

TEST_F(SliceTest, ReverseSliceLeavesAnEmptyOrMissingSliceAlone) {
  Slice* slice = AddSlice(&slices);
  ReverseSlice(slice);
  ReverseSlice(nullptr);
  EXPECT_EQ(slice->first, nullptr);
}

// --- ReverseSlice: hooks ----------------------------------------------------------

TEST_F(SliceTest, ReverseHookRunSwapsLinksMirrorsSAndMovesLastHook) {
  SegmentCP* c = P();
  SegmentCP* n = P();
  SegmentCP* below = P();
  f.Open({c, n});
  f.Open({below});
  HookSegmentCP* r1 = H(0.3f);
  HookSegmentCP* r2 = H(0.5f);
  HookSegmentCP* r3 = H(0.7f);
  TestFigure::Stack({c, r1, r2, r3, below});

  SegmentCP* last = ReverseHookRun(r1);

  EXPECT_EQ(last, r3);
  EXPECT_EQ(r1->stackNext, c);
  EXPECT_EQ(r1->stackPrev, r2);
  EXPECT_EQ(r2->stackNext, r1);
  EXPECT_EQ(r2->stackPrev, r3);
  EXPECT_EQ(r3->stackNext, r2);
  EXPECT_EQ(r3->stackPrev, below);
  EXPECT_EQ(r1->s, 0.75f);
  EXPECT_EQ(r2->s, 0.5f);
  EXPECT_EQ(r3->s, 0.25f);
  EXPECT_TRUE(r1->IsLastHook());
  EXPECT_FALSE(r3->IsLastHook());

  // Put the stack back in order for teardown: [c, r3, r2, r1, below].
  c->stackNext = r3;
  r3->stackPrev = c;
  r1->stackNext = below;
  below->stackPrev = r1;
  c->SetHead();
  ExpectFigureInvariants({c, below});
}

TEST_F(SliceTest, ReverseSliceHandsEachRunToTheFormerNextOnAnOpenSpline) {
  // Open a - b - c - d. a carries [a1 0.3, a2 0.5] with e below; b carries
  // [b1 0.75] with g below; c carries [c1 0.25]. d carries nothing.
  SegmentCP* a = P();
  SegmentCP* b = P();
  SegmentCP* c = P();
  SegmentCP* d = P();
  SegmentCP* e = P();
  SegmentCP* g = P();
  f.Open({a, b, c, d});
  f.Open({e});
  f.Open({g});
  HookSegmentCP* a1 = H(0.3f);
  HookSegmentCP* a2 = H(0.5f);
  HookSegmentCP* b1 = H(0.75f);
  HookSegmentCP* c1 = H(0.25f);
  TestFigure::Stack({a, a1, a2, e});
  TestFigure::Stack({b, b1, g});
  TestFigure::Stack({c, c1});
  Slice* slice = AddSlice(&slices);
  slice->first = a;

  ReverseSlice(slice);
  f.Unregister(a);
  f.Register(d);

  EXPECT_EQ(Below(a), (std::vector<SegmentCP*>{e}));
  EXPECT_EQ(Below(b), (std::vector<SegmentCP*>{a2, a1, g}));
  EXPECT_EQ(Below(c), (std::vector<SegmentCP*>{b1}));
  EXPECT_EQ(Below(d), (std::vector<SegmentCP*>{c1}));
  EXPECT_EQ(a1->s, 0.75f);
  EXPECT_EQ(a2->s, 0.5f);
  EXPECT_EQ(b1->s, 0.25f);
  EXPECT_EQ(c1->s, 0.75f);
  EXPECT_FALSE(a->IsHasHooks());
  for (SegmentCP* x : {b, c, d}) EXPECT_TRUE(x->IsHasHooks());
  EXPECT_TRUE(a1->IsLastHook());
  EXPECT_FALSE(a2->IsLastHook());
  EXPECT_FALSE(b1->IsLastHook());  // bottom of its stack
  EXPECT_EQ(e->head, a);
  EXPECT_EQ(g->head, b);
  ExpectFigureInvariants({d, e, g, a1, a2, b1, c1});
}

TEST_F(SliceTest, ReverseSliceHandsEveryRunOnceAroundAClosedSpline) {
  // Closed a - b - c (c ends the loop); a carries [a1 0.25, a2 0.75], b
  // carries [b1 0.5], c carries the closing segment's run [c1 0.3].
  SegmentCP* a = P();
  SegmentCP* b = P();
  SegmentCP* c = P();
  f.Closed({a, b, c});
  HookSegmentCP* a1 = H(0.25f);
  HookSegmentCP* a2 = H(0.75f);
  HookSegmentCP* b1 = H(0.5f);
  HookSegmentCP* c1 = H(0.3f);
  TestFigure::Stack({a, a1, a2});
  TestFigure::Stack({b, b1});
  TestFigure::Stack({c, c1});
  Slice* slice = AddSlice(&slices);
  slice->first = a;

  ReverseSlice(slice);
  f.Unregister(a);
  f.Register(c);

  // New order c - b - a, a ends the loop. Segment a-b is now b's, b-c is
  // c's and the closing segment c-a is a's.
  EXPECT_EQ(slice->first, c);
  EXPECT_EQ(Below(b), (std::vector<SegmentCP*>{a2, a1}));
  EXPECT_EQ(Below(c), (std::vector<SegmentCP*>{b1}));
  EXPECT_EQ(Below(a), (std::vector<SegmentCP*>{c1}));
  EXPECT_EQ(a1->s, 0.75f);
  EXPECT_EQ(a2->s, 0.25f);
  EXPECT_EQ(b1->s, 0.5f);
  EXPECT_EQ(c1->s, 0.75f);
  for (SegmentCP* x : {a, b, c}) EXPECT_TRUE(x->IsHasHooks());
  for (SegmentCP* h : {a1, a2, b1, c1}) EXPECT_FALSE(h->IsLastHook());
  ExpectFigureInvariants({c, a1, a2, b1, c1});
}

TEST_F(SliceTest, ReverseSliceTwiceRestoresLinksDeltasAndRunsWithSnappedS) {
  // Closed a - b - c - d, runs on every segment, a non-hook below one run.
  SegmentCP* a = P();
  SegmentCP* b = P();
  SegmentCP* c = P();
  SegmentCP* d = P();
  SegmentCP* e = P();
  f.Closed({a, b, c, d});
  f.Open({e});
  HookSegmentCP* a1 = H(0.3f);
  HookSegmentCP* a2 = H(0.9f);
  HookSegmentCP* b1 = H(0.5f);
  HookSegmentCP* c1 = H(-1.0f);
  HookSegmentCP* d1 = H(0.6f);
  TestFigure::Stack({a, a1, a2, e});
  TestFigure::Stack({b, b1});
  TestFigure::Stack({c, c1});
  TestFigure::Stack({d, d1});
  a->indelta = {10, 20, 2};
  a->outdelta = {-30, 40, 0.5f};
  Slice* slice = AddSlice(&slices);
  slice->first = a;

  ReverseSlice(slice);
  ExpectFigureInvariants({slice->first, e});
  ReverseSlice(slice);

  EXPECT_EQ(slice->first, a);
  EXPECT_EQ(a->next, b);
  EXPECT_EQ(b->next, c);
  EXPECT_EQ(c->next, d);
  EXPECT_EQ(d->next, a);
  EXPECT_EQ(a->prev, d);
  EXPECT_TRUE(d->IsLoopEnd());
  EXPECT_FALSE(a->IsLoopEnd());
  EXPECT_EQ(a->indelta.pitch, 10.0f);
  EXPECT_EQ(a->indelta.yaw, 20.0f);
  EXPECT_EQ(a->indelta.magnitude, 2.0f);
  EXPECT_EQ(a->outdelta.pitch, -30.0f);
  EXPECT_EQ(a->outdelta.yaw, 40.0f);
  EXPECT_EQ(a->outdelta.magnitude, 0.5f);
  EXPECT_EQ(Below(a), (std::vector<SegmentCP*>{a1, a2, e}));
  EXPECT_EQ(Below(b), (std::vector<SegmentCP*>{b1}));
  EXPECT_EQ(Below(c), (std::vector<SegmentCP*>{c1}));
  EXPECT_EQ(Below(d), (std::vector<SegmentCP*>{d1}));
  EXPECT_EQ(a1->s, 0.25f);
  EXPECT_EQ(a2->s, 0.75f);
  EXPECT_EQ(b1->s, 0.5f);
  EXPECT_EQ(c1->s, 0.25f);
  EXPECT_EQ(d1->s, 0.5f);
  EXPECT_TRUE(a2->IsLastHook());
  ExpectFigureInvariants({a, e});
}

TEST_F(SliceTest, ReverseSliceOfASinglePointLoopReversesItsRunInPlace) {
  SegmentCP* a = P();
  f.Closed({a});
  HookSegmentCP* h1 = H(0.25f);
  HookSegmentCP* h2 = H(0.5f);
  TestFigure::Stack({a, h1, h2});
  Slice* slice = AddSlice(&slices);
  slice->first = a;

  ReverseSlice(slice);

  EXPECT_EQ(a->next, a);
  EXPECT_EQ(a->prev, a);
  EXPECT_TRUE(a->IsLoopEnd());
  EXPECT_EQ(Below(a), (std::vector<SegmentCP*>{h2, h1}));
  EXPECT_EQ(h1->s, 0.75f);
  ExpectFigureInvariants({a, h1, h2});
}

TEST_F(SliceTest, ReverseSliceLeavesARunUnderACarrierWithoutPrevWhereItIs) {
  // Hooks under the last point of an open spline have no segment; after
  // reversal that point is first and keeps its run as it was.
  SegmentCP* a = P();
  SegmentCP* b = P();
  f.Open({a, b});
  HookSegmentCP* h1 = H(0.3f);
  HookSegmentCP* h2 = H(0.75f);
  TestFigure::Stack({b, h1, h2});
  Slice* slice = AddSlice(&slices);
  slice->first = a;

  ReverseSlice(slice);
  f.Unregister(a);
  f.Register(b);

  EXPECT_EQ(Below(b), (std::vector<SegmentCP*>{h1, h2}));
  EXPECT_EQ(Below(a), (std::vector<SegmentCP*>{}));
  EXPECT_EQ(h1->s, 0.3f);
  EXPECT_EQ(h2->s, 0.75f);
  EXPECT_TRUE(b->IsHasHooks());
  ExpectFigureInvariants({b, h1, h2});
}

}  // namespace
}  // namespace splinecore
