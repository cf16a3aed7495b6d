// Figure: argument errors that name the point and change nothing, and what
// its answers mean. The coherence contract is the soak's (tests/soak).
#include "splinecore/figure.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <vector>

#include <gtest/gtest.h>

#include "figure_corpus.h"
#include "marrow/marrow.h"
#include "splinecore/segment_cp.h"

namespace splinecore {
namespace {

SplineDesc Line(std::initializer_list<Vector> at, bool closed = false) {
  SplineDesc s{{}, closed, ""};
  for (const Vector& v : at) s.points.push_back(PointDesc{v});
  return s;
}

TEST(Figure, RefusedCallsNameThePointAndChangeNothing) {
  Figure f;
  SplineDesc rail = Line({{0, 0, 0}, {4, 0, 0}});
  rail.name = "rail";
  f.AddSpline(rail);
  f.AddSpline(Line({{1, 1, 0}, {2, 2, 0}}));
  SplineDesc withHook = Line({{0, 3, 0}, {1, 3, 0}});
  PointDesc hook;
  hook.hook = true;
  withHook.points.insert(withHook.points.begin() + 1, hook);
  f.AddSpline(withHook);
  // The hook hangs nowhere yet: queries report the figure invalid.
  EXPECT_THROW(f.SplineLength(0), FigureError);
  f.AddHook(PointId{2, 1}, PointId{0, 0});
  const float before = f.SplineLength(0);
  auto refused = [&](auto call, const char* needle) {
    try {
      call();
      ADD_FAILURE() << "accepted; expected: " << needle;
    } catch (const FigureError& e) {
      EXPECT_NE(std::string(e.what()).find(needle), std::string::npos) << e.what();
    }
  };
  refused([&] { f.Move(PointId{5, 0}, Vector(0, 0, 0)); }, "no such spline");
  refused([&] { f.Move(PointId{0, 2}, Vector(0, 0, 0)); }, "point 0:2: no such point");
  refused([&] { f.Stack({PointId{0, 1}, PointId{1, 0}}); }, "point 1:0: stacked points must share");
  refused([&] { f.AddHook(PointId{2, 1}, PointId{0, 1}); }, "point 2:1: the hook already hangs");
  refused([&] { f.AddHook(PointId{0, 0}, PointId{0, 1}); }, "point 0:0: not a hook");
  refused([&] { f.AddHook(PointId{0, 0}, PointId{1, 0}); }, "point 0:0: not a hook");
  refused([&] { f.Move(PointId{0, 0}, Vector(NAN, 0, 0)); }, "must be finite");
  refused([&] { f.SetDeltas(PointId{0, 0}, Delta{}, Delta{NAN, 0, 1}); }, "point 0:0: deltas must be finite");
  refused([&] { f.Delete(PointId{1, 0}); f.Delete(PointId{1, 0}); }, "the only point of a spline");
  refused([&] { f.Delete(PointId{0, 0}); }, "carries hooks");
  Figure loop(ReadFigureFile(R"({"splines": [{"name": "L", "closed": true, "points": [{"at": [0, 0]}, {"hook": 0.5},
      {"at": [4, 4]}, {"at": [5, 5]}, {"hook": 0.5}, {"at": [6, 6]}, {"at": [7, 7]}, {"hook": 0.25}]}],
      "stacks": [["L:2", "L:1"], ["L:0", "L:7"], ["L:5", "L:4"]]})"));
  loop.Delete(PointId{0, 3});  // L:2's segment then ends at L:4, which L:5 and L:6 place
  refused([&] { loop.Delete(PointId{0, 5}); }, "point 0:5: its prev's hooks would ride on a segment whose end");
  EXPECT_EQ(loop.PointCount(0), 7);
  refused([&] { f.AddHook(PointId{2, 1}, PointId{0, 0}); }, "already hangs");
  refused([&] { f.AddSpline(rail); }, "the spline name 'rail' is taken");
  refused([&] { f.AddSpline(SplineDesc{}); }, "point 3:0: a spline needs at least one point");
  refused([&] { f.AddSpline(SplineDesc{{PointDesc{Vector(0, NAN, 0)}, PointDesc{}}, false, ""}); },
          "point 3:0: values must be finite");
  // The point is checked before the value.
  refused([&] { f.AddMuscleOffset(PointId{0, 9}, Vector(NAN, 0, 0)); }, "point 0:9: no such point");
  refused([&] { f.AddMuscleEffect(PointId{7, 0}, nullptr); }, "point 7:0: no such spline");
  refused([&] { f.SplineName(3); }, "point 3:0: no such spline");
  refused([&] { f.SvgPath(-1, Space::kModel); }, "no such spline");
  refused([&] { f.PointsAtLengths(1, {1.0f, -1.0f}); }, "point 1:0: lengths must be finite and not negative");
  refused([&] { f.Sample(0, 0); }, "point 0:0: steps must be 1 to 65535");
  refused([&] { f.Sample(0, 65536); }, "steps must be 1 to 65535");
  EXPECT_EQ(f.Sample(0, 65535).size(), 65536u);  // one segment
  EXPECT_EQ(f.Sample(0, 1).size(), 2u);
  const Matrix identity{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};
  Matrix nan = identity;
  nan.m[1][3] = NAN;
  refused([&] { f.SetScreen(identity, nan); }, "matrices must be finite");
  refused([&] { f.SetScreen(nan); }, "not invertible");
  refused([&] { f.SetView(nan, identity); }, "matrices must be finite");
  Figure big;  // point ids 0 to 65,535: the last has no room in the muscle table
  big.AddSpline(SplineDesc{std::vector<PointDesc>(65536), false, ""});
  big.AddMuscleOffset(PointId{0, 65534}, Vector(1, 0, 0));
  refused([&] { big.AddMuscleOffset(PointId{0, 65535}, Vector(1, 0, 0)); }, "muscle table full");
  // Spline 1 lost one point to the accepted first Delete above.
  EXPECT_EQ(f.PointCount(1), 1);
  EXPECT_EQ(f.SplineLength(0), before);
}

TEST(Figure, PeakAndSmoothChangeTheTangentsAndTheDescription) {
  // At a peak each tangent follows its own chord; smooth, both share one
  // direction. Middle point (2,1,0) between (0,0,0) and (4,0,0): peaked, its
  // in- and out-handles are not collinear with it.
  Figure f;
  f.AddSpline(Line({{0, 0, 0}, {2, 1, 0}, {4, 0, 0}}));
  const PointId mid{0, 1};
  const Bezier smoothIn = f.Segment(mid, Space::kModel);
  f.SetSmooth(mid, false);
  EXPECT_FALSE(f.Describe().splines[0].points[1].smooth);
  const Bezier peakIn = f.Segment(mid, Space::kModel);
  EXPECT_FALSE(peakIn.h1 == smoothIn.h1);
  // Smooth: the in-handle lies level with the point (tangent parallel to the
  // chord between the neighbours, along x).
  EXPECT_EQ(smoothIn.h1.y, 1.0f);
  f.SetSmooth(mid, true);
  EXPECT_TRUE(f.Describe().splines[0].points[1].smooth);
  EXPECT_EQ(f.Segment(mid, Space::kModel).h1, smoothIn.h1);
  // Deltas reach the description too (the answers follow it: the soak).
  f.SetDeltas(mid, Delta{10, 0, 1}, Delta{0, -5, 2});
  const PointDesc turned = f.Describe().splines[0].points[1];
  EXPECT_TRUE(turned.in.pitch == 10 && turned.out.yaw == -5 && turned.out.magnitude == 2);
}

// Lifts a point by its spline index plus one.
class LiftEffect final : public CustomMuscleEffect {
 public:
  bool MovePosition(PointId point, Vector* position) const override {
    position->y += static_cast<float>(point.spline + 1);
    return true;
  }
};

// Doubles both tangents, turning each half way round twice (by pitch, then
// by yaw: back where it was).
class StretchEffect final : public CustomMuscleEffect {
 public:
  int AdjustInDelta(PointId, Delta* delta) const override { return AdjustOutDelta(PointId{}, delta); }
  int AdjustOutDelta(PointId, Delta* delta) const override {
    delta->pitch += 180.0f;
    delta->yaw += 180.0f;
    delta->magnitude *= 2.0f;
    return 1 | 4;
  }
};

TEST(Figure, HostEffectsMoveTheirPointInMuscleModeAndTravelWithTheDescription) {
  Figure f;
  SplineDesc named = Line({{0, 0, 0}, {2, 0, 0}, {4, 0, 0}});
  named.name = "rail";
  f.AddSpline(Line({{0, 5, 0}, {1, 5, 0}}));
  EXPECT_EQ(f.AddSpline(named), 1);
  EXPECT_EQ(f.FindSpline("rail"), 1);
  EXPECT_EQ(f.FindSpline("post"), -1);
  EXPECT_EQ(f.FindSpline(""), -1);  // unnamed splines are not found by name
  EXPECT_THROW(f.AddSpline(named), FigureError);  // the name is taken
  const auto lift = std::make_shared<LiftEffect>();
  EXPECT_THROW(f.AddMuscleEffect(PointId{1, 1}, nullptr), FigureError);
  f.AddMuscleEffect(PointId{1, 1}, lift);
  f.AddMuscleOffset(PointId{1, 1}, Vector(0.5f, 0, 0));
  const Vector model = f.Position(PointId{1, 1}, Space::kModel);
  f.SetMuscleMode(true);
  // Effects run in the order they were added: lifted by 2 (spline 1), then
  // shifted by 0.5 along x. Model positions in muscle mode are the moved ones.
  EXPECT_EQ(f.Position(PointId{1, 1}, Space::kModel), Vector(2.5f, 2, 0));
  EXPECT_EQ(model, Vector(2, 0, 0));
  const FigureDescription d = f.Describe();
  ASSERT_EQ(d.muscleEffects.size(), 2u);
  EXPECT_EQ(d.muscleEffects[0].custom, lift);
  EXPECT_EQ(d.splines[1].name, "rail");
  // A point stacked below one with effects moves with it (they act on the head).
  f.AddSpline(Line({{2, 0, 0}, {2, -3, 0}}));
  EXPECT_EQ(f.Position(PointId{2, 0}, Space::kModel), Vector(2, 0, 0));
  f.Stack({PointId{1, 1}, PointId{2, 0}});
  EXPECT_EQ(f.Position(PointId{2, 0}, Space::kModel), Vector(2.5f, 2, 0));
  {
    Figure fresh(f.Describe());
    fresh.SplineLengths();
    EXPECT_EQ(test::Members(f), test::Members(fresh));  // the records too
  }
  f.ClearMuscleEffects(PointId{0, 0});  // has none: nothing to clear
  EXPECT_EQ(f.Describe().muscleEffects.size(), 2u);
  const long live = MarrowLiveBlocks();
  f.AddMuscleOffset(PointId{0, 0}, Vector(1, 0, 0));
  f.ClearMuscleEffects(PointId{0, 0});
  EXPECT_EQ(MarrowLiveBlocks(), live);  // the effect and the point's muscle data are freed
  f.ClearMuscleEffects(PointId{1, 1});
  EXPECT_EQ(f.Position(PointId{1, 1}, Space::kModel), Vector(2, 0, 0));
  EXPECT_EQ(f.Describe().muscleEffects.size(), 0u);
  // Doubled deltas double the reach of both handles at the point, (2,0,0).
  auto reaches = [&] {
    std::vector<float> at;
    for (int i : {0, 1}) {
      const Bezier b = f.Segment(PointId{1, i}, Space::kModel);
      if (b.p0 == Vector(2, 0, 0)) at.push_back(b.h0.x - b.p0.x);
      if (b.p1 == Vector(2, 0, 0)) at.push_back(b.h1.x - b.p1.x);
    }
    return at;
  };
  const std::vector<float> plain = reaches();
  ASSERT_EQ(plain.size(), 2u);
  f.AddMuscleEffect(PointId{1, 1}, std::make_shared<StretchEffect>());
  const std::vector<float> stretched = reaches();
  ASSERT_EQ(stretched.size(), 2u);
  for (int k : {0, 1}) EXPECT_NEAR(stretched[k], 2 * plain[k], 1e-5f) << k;
  EXPECT_EQ(lift.use_count(), 2);  // this test's and the description's
}

TEST(Figure, HostEffectsAnswerByThePointsCurrentId) {
  // Lifts a point by its index plus one; deleting the point before it (out
  // of muscle mode, after muscle answers were asked) and reversing the
  // spline renumber it.
  struct IndexLift final : CustomMuscleEffect {
    bool MovePosition(PointId point, Vector* position) const override {
      position->y += static_cast<float>(point.index + 1);
      return true;
    }
  };
  Figure g;
  g.AddSpline(Line({{0, 0, 0}, {2, 0, 0}, {4, 0, 0}}));
  g.AddMuscleEffect(PointId{0, 2}, std::make_shared<IndexLift>());
  g.SetMuscleMode(true);
  EXPECT_EQ(g.Position(PointId{0, 2}, Space::kModel), Vector(4, 3, 0));
  g.SetMuscleMode(false);
  g.Delete(PointId{0, 0});
  g.SetMuscleMode(true);
  EXPECT_EQ(g.Position(PointId{0, 1}, Space::kModel), Vector(4, 2, 0));
  g.Reverse(0);
  EXPECT_EQ(g.Position(PointId{0, 0}, Space::kModel), Vector(4, 1, 0));
}

// Out of memory for a point's first effect (its muscle data block, then the
// effect's block): bad_alloc, no block kept, the next offset its only effect.
TEST(Figure, AFailedAllocationKeepsNoBlock) {
  Figure f;
  f.AddSpline(Line({{0, 0, 0}, {2, 0, 0}}));
  const long live = MarrowLiveBlocks();
  for (long succeeding : {0L, 1L}) {
    MarrowFailAfter(succeeding);
    EXPECT_THROW(f.AddMuscleOffset(PointId{0, 1}, Vector(0.5f, 0, 0)), std::bad_alloc);
    MarrowFailAfter(-1);
    EXPECT_EQ(MarrowLiveBlocks(), live) << succeeding;
  }
  f.AddMuscleOffset(PointId{0, 1}, Vector(0.5f, 0, 0));
  f.SetMuscleMode(true);
  EXPECT_EQ(f.Position(PointId{0, 1}, Space::kModel), Vector(2.5f, 0, 0));
}

TEST(Figure, ScreenWithoutInverseIsInvertedOrRefused) {
  Figure f;
  f.AddSpline(Line({{0, 0, 0}, {4, 0, 0}}));
  // A new figure's view and screen are the identity, both ways.
  const Matrix identity{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};
  const FigureDescription fresh = f.Describe();
  for (const Matrix* m : {&fresh.view, &fresh.inverseView, &fresh.screen, &fresh.inverseScreen})
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 4; ++c) EXPECT_EQ(m->m[r][c], identity.m[r][c]) << r << "," << c;
  // Scale by 2 and 4, then translate: the inverse halves, quarters and
  // carries the translation back, all exact in float.
  f.SetScreen(Matrix{{{2, 0, 0, 6}, {0, 4, 0, -8}, {0, 0, 1, 1}}});
  const Matrix inverse = f.Describe().inverseScreen;
  const Matrix expected{{{0.5f, 0, 0, -3}, {0, 0.25f, 0, 2}, {0, 0, 1, -1}}};
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 4; ++c) EXPECT_EQ(inverse.m[r][c], expected.m[r][c]) << r << "," << c;
  // A rotation by a quarter turn about z inverts to the opposite turn.
  f.SetView(Matrix{{{0, -1, 0, 0}, {1, 0, 0, 0}, {0, 0, 1, 0}}});
  EXPECT_EQ(f.Describe().inverseView.m[0][1], 1.0f);
  EXPECT_EQ(f.Describe().inverseView.m[1][0], -1.0f);
  // A dense matrix: M * M^-1 is the identity up to float rounding, and
  // M^-1 carries M's translation back to the origin.
  const Matrix dense{{{2, 1, -1, 3}, {0.5f, 3, 1, -2}, {1, -2, 4, 0.25f}}};
  f.SetScreen(dense);
  const Matrix inv = f.Describe().inverseScreen;
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) {
      double sum = 0;
      for (int k = 0; k < 3; ++k) sum += static_cast<double>(dense.m[r][k]) * inv.m[k][c];
      EXPECT_NEAR(sum, r == c ? 1.0 : 0.0, 1e-6) << r << "," << c;
    }
  const Vector back = TransformPoint(inv, TransformPoint(dense, Vector(0, 0, 0)));
  EXPECT_NEAR(Length(back), 0.0f, 1e-6f);
  f.SetScreen(Matrix{{{2, 0, 0, 6}, {0, 4, 0, -8}, {0, 0, 1, 1}}});
  const Matrix flat{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 0, 0}}};
  EXPECT_THROW(f.SetScreen(flat), FigureError);
  EXPECT_EQ(f.Describe().inverseScreen.m[0][0], 0.5f);  // unchanged
  const Matrix tiny{{{1e-39f, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};
  EXPECT_THROW(f.SetView(tiny), FigureError);  // 1e39 overflows float
}

TEST(Figure, SvgPathRunsThroughTheSegmentsInTravelOrder) {
  // Two points (0,0) and (3,0): travel starts at the last point. Both ends
  // take half the chord, (-1.5, 0), as tangent, so the handles lie a sixth
  // of the chord inside: 3 - 0.5 and 0 + 0.5.
  Figure f;
  f.AddSpline(Line({{0, 0, 0}, {3, 0, 0}}));
  EXPECT_EQ(f.SvgPath(0, Space::kScreen), "M 3 0 C 2.5 0 0.5 0 0 0");
  // x' = x / 2 + 1, y' = 2 - y.
  f.SetScreen(Matrix{{{0.5f, 0, 0, 1}, {0, -1, 0, 2}, {0, 0, 1, 0}}});
  EXPECT_EQ(f.SvgPath(0, Space::kScreen), "M 2.5 2 C 2.25 2 1.25 2 1 2");
  EXPECT_EQ(f.SvgPath(0, Space::kModel), "M 3 0 C 2.5 0 0.5 0 0 0");
  // A closed spline ends with Z and has one C per point; one point: just M.
  f.AddSpline(Line({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, true));
  const std::string loop = f.SvgPath(1, Space::kModel);
  EXPECT_EQ(std::count(loop.begin(), loop.end(), 'C'), 3);
  EXPECT_EQ(loop.substr(0, 4), "M 0 ");
  EXPECT_EQ(loop.substr(loop.size() - 2), " Z");
  f.AddSpline(Line({{0.1f, -7, 0}}));
  EXPECT_EQ(f.SvgPath(2, Space::kModel), "M 0.1 -7");
}

}  // namespace
}  // namespace splinecore
