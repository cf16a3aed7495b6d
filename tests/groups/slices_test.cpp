// Slice lists, lookup, toggling a slice in a group, and reversal with the
// hooks that ride on the reversed spline.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "figure_invariants.h"
#include "figure_test.h"
#include "groups/reverse_hook_run.h"
#include "splinecore/splinecore.h"

namespace splinecore::detail {
namespace {

using test::ExpectDelta;
using test::ExpectFigureInvariants;
using test::Listed;
using test::TestFigure;
using CPs = std::vector<SegmentCP*>;

class SliceTest : public test::FigureTest {
 protected:
  void TearDown() override {
    while (slices != nullptr) DeleteSlice(&slices, slices);
    FigureTest::TearDown();
  }
  // Hooks with the given s, each on a spline of its own (so the figure deletes it).
  template <std::size_t N>
  std::array<HookSegmentCP*, N> Hs(const float (&s)[N]) {
    std::array<HookSegmentCP*, N> out;
    for (std::size_t i = 0; i < N; ++i) f.Open({out[i] = f.NewHook(s[i])});
    return out;
  }
  Slice* SliceFrom(SegmentCP* first) {
    Slice* slice = AddSlice(&slices);
    slice->first = first;
    return slice;
  }
  // ReverseSlice, then the figure deletes the spline from its new first point.
  void Reverse(Slice* slice) {
    f.Unregister(slice->first);
    ReverseSlice(slice);
    f.Register(slice->first);
  }

  // The stack below x, top to bottom (x excluded).
  static CPs Below(SegmentCP* x) {
    CPs out;
    for (SegmentCP* m = x->stackNext; m != nullptr && out.size() < 100; m = m->stackNext) out.push_back(m);
    return out;
  }
  // The spline runs through `order` (a closed one back to the first) with
  // mutual links and loopEnd on a closed spline's last point only.
  static void ExpectSpline(const CPs& order, bool closed) {
    const std::size_t n = order.size();
    for (std::size_t i = 0; i < n; ++i) {
      SCOPED_TRACE(::testing::Message() << "position " << i);
      SegmentCP* next = i + 1 < n ? order[i + 1] : closed ? order[0] : nullptr;
      EXPECT_EQ(order[i]->next, next);
      if (next != nullptr) {
        EXPECT_EQ(next->prev, order[i]);
      }
      EXPECT_EQ(order[i]->IsLoopEnd() != 0, closed && i + 1 == n);
    }
    EXPECT_TRUE(closed || order[0]->prev == nullptr);
  }
  static void ExpectS(std::initializer_list<std::pair<HookSegmentCP*, float>> expected) {
    for (const auto& [h, s] : expected) EXPECT_EQ(h->s, s) << "hook made with " << h;
  }

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
  a->first = Ps<1>()[0];
  f.Open({a->first});
  Slice* b = AddSlice(&slices);
  EXPECT_EQ(slices, a);
  EXPECT_EQ(a->next, b);
  EXPECT_EQ(b->first, nullptr);
  EXPECT_EQ(b->next, nullptr);
  EXPECT_EQ(MarrowLiveBlocks(), live_ + 2 + 1);  // two slices, one control point
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
  SegmentCP* cp = Ps<1>()[0];
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
  auto [a, b, c, d, e, loose] = Ps<6>();
  f.Closed({a, b, c});
  f.Open({d, e});
  f.Open({loose});
  Slice* empty = SliceFrom(nullptr);
  Slice* fromB = SliceFrom(b);  // walks b, c and stops after c's loopEnd: a is not on it
  Slice* fromA = SliceFrom(a);
  Slice* open = SliceFrom(d);
  EXPECT_EQ(MatchSliceCP(slices, b), fromB);
  EXPECT_EQ(MatchSliceCP(slices, c), fromB);
  EXPECT_EQ(MatchSliceCP(slices, a), fromA);
  EXPECT_EQ(MatchSliceCP(slices, e), open);
  EXPECT_EQ(MatchSliceCP(slices, loose), nullptr);
  EXPECT_EQ(MatchSliceCP(nullptr, a), nullptr);
  EXPECT_EQ(empty->first, nullptr);
}

// --- GroupSlice -----------------------------------------------------------------

TEST_F(SliceTest, GroupSliceAddsAnUngroupedOpenSliceInOrderThenRemovesIt) {
  auto [a, b, c] = Ps<3>();
  f.Open({a, b, c});
  SliceFrom(a);
  const long live = MarrowLiveBlocks();

  GroupSlice(slices, b, &group);
  EXPECT_EQ(Listed(group), (CPs{a, b, c}));
  for (SegmentCP* x : {a, b, c}) EXPECT_TRUE(x->IsGrouped());
  EXPECT_EQ(MarrowLiveBlocks(), live + 3);  // the temporary marks are given back

  GroupSlice(slices, c, &group);
  EXPECT_EQ(group, nullptr);
  for (SegmentCP* x : {a, b, c}) EXPECT_FALSE(x->IsGrouped());
  EXPECT_EQ(MarrowLiveBlocks(), live);
}

TEST_F(SliceTest, GroupSliceTogglesAClosedSliceOnceAroundAndSkipsExemptPoints) {
  auto [a, b, c, d] = Ps<4>();
  f.Closed({a, b, c, d});
  b->OnExempt();
  SliceFrom(a);
  GroupSlice(slices, a, &group);
  EXPECT_EQ(Listed(group), (CPs{a, c, d}));
  EXPECT_FALSE(b->IsGrouped());

  // b in the group does not take it out: b is skipped on its own account.
  b->AddToGroup(&group, 1);
  GroupSlice(slices, c, &group);
  EXPECT_EQ(Listed(group), (CPs{b}));
  EXPECT_TRUE(b->IsGrouped());
  EXPECT_FALSE(a->IsGrouped());
}

TEST_F(SliceTest, GroupSliceTogglesWholeStacks) {
  // Slice a - b - c. a's stack [a, s]: s is listed. b's stack [t, b]: t carries
  // `grouped` without being listed. c's stack [c, u]: nothing grouped.
  auto [a, b, c, s, t, u] = Ps<6>();
  f.Open({a, b, c});
  for (SegmentCP* x : {s, t, u}) f.Open({x});
  TestFigure::Stack({a, s});
  TestFigure::Stack({t, b});
  TestFigure::Stack({c, u});
  SliceFrom(a);
  s->AddToGroup(&group, 1);
  t->OnGrouped();

  GroupSlice(slices, a, &group);
  EXPECT_EQ(Listed(group), (CPs{c}));
  EXPECT_TRUE(t->IsGrouped());  // not listed: nothing removed, b not added
  EXPECT_TRUE(c->IsGrouped());
  for (SegmentCP* x : {s, a, b, u}) EXPECT_FALSE(x->IsGrouped());
}

TEST_F(SliceTest, GroupSliceMarksTheGroupFirstEvenWithoutAMatchingSlice) {
  auto [a, b, x, loose] = Ps<4>();
  f.Open({a, b});
  f.Open({x});
  f.Open({loose});
  SliceFrom(a);
  x->AddToGroupNoCheck(&group);
  a->AddToGroupNoCheck(&group);  // listed without the flag
  const long live = MarrowLiveBlocks();

  GroupSlice(slices, loose, &group);
  EXPECT_TRUE(x->IsGrouped());
  EXPECT_TRUE(a->IsGrouped());
  EXPECT_EQ(Listed(group), (CPs{a, x}));
  EXPECT_EQ(MarrowLiveBlocks(), live);

  // a is listed but unmarked again: the marking makes its stack count as
  // grouped, so it leaves, while b's stack enters.
  a->OffGrouped();
  GroupSlice(slices, b, &group);
  EXPECT_EQ(Listed(group), (CPs{x, b}));
  EXPECT_FALSE(a->IsGrouped());
  EXPECT_TRUE(b->IsGrouped());
}

// --- ReverseSlice: links, deltas, touching --------------------------------------

TEST_F(SliceTest, ReverseSliceReversesAnOpenSplineExchangingDeltasWithNegatedAngles) {
  auto [a, b, c] = Ps<3>();
  f.Open({a, b, c});
  a->indelta = {1.5f, -2.0f, 3.0f};
  a->outdelta = {4.0f, 0.0f, 0.5f};
  Slice* slice = SliceFrom(a);
  Reverse(slice);
  EXPECT_EQ(slice->first, c);
  ExpectSpline({c, b, a}, false);
  ExpectDelta(a->indelta, -4.0f, 0.0f, 0.5f);
  EXPECT_TRUE(std::signbit(a->indelta.yaw));  // -0: the angle is negated
  ExpectDelta(a->outdelta, -1.5f, 2.0f, 3.0f);
  ExpectFigureInvariants({c});
}

TEST_F(SliceTest, ReverseSliceMovesLoopEndToTheFormerFirstPoint) {
  auto [a, b, c, d] = Ps<4>();
  f.Closed({a, b, c, d});
  Slice* slice = SliceFrom(a);
  Reverse(slice);
  EXPECT_EQ(slice->first, d);
  ExpectSpline({d, c, b, a}, true);
  ExpectFigureInvariants({d});
}

TEST_F(SliceTest, ReverseSliceTouchesEveryPointOnceWithModeZeroAndNoHook) {
  auto [a, b, c] = Ps<3>();
  f.Closed({a, b, c});
  auto [h] = Hs({0.5f});
  TestFigure::Stack({b, h});
  for (SegmentCP* x : {a, b, c, static_cast<SegmentCP*>(h)}) {
    x->stamp = 7;
    x->screenStamp = 0;
    x->flags |= cpflag::converted | cpflag::mconverted | cpflag::mpCached;
  }
  a->OnTouched();
  Reverse(SliceFrom(a));
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
}

TEST_F(SliceTest, ReverseSliceLeavesAnEmptyOrMissingSliceAlone) {
  Slice* slice = AddSlice(&slices);
  ReverseSlice(slice);
  ReverseSlice(nullptr);
  EXPECT_EQ(slice->first, nullptr);
}

// --- ReverseSlice: hooks ----------------------------------------------------------

TEST_F(SliceTest, ReverseHookRunSwapsLinksMirrorsSAndMovesLastHook) {
  auto [c, n, below] = Ps<3>();
  f.Open({c, n});
  f.Open({below});
  auto [r1, r2, r3] = Hs({0.3f, 0.5f, 0.7f});
  TestFigure::Stack({c, r1, r2, r3, below});

  EXPECT_EQ(ReverseHookRun(r1), r3);
  EXPECT_EQ(r1->stackNext, c);
  EXPECT_EQ(r1->stackPrev, r2);
  EXPECT_EQ(r2->stackNext, r1);
  EXPECT_EQ(r2->stackPrev, r3);
  EXPECT_EQ(r3->stackNext, r2);
  EXPECT_EQ(r3->stackPrev, below);
  ExpectS({{r1, 0.75f}, {r2, 0.5f}, {r3, 0.25f}});
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
  auto [a, b, c, d, e, g] = Ps<6>();
  f.Open({a, b, c, d});
  f.Open({e});
  f.Open({g});
  auto [a1, a2, b1, c1] = Hs({0.3f, 0.5f, 0.75f, 0.25f});
  TestFigure::Stack({a, a1, a2, e});
  TestFigure::Stack({b, b1, g});
  TestFigure::Stack({c, c1});
  Reverse(SliceFrom(a));

  EXPECT_EQ(Below(a), (CPs{e}));
  EXPECT_EQ(Below(b), (CPs{a2, a1, g}));
  EXPECT_EQ(Below(c), (CPs{b1}));
  EXPECT_EQ(Below(d), (CPs{c1}));
  ExpectS({{a1, 0.75f}, {a2, 0.5f}, {b1, 0.25f}, {c1, 0.75f}});
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
  auto [a, b, c] = Ps<3>();
  f.Closed({a, b, c});
  auto [a1, a2, b1, c1] = Hs({0.25f, 0.75f, 0.5f, 0.3f});
  TestFigure::Stack({a, a1, a2});
  TestFigure::Stack({b, b1});
  TestFigure::Stack({c, c1});
  Slice* slice = SliceFrom(a);
  Reverse(slice);

  // New order c - b - a, a ends the loop. Segment a-b is now b's, b-c is
  // c's and the closing segment c-a is a's.
  EXPECT_EQ(slice->first, c);
  EXPECT_EQ(Below(b), (CPs{a2, a1}));
  EXPECT_EQ(Below(c), (CPs{b1}));
  EXPECT_EQ(Below(a), (CPs{c1}));
  ExpectS({{a1, 0.75f}, {a2, 0.25f}, {b1, 0.5f}, {c1, 0.75f}});
  for (SegmentCP* x : {a, b, c}) EXPECT_TRUE(x->IsHasHooks());
  for (HookSegmentCP* h : {a1, a2, b1, c1}) EXPECT_FALSE(h->IsLastHook());
  ExpectFigureInvariants({c, a1, a2, b1, c1});
}

TEST_F(SliceTest, ReverseSliceTwiceRestoresLinksDeltasAndRunsWithSnappedS) {
  // Closed a - b - c - d, runs on every segment, a non-hook below one run.
  auto [a, b, c, d, e] = Ps<5>();
  f.Closed({a, b, c, d});
  f.Open({e});
  auto [a1, a2, b1, c1, d1] = Hs({0.3f, 0.9f, 0.5f, -1.0f, 0.6f});
  TestFigure::Stack({a, a1, a2, e});
  TestFigure::Stack({b, b1});
  TestFigure::Stack({c, c1});
  TestFigure::Stack({d, d1});
  a->indelta = {10, 20, 2};
  a->outdelta = {-30, 40, 0.5f};
  Slice* slice = SliceFrom(a);

  Reverse(slice);
  ExpectFigureInvariants({slice->first, e});
  Reverse(slice);

  EXPECT_EQ(slice->first, a);
  ExpectSpline({a, b, c, d}, true);
  ExpectDelta(a->indelta, 10, 20, 2);
  ExpectDelta(a->outdelta, -30, 40, 0.5f);
  EXPECT_EQ(Below(a), (CPs{a1, a2, e}));
  EXPECT_EQ(Below(b), (CPs{b1}));
  EXPECT_EQ(Below(c), (CPs{c1}));
  EXPECT_EQ(Below(d), (CPs{d1}));
  ExpectS({{a1, 0.25f}, {a2, 0.75f}, {b1, 0.5f}, {c1, 0.25f}, {d1, 0.5f}});
  EXPECT_TRUE(a2->IsLastHook());
  ExpectFigureInvariants({a, e});
}

TEST_F(SliceTest, ReverseSliceOfASinglePointLoopReversesItsRunInPlace) {
  SegmentCP* a = Ps<1>()[0];
  f.Closed({a});
  auto [h1, h2] = Hs({0.25f, 0.5f});
  TestFigure::Stack({a, h1, h2});
  Reverse(SliceFrom(a));
  ExpectSpline({a}, true);
  EXPECT_EQ(Below(a), (CPs{h2, h1}));
  EXPECT_EQ(h1->s, 0.75f);
  ExpectFigureInvariants({a, h1, h2});
}

TEST_F(SliceTest, ReverseSliceLeavesARunUnderACarrierWithoutPrevWhereItIs) {
  // Hooks under the last point of an open spline have no segment; after
  // reversal that point is first and keeps its run as it was.
  auto [a, b] = Ps<2>();
  f.Open({a, b});
  auto [h1, h2] = Hs({0.3f, 0.75f});
  TestFigure::Stack({b, h1, h2});
  Reverse(SliceFrom(a));
  EXPECT_EQ(Below(b), (CPs{h1, h2}));
  EXPECT_EQ(Below(a), (CPs{}));
  ExpectS({{h1, 0.3f}, {h2, 0.75f}});
  EXPECT_TRUE(b->IsHasHooks());
  ExpectFigureInvariants({b, h1, h2});
}

}  // namespace
}  // namespace splinecore::detail
