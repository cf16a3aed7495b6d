// Figure files: a valid file describes the figure it says; a bad one is
// refused with its line and reason; writing and reading back keeps every
// bit, for the shared figures of examples/figures and the fuzz corpus.
#include "splinecore/figure_file.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "figure_corpus.h"
#include "marrow/marrow.h"

namespace splinecore {
namespace {

const char kValid[] = R"({
  "screen": {"rotate": 90, "scale": 2, "translate": [50, 300]},
  "splines": [
    {"name": "rail", "points": [{"at": [0, 0]}, {"at": [2, 0]}, {"at": [6, 0]}, {"at": [8, 0]}]},
    {"name": "a", "points": [{"at": [2, -1], "smooth": false}, {"at": [2, 0]}, {"at": [2, 1]}]},
    {"points": [{"at": [6, -1]}, {"at": [6, 0], "in": [0, 10, 1.5]}, {"at": [6, 1]}]},
    {"name": "cross", "points": [{"at": [4, -1]}, {"hook": 0.5}, {"at": [4, 1]}]}
  ],
  "stacks": [["a:1", "rail:1", "cross:1"], [[2, 1], "rail:2"]],
  "muscle": [{"point": [2, 1], "move": [0, 0.5]}],
  "x-measure": "rail"
})";

TEST(FigureFile, DescribesWhatTheFileSays) {
  const FigureDescription d = ReadFigureFile(kValid);
  ASSERT_EQ(d.splines.size(), 4u);
  EXPECT_EQ(d.splines[0].name, "rail");
  EXPECT_EQ(d.splines[2].name, "");
  EXPECT_FALSE(d.splines[1].points[0].smooth);
  EXPECT_EQ(d.splines[2].points[1].in.magnitude, 1.5f);
  ASSERT_EQ(d.stacks.size(), 2u);
  EXPECT_EQ(d.stacks[0], (std::vector<PointId>{{1, 1}, {0, 1}}));
  ASSERT_EQ(d.hooks.size(), 1u);
  EXPECT_EQ(d.hooks[0].hook, (PointId{3, 1}));
  EXPECT_EQ(d.hooks[0].carrier, (PointId{0, 1}));  // the non-hook above it
  const Matrix identity{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};
  for (int r = 0; r < 3; ++r)  // no view given: the identity both ways
    for (int c = 0; c < 4; ++c) EXPECT_TRUE(d.view.m[r][c] == identity.m[r][c] && d.inverseView.m[r][c] == identity.m[r][c]);
  ASSERT_EQ(d.muscleEffects.size(), 1u);
  EXPECT_EQ(d.muscleEffects[0].offset, Vector(0, 0.5f, 0));
  // A quarter turn after a y-flipping scale by 2: x' = 2y + 50, y' = 2x + 300.
  Figure f(d);
  const Vector screen = f.Position(PointId{0, 3}, Space::kScreen);
  EXPECT_NEAR(screen.x, 50.0f, 1e-4f);
  EXPECT_NEAR(screen.y, 316.0f, 1e-4f);
  // The hook sits half way along the rail's straight middle segment.
  EXPECT_NEAR(f.Position(PointId{3, 1}, Space::kModel).x, 4.0f, 1e-5f);
}

struct BadFile {
  const char* name;
  const char* text;
  int line;
  const char* reason;  // a part of the reason
};

// A spline "a" of two points, the text open after "stacks" on line 4.
#define SPLINE_A_THEN_STACKS \
  "{\"splines\": [\n  {\"name\": \"a\", \"points\": [{\"at\": [0, 0]}, {\"at\": [1, 0]}]}\n],\n \"stacks\": "

const BadFile kBadFiles[] = {
    {"SyntaxError", "{\n  \"splines\": [\n    {\"name\": \"a\",, }\n  ]\n}", 3, "malformed JSON: syntax error"},
    {"SyntaxErrorAtALinesStart", "{\n  \"splines\": [\n,\n  ]\n}", 3, "malformed JSON: syntax error"},
    {"ClosedSplineOfOne", "{\"splines\": [\n  {\"closed\": true, \"points\": [{\"at\": [0, 0]}]}\n]}", 2,
     "a closed spline needs at least two points"},
    {"NumberOverflow", "{\"splines\": [\n  {\"name\": \"a\", \"points\": [{\"at\": [1e999, 0]}]}\n]}", 2,
     "malformed JSON: number overflow parsing '1e999'"},
    {"NotAnObject", "[1, 2]", 1, "the figure must be an object"},
    {"UnknownKey", "{\n  \"splines\": [],\n  \"colour\": 3\n}", 3, "unknown key 'colour'"},
    {"NoSplines", "{\n  \"splines\": []\n}", 2, "\"splines\" must be a non-empty array"},
    {"NoPoints", "{\"splines\": [\n  {\"name\": \"a\", \"points\": []}\n]}", 2, "needs \"points\": a non-empty array"},
    {"UnknownSplineKey", "{\"splines\": [\n  {\"points\": [{\"at\": [0, 0]}],\n   \"colour\": 1}\n]}", 3,
     "unknown key 'colour'"},
    // A key the line index cannot match (written with an escape) is reported
    // at the line of its nearest ancestor: here the spline.
    {"EscapedUnknownKey", "{\"splines\": [\n  {\"points\": [{\"at\": [0, 0]}],\n   \"\\u0063olour\": 1}\n]}", 2,
     "unknown key 'colour'"},
    {"UnknownTransformKey", "{\"splines\": [{\"points\": [{\"at\": [0, 0]}]}],\n \"screen\": {\"rotate\": 90,\n   \"skew\": 1}}",
     3, "unknown key 'skew'"},
    {"DuplicateName",
     "{\"splines\": [\n  {\"name\": \"a\", \"points\": [{\"at\": [0, 0]}, {\"at\": [1, 0]}]},\n"
     "  {\"name\": \"a\", \"points\": [{\"at\": [0, 1]}, {\"at\": [1, 1]}]}\n]}",
     3, "duplicate spline name 'a'"},
    {"CoordinateNotANumber",
     "{\"splines\": [\n  {\"name\": \"a\", \"points\": [\n    {\"at\": [0, \"x\"]},\n    {\"at\": [1, 0]}]}\n]}", 3,
     "\"at\" must be a number"},
    {"CoordinateTooLarge", "{\"splines\": [\n  {\"points\": [{\"at\": [0, 2e6]}]}\n]}", 2, "within +-1e+06"},
    {"SingularScreen", "{\"screen\": {\"matrix\":\n [[1, 0, 0, 0], [0, 1, 0, 0], [0, 0, 0, 0]]},\n \"splines\": "
     "[{\"points\": [{\"at\": [0, 0]}]}]}", 2, "not invertible"},
    {"UnknownSplineInStack",
     "{\"splines\": [\n  {\"name\": \"a\", \"points\": [{\"at\": [0, 0]}, {\"at\": [1, 0]}]}\n],\n"
     " \"stacks\": [[\"a:0\",\n   \"b:0\"]]}",
     5, "unknown spline 'b'"},
    {"IndexOutOfRange",
     "{\"splines\": [\n  {\"name\": \"a\", \"points\": [{\"at\": [0, 0]}, {\"at\": [1, 0]}]},\n"
     "  {\"name\": \"b\", \"points\": [{\"at\": [0, 0]}, {\"at\": [0, 1]}]}\n],\n \"stacks\": [[\"a:0\", \"b:2\"]]}",
     5, "point index 2 out of range: spline 'b' has 2 points"},
    {"StackedApart",
     "{\"splines\": [\n  {\"name\": \"a\", \"points\": [{\"at\": [0, 0]}, {\"at\": [1, 0]}]},\n"
     "  {\"name\": \"b\", \"points\": [{\"at\": [0, 1]}, {\"at\": [0, 2]}]}\n],\n \"stacks\": [[\"a:0\", \"b:0\"]]}",
     5, "point 1:0: stacked points must share their position"},
    {"StackedTwice",
     "{\"splines\": [\n  {\"name\": \"a\", \"points\": [{\"at\": [0, 0]}, {\"at\": [1, 0]}]},\n"
     "  {\"name\": \"b\", \"points\": [{\"at\": [0, 0]}, {\"at\": [1, 0]}]}\n],\n"
     " \"stacks\": [[\"a:0\", \"b:0\"],\n   [\"a:1\", \"b:1\", \"a:0\"]]}",
     6, "already in a stack"},
    {"HookOnTop",
     "{\"splines\": [\n  {\"name\": \"a\", \"points\": [{\"at\": [0, 0]}, {\"at\": [1, 0]}]},\n"
     "  {\"name\": \"h\", \"points\": [{\"at\": [1, 1]}, {\"hook\": 0.5}]}\n],\n \"stacks\": [[\"h:1\", \"a:0\"]]}",
     5, "a hook needs a carrier"},
    {"CarrierWithoutNext",
     "{\"splines\": [\n  {\"name\": \"a\", \"points\": [{\"at\": [0, 0]}, {\"at\": [1, 0]}]},\n"
     "  {\"name\": \"h\", \"points\": [{\"at\": [1, 1]},\n    {\"hook\": 0.5}]}\n],\n"
     " \"stacks\": [[\"a:1\", \"h:1\"]]}",
     6, "point 0:1: a carrier needs a next point"},
    {"HookHangingNowhere", "{\"splines\": [\n  {\"name\": \"h\", \"points\": [{\"at\": [1, 1]},\n    {\"hook\": 0.25}]}\n]}",
     3, "hook-carrier"},
    // 33 levels, the first an object, after a string holding brackets and an
    // escaped quote; 32 levels are parsed (and refused as not an object).
    {"TooDeep", "{\"s\": \"]\\\"]\", \"t\": [[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]}", 1, "nesting deeper than 32"},
    {"DeepestAllowed", "[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]", 1, "the figure must be an object"},
    {"ShortDelta", "{\"splines\": [\n  {\"points\": [{\"at\": [0, 0], \"in\": [0, 10]}]}\n]}", 2,
     "a delta must be [pitch, yaw, magnitude]"},
    {"TwoRowMatrix", "{\"view\": {\"matrix\": [[1, 0, 0, 0], [0, 1, 0, 0]]},\n \"splines\": [{\"points\": [{\"at\": [0, 0]}]}]}",
     1, "a matrix must be 3 rows of 4 numbers"},
    {"StackOfOne", SPLINE_A_THEN_STACKS "[[\"a:0\"]]}", 4, "a stack must be an array of at least 2"},
    {"ReferenceNotAPoint", SPLINE_A_THEN_STACKS "[[\"a:0\", true]]}", 4,
     "a point reference must be \"spline:index\" or [spline, index]"},
    {"ReferenceWithoutIndex", SPLINE_A_THEN_STACKS "[[\"a:0\", \"a:\"]]}", 4, "malformed point reference 'a:'"},
    {"FiveDigitIndex", SPLINE_A_THEN_STACKS "[[\"a:0\", \"a:12345\"]]}", 4,
     "point index 12345 out of range: spline 'a' has 2 points"},
    {"NumericIndexPastTheLimit", SPLINE_A_THEN_STACKS "[[\"a:0\", [0, 60000]]]}", 4,
     "point index 60000 out of range: spline 0 has 2 points"},
};
#undef SPLINE_A_THEN_STACKS

void PrintTo(const BadFile& bad, std::ostream* os) { *os << bad.name; }

void ExpectRefused(const std::string& text, int line, const char* reason) {
  const long before = MarrowLiveBlocks();
  try {
    ReadFigureFile(text);
    ADD_FAILURE() << "accepted";
  } catch (const FigureFileError& e) {
    EXPECT_EQ(e.line(), line) << e.what();
    EXPECT_NE(e.reason().find(reason), std::string::npos) << e.what();
    EXPECT_EQ(std::string(e.what()), "line " + std::to_string(line) + ": " + e.reason());
  }
  EXPECT_EQ(MarrowLiveBlocks(), before);
}

class FigureFileRejects : public ::testing::TestWithParam<BadFile> {};

TEST_P(FigureFileRejects, WithLineAndReasonAndNothingKept) {
  ExpectRefused(GetParam().text, GetParam().line, GetParam().reason);
}

INSTANTIATE_TEST_SUITE_P(Cases, FigureFileRejects, ::testing::ValuesIn(kBadFiles),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(FigureFile, WritingAndReadingBackKeepsEveryBit) {
  // The shared figures that load, and one built here with values that print
  // long: -0, a denormal, thirds, a hook parameter off the snap points.
  std::vector<FigureDescription> figures = test::SharedFigures();
  ASSERT_GE(figures.size(), 4u);
  Figure built;
  SplineDesc s;
  s.points = {PointDesc{Vector(-0.0f, 1.0f / 3, 1e-40f)}, PointDesc{Vector(2, 0.1f, 0)}, PointDesc{Vector(3, 1, 0)}};
  s.points[1].in = Delta{-0.0f, 1.0f / 7, 0.3f};
  s.points[2].out = Delta{0, 0, 2};  // a length factor alone
  s.points[0].in = Delta{0, 0, 0.5f};
  built.AddSpline(s);
  SplineDesc hook;
  hook.points = {PointDesc{Vector(0, 5, 0)}, PointDesc{}};
  hook.points[1].hook = true;
  hook.points[1].s = 0.6f;
  built.AddSpline(hook);
  built.AddHook(PointId{1, 1}, PointId{0, 1});
  built.SetScreen(Matrix{{{0.7f, -0.3f, 0, 11.1f}, {0.3f, 0.7f, 0, -2.2f}, {0, 0, 1, 0}}});
  built.SetMuscleMode(true);
  figures.push_back(built.Describe());
  for (const FigureDescription& d : figures) {
    const std::string text = WriteFigureFile(d);
    const FigureDescription back = ReadFigureFile(text);
    EXPECT_EQ(WriteFigureFile(back), text);
    Figure a(d), b(back);
    EXPECT_EQ(test::Answers(a), test::Answers(b)) << text;
  }
}

TEST(FigureFile, PointsAreCountedAcrossSplines) {
  // Two splines of 30,001 points: each alone is allowed, together too many.
  std::string spline = "{\"points\": [{\"at\": [0, 0]}";
  for (int i = 1; i < 30001; ++i) spline += ", {\"at\": [0, 0]}";
  spline += "]}";
  ExpectRefused("{\"splines\": [" + spline + ",\n" + spline + "]}", 2, "more than 60000 points in all");
}

TEST(FigureFile, HostEffectsCannotBeWritten) {
  struct Nudge final : CustomMuscleEffect {};
  Figure f;
  f.AddSpline(SplineDesc{{PointDesc{Vector(0, 0, 0)}}, false, "s"});
  f.AddMuscleEffect(PointId{0, 0}, std::make_shared<Nudge>());
  EXPECT_THROW(WriteFigureFile(f.Describe()), FigureError);
}

}  // namespace
}  // namespace splinecore
