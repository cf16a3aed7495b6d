// ValidateFigure: a clean figure passes; each rule, broken on its own,
// is reported (and only that rule), and no broken link makes it loop.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "figure_test.h"
#include "splinecore/splinecore.h"

namespace splinecore {
namespace {

// A closed spline a0-a1-a2, an open one b0-b1 and a hook spline h-g; a1
// carries h, b0 crosses a1: stack [a1, h, b0].
struct Figure {
  test::TestFigure f;
  SegmentCP *a0, *a1, *a2, *b0, *b1, *g;
  HookSegmentCP* h;
  Figure() {
    a0 = f.NewCP(Vector(0, 0, 0));
    a1 = f.NewCP(Vector(4, 0, 0));
    a2 = f.NewCP(Vector(2, 3, 0));
    b0 = f.NewCP(Vector(9, 9, 9));
    b1 = f.NewCP(Vector(4, -3, 1));
    h = f.NewHook(0.5f);
    g = f.NewCP(Vector(1, -2, 0));
    test::Link({a0, a1, a2}, true);
    test::Link({b0, b1}, false);
    test::Link({h, g}, false);
    test::TestFigure::Stack({a1, h, b0});
  }
  // Not registered with the test figure: a broken spline must not be walked
  // at teardown, so every point is deleted on its own.
  ~Figure() {
    for (SegmentCP* c : {a0, a1, a2, b0, b1, g, static_cast<SegmentCP*>(h)}) delete c;
  }
  std::vector<FigureViolation> Validate() {
    std::vector<FigureViolation> found;
    SegmentCP* firsts[] = {a0, b0, h};
    auto collect = [](const FigureViolation& v, void* out) {
      static_cast<std::vector<FigureViolation>*>(out)->push_back(v);
    };
    const int count = ValidateFigure(firsts, 3, collect, &found);
    EXPECT_EQ(count, static_cast<int>(found.size()));
    EXPECT_EQ(ValidateFigure(firsts, 3, nullptr, nullptr), count);
    return found;
  }
};

TEST(ValidateFigureTest, CleanFigureHasNoViolation) {
  const long live = MarrowLiveBlocks();
  {
    Figure x;
    EXPECT_TRUE(x.Validate().empty());
    SegmentCP* none[] = {nullptr};
    EXPECT_EQ(ValidateFigure(none, 1, nullptr, nullptr), 0);
    EXPECT_EQ(ValidateFigure(nullptr, 3, nullptr, nullptr), 0);
  }
  EXPECT_EQ(MarrowLiveBlocks(), live);
}

struct BrokenCase {
  const char* name;  // the rule's name as FigureRuleName gives it
  FigureRule rule;
  std::function<const SegmentCP*(Figure&)> breakIt;  // returns a point that must be reported
};

TEST(ValidateFigureTest, EachBrokenRuleIsReportedAlone) {
  const BrokenCase cases[] = {
      {"walk-ends", FigureRule::kWalkEnds, [](Figure& x) { x.a2->OffLoopEnd(); return x.a0; }},
      {"spline-links", FigureRule::kSplineLinks, [](Figure& x) { x.b1->prev = x.a0; return x.b1; }},
      {"loop-end", FigureRule::kLoopEnd, [](Figure& x) { x.b1->OnLoopEnd(); return x.b1; }},
      // a0's prev is b1, whose next is a0 (mutual), but a0's walk ends at a2 without loopEnd.
      {"loop-end", FigureRule::kLoopEnd, [](Figure& x) { x.a2->OffLoopEnd(); x.a2->next = nullptr;
                                                         x.a0->prev = x.b1; x.b1->next = x.a0; return x.a0; }},
      {"stack-links", FigureRule::kStackLinks, [](Figure& x) { x.b0->stackNext = x.a1; return x.a1; }},
      {"stack-links", FigureRule::kStackLinks, [](Figure& x) { x.b0->stackPrev = x.a1; return x.b0; }},
      {"stack-links", FigureRule::kStackLinks, [](Figure& x) { x.g->stackNext = x.b1; return x.g; }},
      // The stack loops a1 -> h -> b0 -> a1: no head or carrier walk may follow it.
      {"stack-links", FigureRule::kStackLinks, [](Figure& x) { x.b0->stackNext = x.a1; x.a1->stackPrev = x.b0;
                                                               return x.a1; }},
      {"heads", FigureRule::kHeads, [](Figure& x) { x.b0->head = x.b0; return x.b0; }},
      {"heads", FigureRule::kHeads, [](Figure& x) { x.a1->OffHasHooks(); return x.a1; }},
      {"heads", FigureRule::kHeads, [](Figure& x) { x.h->OffLastHook(); return x.h; }},
      {"hook-carrier", FigureRule::kHookCarrier, [](Figure& x) {
         x.a1->stackNext = x.b0; x.b0->stackPrev = x.a1; x.h->stackPrev = x.h->stackNext = nullptr;
         x.a1->SetHead(); x.h->SetHead(); return x.h; }},
      {"hook-carrier", FigureRule::kHookCarrier, [](Figure& x) {
         x.a1->next = nullptr; x.a2->prev = nullptr; x.a0->prev = nullptr; x.a2->OffLoopEnd(); return x.h; }},
      {"cache-and-view", FigureRule::kCacheAndView, [](Figure& x) { x.g->cache = nullptr; return x.g; }},
      {"cache-and-view", FigureRule::kCacheAndView, [](Figure& x) { x.f.cache.view = nullptr; return x.a1; }},
  };
  const long live = MarrowLiveBlocks();
  for (const BrokenCase& c : cases) {
    SCOPED_TRACE(c.name);
    Figure x;
    const SegmentCP* culprit = c.breakIt(x);
    bool culpritReported = false;
    const std::vector<FigureViolation> found = x.Validate();
    ASSERT_FALSE(found.empty());
    for (const FigureViolation& v : found) {
      EXPECT_EQ(std::string(FigureRuleName(v.rule)), c.name) << v.message;
      ASSERT_NE(v.message, nullptr);
      culpritReported = culpritReported || v.cp == culprit;
    }
    EXPECT_TRUE(culpritReported);
    x.f.cache.view = &x.f.view;
  }
  EXPECT_EQ(MarrowLiveBlocks(), live);
}

}  // namespace
}  // namespace splinecore
