// The demo's built-in figure: its table against the golden file, and a few
// values checked against hand geometry so the golden file is known sane.
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <utility>

#include "scene.h"

namespace splinecore::demo {
namespace {

const SplineView& Named(const Scene& scene, const std::string& name) {
  for (const SplineView& s : scene.splines)
    if (s.name == name) return s;
  ADD_FAILURE() << "no spline " << name;
  return scene.splines.front();
}

// Fault: a run at the bottom of its stack (no lastHook) lost its last piece,
// so three hooks drew three bands where the segment has four pieces.
TEST(DemoScene, EveryRunDrawsAPieceMoreThanItHasHooks) {
  DemoFigure figure = BuiltinFigure();
  const FigureDescription d = figure.figure.Describe();
  std::set<std::pair<int, int>> carriers;
  for (const HookDesc& h : d.hooks) carriers.insert({h.carrier.spline, h.carrier.index});
  // A piece ends at each hook, and one more at each carrier's next.
  const std::size_t expected = d.hooks.size() + carriers.size();
  ASSERT_EQ(d.hooks.size(), 6u);
  EXPECT_EQ(RunDemo(figure).model.hookPieces.size(), expected);
}

TEST(DemoTable, MatchesTheGoldenFile) {
  std::ifstream in(EXPECTED_TABLE);
  ASSERT_TRUE(in) << EXPECTED_TABLE;
  std::ostringstream expected;
  expected << in.rdbuf();
  DemoFigure figure = BuiltinFigure();
  EXPECT_EQ(FormatTable(RunDemo(figure).model), expected.str())
      << "regenerate with `make demo-expected` only after checking the new values";
}

TEST(DemoTable, AgreesWithHandGeometry) {
  DemoFigure figure = BuiltinFigure();
  const DemoRun run = RunDemo(figure);
  // Straight pieces: a post runs 7 units; the stroke is a 3-4-5 chord.
  EXPECT_NEAR(Named(run.model, "left").length, 7.0f, 1e-5);
  EXPECT_NEAR(Named(run.model, "stroke").length, 5.0f, 1e-5);
  // The run of three hooks on each rail, two hooks on each crossing spline.
  EXPECT_EQ(Named(run.model, "low").carried, 3);
  EXPECT_EQ(Named(run.model, "h50").hooks, 2);
  EXPECT_EQ(Named(run.model, "loop").segments, 5);
  // The loop's walk starts at (8, 1) and its last step comes back there.
  const auto& markers = run.model.markers;
  ASSERT_EQ(markers.size(), static_cast<std::size_t>(kLengthSteps + 1));
  EXPECT_NEAR(markers.front().view.x, 8.0f, 1e-5);
  EXPECT_NEAR(markers.front().view.y, 1.0f, 1e-5);
  EXPECT_NEAR(markers.back().view.x, 8.0f, 1e-5);
  EXPECT_NEAR(markers.back().view.y, 1.0f, 1e-5);
  // Muscle mode lifts the right post's upper crossing by (0.75, 1): the post's
  // middle chord grows from 4 to |(0.75, 5)| and its top chord from 1.5 to |(-0.75, 0.5)|.
  EXPECT_GT(Named(run.muscle, "right").length, Named(run.model, "right").length + 0.4f);
  EXPECT_FLOAT_EQ(Named(run.muscle, "left").length, Named(run.model, "left").length);
}

}  // namespace
}  // namespace splinecore::demo
