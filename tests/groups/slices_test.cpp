// Slice lists, lookup, toggling a slice in a group, and reversal (through
// Figure::Reverse, which reverses with ReverseSlice) with the hook runs that
// ride on the reversed spline.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "figure_corpus.h"
#include "marrow/marrow.h"
#include "named_figure.h"
#include "splinecore/splinecore.h"
#include "test_figure.h"

namespace splinecore {
namespace {

using Refs = std::vector<std::string>;

using Named = test::NamedFigure;
using Runs = std::map<std::string, std::vector<std::pair<std::string, float>>>;

Refs Listed(Named& n, const GroupNode* list) {
  Refs out;
  for (; list != nullptr; list = list->next) out.push_back(n.Name(list->cp));
  return out;
}

// Each carrier's run, in run order, with each hook's s.
Runs RunsOf(const Named& n) {
  const FigureDescription d = n.f.Describe();
  Runs out;
  for (const HookDesc& h : d.hooks) {
    const float s = d.splines[static_cast<std::size_t>(h.hook.spline)].points[static_cast<std::size_t>(h.hook.index)].s;
    out[n.Name(h.carrier)].emplace_back(n.Name(h.hook), s);
  }
  return out;
}

TEST(Slices, AddAppendsEmptySlicesDeleteFreesOnlySlicesOfTheList) {
  const long live = MarrowLiveBlocks();
  Slice *list = nullptr, *other = nullptr;
  Slice* a = AddSlice(&list);
  Slice* b = AddSlice(&list);
  ASSERT_TRUE(a != nullptr && b != nullptr);
  EXPECT_TRUE(list == a && a->next == b && b->next == nullptr && b->first == nullptr);
  MarrowFailAfter(0);
  EXPECT_EQ(AddSlice(&list), nullptr);
  MarrowFailAfter(-1);
  EXPECT_EQ(b->next, nullptr);
  Slice* c = AddSlice(&list);
  Slice* stray = AddSlice(&other);
  DeleteSlice(&list, stray);  // not in the list: nothing changes, nothing freed
  EXPECT_EQ(MarrowLiveBlocks(), live + 4);
  DeleteSlice(&list, b);
  EXPECT_TRUE(list == a && a->next == c);
  DeleteSlice(&list, a);
  EXPECT_EQ(list, c);
  DeleteSlice(&list, c);
  DeleteSlice(&other, stray);
  EXPECT_TRUE(list == nullptr && other == nullptr);
  EXPECT_EQ(MarrowLiveBlocks(), live);
}

TEST(Slices, MatchSliceCPAndGroupSliceTogglingWholeStacks) {
  Named n(test::SharedFigure("sliced_stacks"));
  Slice* slices = nullptr;
  for (const char* first : {"", "q:1", "q:0", "p:0"}) AddSlice(&slices)->first = *first ? n[first] : nullptr;
  Slice* fromQ1 = slices->next;
  // A walk from q:1 stops after the loop's end: q:0 is not on it.
  EXPECT_EQ(MatchSliceCP(slices, n["q:2"]), fromQ1);
  EXPECT_EQ(MatchSliceCP(slices, n["q:0"]), fromQ1->next);
  EXPECT_EQ(MatchSliceCP(slices, n["p:2"]), fromQ1->next->next);
  EXPECT_EQ(MatchSliceCP(slices, n["loose:0"]), nullptr);
  EXPECT_EQ(MatchSliceCP(nullptr, n["p:0"]), nullptr);

  GroupNode* group = nullptr;
  const long live = MarrowLiveBlocks();
  GroupSlice(slices, n["p:1"], &group);  // the temporary marks are given back
  EXPECT_EQ(Listed(n, group), (Refs{"p:0", "p:1", "p:2"}));
  EXPECT_EQ(MarrowLiveBlocks(), live + 3);
  GroupSlice(slices, n["p:2"], &group);
  EXPECT_TRUE(group == nullptr && !n["p:0"]->IsGrouped() && !n["p:2"]->IsGrouped());
  // A stack with a grouped member leaves (s listed; t flagged, not listed),
  // one without enters through the slice's point.
  n["s:0"]->AddToGroup(&group, 1);
  n["t:0"]->OnGrouped();
  GroupSlice(slices, n["p:0"], &group);
  EXPECT_EQ(Listed(n, group), (Refs{"p:2"}));
  EXPECT_TRUE(n["t:0"]->IsGrouped() && !n["s:0"]->IsGrouped() && !n["p:1"]->IsGrouped());
  n["t:0"]->OffGrouped();
  n["p:2"]->DeleteFromGroup(&group);
  // Exempt points are skipped either way.
  n["q:1"]->OnExempt();
  GroupSlice(slices, n["q:0"], &group);
  EXPECT_EQ(Listed(n, group), (Refs{"q:0", "q:2", "q:3"}));
  n["q:1"]->AddToGroup(&group, 1);
  GroupSlice(slices, n["q:2"], &group);  // the slice from q:1
  EXPECT_EQ(Listed(n, group), (Refs{"q:0", "q:1"}));
  FreeGroup(&group);
  for (const char* ref : {"q:0", "q:1"}) n[ref]->OffGrouped();
  // The group is marked first, even without a slice; an unmarked listed
  // point is marked, so its stack counts as grouped and leaves.
  n["x:0"]->AddToGroupNoCheck(&group);
  n["p:0"]->AddToGroupNoCheck(&group);
  GroupSlice(slices, n["loose:0"], &group);
  EXPECT_EQ(Listed(n, group), (Refs{"p:0", "x:0"}));
  EXPECT_TRUE(n["x:0"]->IsGrouped() && n["p:0"]->IsGrouped());
  n["p:0"]->OffGrouped();
  GroupSlice(slices, n["p:1"], &group);
  EXPECT_EQ(Listed(n, group), (Refs{"x:0", "p:1", "p:2"}));
  FreeGroup(&group);
  while (slices != nullptr) DeleteSlice(&slices, slices);
  EXPECT_EQ(MarrowLiveBlocks(), live - 4);  // the four slices
}

TEST(Slices, ReversalHandsEachRunReversedAndMirroredToTheSegmentsNewCarrier) {
  // Open rail of four: the run of rail:i moves to the old rail:i+1, now
  // rail:2-i; s snapped (0.7 -> 0.75, 0.3 -> 0.25, 0.8 -> 0.75), then 1 - s.
  Named open(test::SharedFigure("hook_runs"));
  open.f.Reverse(open.f.FindSpline("rail"));
  EXPECT_EQ(RunsOf(open), (Runs{{"rail:2", {{"one:1", 0.5f}}},
                               {"rail:1", {{"two:2", 0.25f}, {"two:1", 0.75f}}},
                               {"rail:0", {{"three:3", 0.25f}, {"three:2", 0.5f}, {"three:1", 0.75f}}}}));
  // Closed a, b, c (old loop:0..2), now c, b, a: a's run [h 0.25, i 0.75]
  // goes to b (loop:1), b's [j] to c (loop:0), c's [k 0.3] to a (loop:2);
  // x, crossing a below the run, stays with a.
  // a's deltas are exchanged with their angles negated.
  Named closed(test::SharedFigure("closed_loop_with_runs"));
  closed.f.Reverse(0);
  EXPECT_EQ(RunsOf(closed), (Runs{{"loop:1", {{"i:0", 0.25f}, {"h:0", 0.75f}}},
                                 {"loop:0", {{"j:0", 0.5f}}},
                                 {"loop:2", {{"k:0", 0.75f}}}}));
  const PointDesc a = closed.f.Describe().splines[0].points[2];
  EXPECT_TRUE(a.in.pitch == -4.0f && a.in.yaw == 0.0f && std::signbit(a.in.yaw) && a.in.magnitude == 0.5f);
  EXPECT_TRUE(a.out.pitch == -1.5f && a.out.yaw == 2.0f && a.out.magnitude == 3.0f);
  EXPECT_TRUE(closed.f.Validate().empty());
  EXPECT_EQ(closed.f.Describe().stacks, (std::vector<std::vector<PointId>>{{{0, 2}, {5, 0}}}));
}

// Faults found by fuzzing: handing a run to a hook of the same run linked
// the stack into a cycle that SetHead walked for ever; such a run stays.
TEST(Slices, ReverseSliceRunOntoHookRegressions) {
  // S = c, k with k below D; reversing S makes k c's new prev: c's run [h]
  // hangs below k, on D's segment, mirrored.
  Named joins(test::SharedFigure("run_handed_to_a_hook"));
  joins.f.Reverse(1);
  EXPECT_EQ(RunsOf(joins), (Runs{{"T:0", {{"S:0", 0.5f}, {"W:1", 0.75f}}}}));
  EXPECT_TRUE(joins.f.Validate().empty());

  // Figures no description builds (a hook on a segment that ends at it),
  // from raw records. Closed A = a, h1 with h4, h3 below a; open B = b, h3,
  // h4 with h1 below b.
  test::TestFigure f;
  SegmentCP* a = f.NewCP(Vector(0, 0, 0));
  SegmentCP* b = f.NewCP(Vector(0, 4, 0));
  HookSegmentCP* h1 = f.NewHook(0.5f);
  HookSegmentCP* h3 = f.NewHook(0.25f);
  HookSegmentCP* h4 = f.NewHook(0.75f);
  f.Closed({a, h1});
  f.Open({b, h3, h4});
  test::TestFigure::Stack({a, h4, h3});
  test::TestFigure::Stack({b, h1});
  Slice sliceA{a, nullptr}, sliceB{b, nullptr};
  f.Unregister(a);
  f.Unregister(b);
  ReverseSlice(&sliceB);  // b's new prev is the hook h3: h1 hangs below it
  EXPECT_TRUE(b->stackNext == nullptr && h3->stackNext == h1 && h1->stackPrev == h3);
  ReverseSlice(&sliceA);  // a's new prev h1 is in a's run [h4, h3, h1]: kept, unmirrored
  EXPECT_TRUE(a->stackNext == h4 && h4->stackNext == h3 && h3->stackNext == h1 && h1->stackNext == nullptr);
  EXPECT_EQ(h4->s, 0.75f);
  SegmentCP* firsts[] = {sliceA.first, sliceB.first};
  EXPECT_EQ(ValidateFigure(firsts, 2, nullptr, nullptr), 0);
  f.Register(sliceA.first);
  f.Register(sliceB.first);

  // q0 -> q1 -> q2 with the hook q1 below q0: the run holding q1 stays.
  SegmentCP* q0 = f.NewCP(Vector(2, 1, 0));
  HookSegmentCP* q1 = f.NewHook(0.1f);
  f.Open({q0, q1, f.NewCP(Vector(1, 1, 0))});
  test::TestFigure::Stack({q0, q1});
  Slice sliceQ{q0, nullptr};
  f.Unregister(q0);
  ReverseSlice(&sliceQ);
  f.Register(sliceQ.first);
  EXPECT_TRUE(q0->stackNext == q1 && q1->stackNext == nullptr && q1->s == 0.1f);
  Slice none{nullptr, nullptr};
  ReverseSlice(&none);  // no spline: nothing to do
  ReverseSlice(nullptr);
}

}  // namespace
}  // namespace splinecore
