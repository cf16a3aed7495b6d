// Whole-figure refresh: after RefreshAll every member of every control point
// holds the bits the lazy queries leave, the raw getters then only read, and
// the threaded batch lengths and points at lengths give the one-thread and
// one-walk-per-length bits.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include "controlpoint/walks.h"
#include "figure/refresh_all.h"
#include "figure_corpus.h"
#include "grid_figure.h"
#include "splinecore/figure.h"
#include "splinecore/hooks.h"
#include "splinecore/measure.h"
#include "splinecore/segment_cp.h"

namespace splinecore::test {
namespace {

// The edits after which a figure is stale: a new screen, a mode change, a
// moved point, a new spline.
void Edit(Figure& f, int step) {
  switch (step) {
    case 0:
      f.SetScreen(Matrix{{{0.6f, -0.8f, 0, 12}, {0.8f, 0.6f, 0, -3}, {0, 0, 2, 1}}});
      break;
    case 1:
      f.SetMuscleMode(!f.MuscleMode());
      break;
    case 2:  // no shared figure starts with a hook
      f.Move(PointId{0, 0}, f.Position(PointId{0, 0}, Space::kModel) + Vector(0.5f, -0.25f, 0));
      break;
    case 3:
      f.AddSpline(SplineDesc{{PointDesc{Vector(1, 2, 0)}, PointDesc{Vector(3, 1, 0)}, PointDesc{Vector(4, 4, 0)}}, false, ""});
      break;
  }
}

// Lifts its point by a tenth of its index: an effect of the host's.
struct Lift final : CustomMuscleEffect {
  bool MovePosition(PointId p, Vector* at) const override { return at->z += 0.1f * static_cast<float>(p.index), true; }
};

// The benchmarks' grid at n = 46 (over 4096 points, enough to be split
// across threads) with some peaks, muscle offsets and a host effect: points far from any
// hook or muscle data beside points next to them.
// The lines a group's getters find fetched: ascending whole cache lines
// holding its points, a hook's carrier and next stacks, the heads of all
// these, and of their spline neighbours the flags and the head.
void ExpectFetchedLinesCover(const Figure& f) {
  const detail::WholeRefresh& plan = detail::FigureAccess::Plan(f);
  for (std::size_t g = 0; g < plan.groups().size(); ++g) {
    std::vector<std::uintptr_t> lines;
    for (std::size_t l = plan.linesFrom()[g]; l < plan.linesFrom()[g + 1]; ++l)
      lines.push_back(reinterpret_cast<std::uintptr_t>(plan.lines()[l]));
    EXPECT_TRUE(std::adjacent_find(lines.begin(), lines.end(), std::greater_equal<>()) == lines.end());
    auto holds = [&lines](const void* from, std::size_t size) {  // every line of [from, from + size)
      const auto at = reinterpret_cast<std::uintptr_t>(from);
      for (std::uintptr_t line = at / 64 * 64; line < at + size; line += 64)
        if (!std::binary_search(lines.begin(), lines.end(), line)) return false;
      return true;
    };
    std::vector<SegmentCP*> points = plan.nearHooks()[g];
    for (const auto& member : plan.groups()[g]) {
      points.push_back(member.second);
      if (SegmentCP* carrier = member.second->IsHook() ? detail::FindCarrier(member.second) : nullptr)
        for (SegmentCP* x : {carrier, carrier->next})
          for (SegmentCP* m : detail::StackMembers(x)) points.push_back(m);
    }
    for (SegmentCP* c : points)
      for (SegmentCP* x : {c, c->head}) {
        EXPECT_TRUE(holds(x, x->IsHook() ? sizeof(HookSegmentCP) : sizeof(SegmentCP))) << "group " << g;
        for (SegmentCP* n : {x->prev, x->next})
          EXPECT_TRUE(n == nullptr || (holds(&n->flags, 1) && holds(&n->head, 1))) << "group " << g;
      }
  }
}

FigureDescription Grid() {
  FigureDescription d = bench::GridDescription(46);
  for (int k = 1; k < 4; ++k) {
    d.splines[static_cast<std::size_t>(k * 9)].points[static_cast<std::size_t>(k * 5)].smooth = false;
    d.muscleEffects.push_back(MuscleEffectDesc{PointId{k * 11, k}, Vector(0.2f, -0.1f, 0.0f), nullptr});
  }
  d.muscleEffects.push_back(MuscleEffectDesc{PointId{40, 20}, {}, std::make_shared<Lift>()});
  return d;
}

TEST(RefreshAll, LeavesTheLazyPathsBitsAndTheGettersOnlyRead) {
  std::vector<FigureDescription> figures = SharedFigures();
  ASSERT_GE(figures.size(), 4u);
  figures.push_back(Grid());
  // No muscle data: a group per run, except where a point reads hooks of two
  // runs (a spline hung by both ends, far from other hooks: its group's first).
  FigureDescription plainGrid = bench::GridDescription(46);
  SplineDesc bridge{{PointDesc{}, PointDesc{Vector(10, 3.5f, 0)}, PointDesc{}}, false, ""};
  bridge.points[0].hook = true;
  bridge.points[2].hook = true;
  plainGrid.hooks.push_back(HookDesc{PointId{static_cast<int>(plainGrid.splines.size()), 0}, PointId{3, 1}});
  plainGrid.hooks.push_back(HookDesc{PointId{static_cast<int>(plainGrid.splines.size()), 2}, PointId{3, 10}});
  plainGrid.splines.push_back(bridge);
  figures.push_back(plainGrid);
  for (std::size_t k = 0; k < figures.size(); ++k) {
    Figure eager(figures[k]), lazy(figures[k]);
    for (int step = 0; step < 5; ++step) {
      if (step > 0) {
        Edit(eager, step - 1);
        Edit(lazy, step - 1);
      }
      // Any number of threads gives the same bits.
      eager.RefreshAll(eager.MuscleMode() ? Space::kMuscle : Space::kScreen, step == 1 ? 3 : step == 2 ? 2 : 1);
      ExpectFetchedLinesCover(eager);
      EXPECT_TRUE(k + 2 != figures.size() || detail::FigureAccess::Plan(eager).groups().size() == 1)
          << "with a host effect the getters' points form one group";
      if (k + 1 == figures.size() && !eager.MuscleMode()) {  // each run its own group but the bridge's two
        const std::vector<detail::OrderedPoints>& groups = detail::FigureAccess::Plan(eager).groups();
        EXPECT_EQ(groups.size(), plainGrid.hooks.size() - 1);
        EXPECT_TRUE(std::none_of(groups.begin(), groups.end(), [](const auto& g) { return g.empty(); }));
      }
      const std::vector<std::uint32_t> refreshed = Members(eager);
      AskRawGetters(eager);
      EXPECT_EQ(FirstDifference(Members(eager), refreshed), refreshed.size()) << "figure " << k << ", step " << step;
      lazy.SplineLengths();  // any first query computes every value the lazy way
      EXPECT_EQ(FirstDifference(Members(lazy), refreshed), refreshed.size()) << "figure " << k << ", step " << step;
    }
  }
  Figure plain;
  EXPECT_THROW(plain.RefreshAll(Space::kMuscle), FigureError);
  EXPECT_THROW(plain.RefreshAll(Space::kScreen, 0), FigureError);
}

// The plan computes directly every point no hook and no muscle data reach,
// and on one thread runs each group of the others right after the last plain
// point it reads, and shares no head. Spline 0 = 0:0 .. 0:7 along x; spline 1 = a, h with the
// hook h on 0:2's segment: h is the getters', a is computed directly after
// it outside muscle mode and by the getters in it. An offset on 0:6 gives
// 0:4 .. 0:7 to the getters too (two steps either way); in muscle mode the
// carrier 0:2 as well.
TEST(RefreshAll, LeavesToTheGettersOnlyWhatHooksAndMuscleDataReach) {
  Figure f;
  SplineDesc rail, hook{{PointDesc{Vector(2.5f, 3, 0)}, PointDesc{}}, false, ""};
  for (int i = 0; i < 8; ++i) rail.points.push_back(PointDesc{Vector(static_cast<float>(i), 0, 0)});
  hook.points[1].hook = true;
  f.AddSpline(rail);
  f.AddSpline(hook);
  f.AddHook(PointId{1, 1}, PointId{0, 2});
  auto counts = [&f](bool muscle) {
    f.SetMuscleMode(muscle);
    f.RefreshAll(muscle ? Space::kMuscle : Space::kScreen);
    const detail::RefreshPlanCounts c = detail::FigureAccess::RefreshPlan(f);
    return std::vector<std::size_t>{c.plain, c.nearHooks, c.lazy, c.runHooks, c.late + c.shared};
  };
  // h has no partners: its getters give it no tangent.
  EXPECT_EQ(counts(false), (std::vector<std::size_t>{8, 1, 1, 0, 0}));
  EXPECT_EQ(counts(true), (std::vector<std::size_t>{7, 0, 3, 0, 0}));
  f.AddMuscleOffset(PointId{0, 6}, Vector(0, 1, 0));
  EXPECT_EQ(counts(false), (std::vector<std::size_t>{4, 1, 5, 0, 0}));
  EXPECT_EQ(counts(true), (std::vector<std::size_t>{3, 0, 7, 0, 0}));
  // With partners, a spline b stacked under 0:2 and 0:3, and no muscle data,
  // h's run is placed and converted without the getters; b is plain.
  Figure p;
  p.AddSpline(rail);
  p.AddSpline(hook);
  p.AddSpline(SplineDesc{{PointDesc{Vector(2, 0, 0)}, PointDesc{Vector(3, 0, 0)}}, false, ""});
  p.Stack({PointId{0, 2}, PointId{2, 0}});
  p.Stack({PointId{0, 3}, PointId{2, 1}});
  p.AddHook(PointId{1, 1}, PointId{0, 2});
  p.RefreshAll(Space::kScreen);
  const detail::RefreshPlanCounts run = detail::FigureAccess::RefreshPlan(p);
  EXPECT_EQ((std::vector<std::size_t>{run.plain, run.nearHooks, run.lazy, run.runHooks}),
            (std::vector<std::size_t>{10, 1, 0, 1}));
  // On two threads a straight spline of 8192 points splits between 0:4095
  // and 0:4096, which both parts read: two shared heads, each taken once.
  SplineDesc line;
  for (int i = 0; i < 8192; ++i) line.points.push_back(PointDesc{Vector(static_cast<float>(i), 9, 0)});
  Figure g;
  g.AddSpline(line);
  g.RefreshAll(Space::kScreen, 2);
  EXPECT_EQ(detail::FigureAccess::RefreshPlan(g).shared, 2u);
  // A hook on 0:4095's segment reads points of both parts: its group, h with
  // a, runs late; the plain points stay plain.
  Figure k;
  k.AddSpline(line);
  k.AddSpline(hook);
  k.AddHook(PointId{1, 1}, PointId{0, 4095});
  k.RefreshAll(Space::kScreen, 2);
  const detail::RefreshPlanCounts late = detail::FigureAccess::RefreshPlan(k);
  EXPECT_EQ((std::vector<std::size_t>{late.plain, late.nearHooks, late.lazy, late.late}),
            (std::vector<std::size_t>{8192, 1, 1, 2}));
  // Heads are shared, not the stack members behind them: with a, b stacked
  // over 0:4096 and 0:4097 (the parts now meet between 0:4096 and 0:4097 of
  // 8194 points) part 0 reads a and b as 0:4096's head and next's head, part 1
  // as 0:4097's prev's head and head; 0:4096 and 0:4097 themselves are read
  // only through them.
  Figure m;
  m.AddSpline(line);
  m.AddSpline(SplineDesc{{PointDesc{Vector(4096, 9, 0)}, PointDesc{Vector(4097, 9, 0)}}, false, ""});
  m.Stack({PointId{1, 0}, PointId{0, 4096}});
  m.Stack({PointId{1, 1}, PointId{0, 4097}});
  m.RefreshAll(Space::kScreen, 2);
  EXPECT_EQ(detail::FigureAccess::RefreshPlan(m).shared, 2u);
}

TEST(SplineLengths, AnyNumberOfThreadsGivesOneThreadsBits) {
  std::vector<FigureDescription> figures = SharedFigures();
  figures.push_back(bench::GridDescription(46));  // enough segments for every thread to get a share
  for (std::size_t k = 0; k < figures.size(); ++k) {
    Figure f(figures[k]);
    std::vector<float> one;
    for (int s = 0; s < f.SplineCount(); ++s) one.push_back(f.SplineLength(s));
    for (int threads : {1, 2, 3}) {
      const std::vector<float> many = f.SplineLengths(threads);
      ASSERT_EQ(many.size(), one.size());
      for (std::size_t s = 0; s < one.size(); ++s)
        EXPECT_EQ(std::memcmp(&many[s], &one[s], sizeof(float)), 0) << "figure " << k << ", spline " << s;
    }
    // Points at lengths, shuffled: zero, every segment boundary the walk
    // sums to, spread along, the end and past it; on any number of threads
    // each is PositionDirectionFromSubLength's answer (the shared figures).
    for (int s = 0; k + 1 < figures.size() && s < f.SplineCount(); ++s) {
      std::vector<float> lengths = {0.0f, one[static_cast<std::size_t>(s)], one[static_cast<std::size_t>(s)] * 1.5f + 1};
      float walked = 0.0f;
      for (int i = 0; i < f.PointCount(s); ++i)
        if (f.OwnsSegment(PointId{s, i}))
          lengths.push_back(walked = static_cast<float>(static_cast<double>(walked) + f.SegmentLength(PointId{s, i})));
      for (int i = 0; i < 150; ++i) lengths.push_back(one[static_cast<std::size_t>(s)] * static_cast<float>((i * 37) % 150) / 140);
      std::shuffle(lengths.begin(), lengths.end(), std::mt19937(7));
      for (int threads : {1, 2, 3}) {
        const std::vector<PointOnSpline> at = f.PointsAtLengths(s, lengths, threads);
        ASSERT_EQ(at.size(), lengths.size());
        for (std::size_t i = 0; i < lengths.size(); ++i) {
          PointOnSpline alone{Vector(0, 0, 0), Vector(0, 0, 0)};
          PositionDirectionFromSubLength(f.ControlPoint(PointId{s, 0}), lengths[i], &alone.position, &alone.direction);
          EXPECT_EQ(std::memcmp(&at[i], &alone, sizeof alone), 0) << "figure " << k << ", spline " << s << ", length " << lengths[i];
        }
      }
    }
  }
  Figure empty;
  EXPECT_THROW(empty.SplineLengths(0), FigureError);
  Figure some(figures.front());
  EXPECT_THROW(some.PointsAtLengths(0, {1.0f}, 0), FigureError);
}

}  // namespace
}  // namespace splinecore::test
