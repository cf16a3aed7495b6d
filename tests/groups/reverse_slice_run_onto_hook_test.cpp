// Reversal hands each run to X, its carrier's new prev, even when X is a
// hook. Faults found by fuzzing: handing a run to a hook of the same run
// linked the stack into a cycle that SetHead walked for ever; such a run now
// stays where it is.
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

  ReverseSlice(second);  // b's new prev is the hook h3: h1 hangs below it
  EXPECT_EQ(b->stackNext, nullptr);
  EXPECT_EQ(h3->stackNext, h1);
  ReverseSlice(first);  // a's new prev h1 is in a's run [h4, h3, h1]: kept
  EXPECT_EQ(a->stackNext, h4);
  EXPECT_EQ(h4->stackNext, h3);
  EXPECT_EQ(h3->stackNext, h1);
  EXPECT_EQ(h1->stackNext, nullptr);
  EXPECT_EQ(h4->s, 0.75f);  // not mirrored: the run did not move
  EXPECT_EQ(Rules({first->first, second->first}), std::set<FigureRule>{});

  f.Unregister(a);
  f.Unregister(b);
  f.Register(first->first);
  f.Register(second->first);
  while (list != nullptr) DeleteSlice(&list, list);
}

TEST(ReverseSliceRunOntoHook, RunHandedToAHookJoinsThatHooksRun) {
  // T: D(0,0,0) -> E(4,0,0) with hook k (s 0.5) below D. S: c(2,4,0) -> k
  // with hook h (s 0.25) below c; h lies on its own spline w0 -> h -> w1.
  // Reversing S makes k c's new prev: h hangs below k, on D's segment, with
  // s mirrored to 0.75, and c carries nothing.
  TestFigure f;
  SegmentCP* d = f.NewCP(Vector(0, 0, 0));
  SegmentCP* e = f.NewCP(Vector(4, 0, 0));
  HookSegmentCP* k = f.NewHook(0.5f);
  SegmentCP* c = f.NewCP(Vector(2, 4, 0));
  HookSegmentCP* h = f.NewHook(0.25f);
  f.Open({d, e});
  f.Open({c, k});
  f.Open({f.NewCP(Vector(1, 5, 0)), h, f.NewCP(Vector(3, 5, 0))});
  TestFigure::Stack({d, k});
  TestFigure::Stack({c, h});
  Slice* list = nullptr;
  Slice* slice = AddSlice(&list);
  slice->first = c;

  ReverseSlice(slice);
  EXPECT_EQ(d->stackNext, k);
  EXPECT_EQ(k->stackNext, h);
  EXPECT_EQ(h->stackPrev, k);
  EXPECT_EQ(h->s, 0.75f);
  EXPECT_FALSE(c->IsHasHooks());
  EXPECT_EQ(c->stackNext, nullptr);
  EXPECT_TRUE(h->IsHook() && h->head == h);
  EXPECT_EQ(Rules({d, slice->first, h->prev}), std::set<FigureRule>{});

  f.Unregister(c);
  f.Register(slice->first);
  DeleteSlice(&list, slice);
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
