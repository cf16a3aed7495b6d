// Fault found by fuzzing: ReverseSlice handed a carrier's run to the
// carrier's former next even when that point is itself a hook. When the hook
// belonged to the run, the run was hung below one of its own hooks and the
// stack became a cycle that SetHead walked for ever; otherwise the run took
// the other run's carrier, and a later reversal made the cycle. Hooks carry
// no runs, so such a run now stays where it is: the reversal returns, the
// stacks stay acyclic, and the validator reports the carrier left without a
// next (a figure that cannot be reversed into a valid one).
#include <set>
#include <vector>

#include <gtest/gtest.h>

#include "test_figure.h"

namespace splinecore {
namespace {

using test::TestFigure;

// The rules ValidateFigure reports for the given splines.
std::set<FigureRule> Rules(std::initializer_list<SegmentCP*> firsts) {
  std::set<FigureRule> rules;
  std::vector<SegmentCP*> list(firsts);
  ValidateFigure(
      list.data(), static_cast<int>(list.size()),
      [](const FigureViolation& v, void* out) { static_cast<std::set<FigureRule>*>(out)->insert(v.rule); },
      &rules);
  return rules;
}

TEST(ReverseSliceRunOntoHook, SecondReversalReturnsWithAcyclicStacks) {
  // Closed spline a -> h1 and open spline b -> h3 -> h4; h4 and h3 hang
  // below a (on segment a -> h1), h1 below b (on segment b -> h3).
  TestFigure f;
  SegmentCP* a = f.NewCP(Vector(0, 0, 0));
  HookSegmentCP* h1 = f.NewHook(0.5f);
  SegmentCP* b = f.NewCP(Vector(0, 4, 0));
  HookSegmentCP* h3 = f.NewHook(0.25f);
  HookSegmentCP* h4 = f.NewHook(0.75f);
  f.Closed({a, h1});
  f.Open({b, h3, h4});
  TestFigure::Stack({a, h4, h3});
  TestFigure::Stack({b, h1});
  Slice* list = nullptr;
  Slice* first = AddSlice(&list);
  first->first = a;
  Slice* second = AddSlice(&list);
  second->first = b;

  ReverseSlice(second);  // b's new prev is the hook h3: b keeps [h1]
  ReverseSlice(first);   // a's new prev is the hook h1: a keeps [h4, h3]
  EXPECT_EQ(b->stackNext, h1);
  EXPECT_EQ(h1->stackPrev, b);
  EXPECT_EQ(a->stackNext, h4);
  EXPECT_EQ(h3->stackNext, nullptr);
  // b now ends its spline while carrying a run: only that is reported.
  EXPECT_EQ(Rules({first->first, second->first}), std::set<FigureRule>{FigureRule::kHookCarrier});

  f.Unregister(a);
  f.Unregister(b);
  f.Register(first->first);
  f.Register(second->first);
  while (list != nullptr) DeleteSlice(&list, list);
}

TEST(ReverseSliceRunOntoHook, CarrierWhoseNextIsItsOwnHookKeepsItsRun) {
  // q0 -> q1 -> q2 with the hook q1 below q0: q0's segment ends at q1.
  // Reversal makes q1 the new carrier of the run that holds q1.
  TestFigure f;
  SegmentCP* q0 = f.NewCP(Vector(2, 1, 0));
  HookSegmentCP* q1 = f.NewHook(0.1f);
  SegmentCP* q2 = f.NewCP(Vector(1, 1, 0));
  f.Open({q0, q1, q2});
  TestFigure::Stack({q0, q1});
  Slice* list = nullptr;
  Slice* slice = AddSlice(&list);
  slice->first = q0;

  ReverseSlice(slice);
  EXPECT_EQ(slice->first, q2);
  EXPECT_EQ(q0->stackNext, q1);
  EXPECT_EQ(q1->stackNext, nullptr);
  EXPECT_EQ(q1->s, 0.1f);  // not mirrored: the run did not move
  EXPECT_EQ(Rules({slice->first}), std::set<FigureRule>{FigureRule::kHookCarrier});

  f.Unregister(q0);
  f.Register(slice->first);
  DeleteSlice(&list, slice);
}

}  // namespace
}  // namespace splinecore
