// The figure-file reader: a valid description builds the figure it says; a
// malformed or inconsistent one is rejected with its line and reason, and
// leaves nothing allocated.
#include <gtest/gtest.h>

#include "figure_file.h"
#include "marrow/marrow.h"
#include "scene.h"

namespace splinecore::demo {
namespace {

// Two rails crossed by two posts, with one hook on each... kept small: a rail,
// two posts stacked on its middle segment, and a hook spline riding on it.
const char kValid[] = R"({
  "view": {"rotate": 15, "scale": 40, "translate": [50, 300]},
  "splines": [
    {"name": "rail", "points": [{"at": [0, 0]}, {"at": [2, 0]}, {"at": [6, 0]}, {"at": [8, 0]}]},
    {"name": "a", "points": [{"at": [2, -1], "smooth": false}, {"at": [2, 0]}, {"at": [2, 1]}]},
    {"name": "b", "points": [{"at": [6, -1]}, {"at": [6, 0], "in": [0, 10, 1.5]}, {"at": [6, 1]}]},
    {"name": "cross", "points": [{"at": [4, -1]}, {"hook": 0.5}, {"at": [4, 1]}]}
  ],
  "stacks": [["a:1", "rail:1", "cross:1"], ["b:1", "rail:2"]],
  "muscle": [{"point": "b:1", "move": [0, 0.5]}],
  "measure": "rail"
})";

TEST(FigureFile, BuildsWhatTheDescriptionSays) {
  const long before = MarrowLiveBlocks();
  {
    FigureFileResult r = ReadFigureFile(kValid);
    ASSERT_NE(r.figure, nullptr) << FormatFigureFileError(r.error);
    HostFigure& f = *r.figure;
    ASSERT_EQ(f.splines.size(), 4u);
    EXPECT_EQ(f.measured, 0u);
    SegmentCP* carrier = f.splines[0].points[1];
    EXPECT_EQ(carrier->stackPrev, f.splines[1].points[1]);
    EXPECT_TRUE(carrier->IsHasHooks());
    EXPECT_TRUE(f.splines[3].points[1]->IsHook());
    EXPECT_FALSE(f.splines[1].points[0]->IsSmooth());
    EXPECT_EQ(f.splines[2].points[1]->indelta.magnitude, 1.5f);
    // In model mode the hook sits half way along the rail's straight middle
    // segment, at (4, 0); muscle mode lifts the segment's far end by 0.5.
    f.SetMuscleMode(false);
    EXPECT_EQ(QueryScene(f, f.measured, 4).splines[0].carried, 1);
    const Vector at = f.splines[3].points[1]->p;
    EXPECT_NEAR(at.x, 4.0f, 1e-5);
    EXPECT_NEAR(at.y, 0.0f, 1e-5);
    f.SetMuscleMode(true);
    QueryScene(f, f.measured, 4);
    EXPECT_GT(f.splines[3].points[1]->p.y, 0.1f);
  }
  EXPECT_EQ(MarrowLiveBlocks(), before);
}

struct BadFile {
  const char* name;
  const char* text;
  int line;
  const char* reason;  // a part of the reason
};

const BadFile kBadFiles[] = {
    {"SyntaxError", "{\n  \"splines\": [\n    {\"name\": \"a\",, }\n  ]\n}", 3, "malformed JSON: syntax error"},
    {"NumberOverflow", "{\"splines\": [\n  {\"name\": \"a\", \"points\": [{\"at\": [1e999, 0]}]}\n]}", 2,
     "malformed JSON: number overflow parsing '1e999'"},
    {"NotAnObject", "[1, 2]", 1, "the figure must be an object"},
    {"UnknownKey", "{\n  \"splines\": [],\n  \"colour\": 3\n}", 3, "unknown key 'colour'"},
    {"NoSplines", "{\n  \"splines\": []\n}", 2, "\"splines\" must be a non-empty array"},
    {"OnePoint", "{\"splines\": [\n  {\"name\": \"a\", \"points\": [{\"at\": [0, 0]}]}\n]}", 2,
     "needs \"points\": an array of at least 2 points"},
    {"DuplicateName",
     "{\"splines\": [\n  {\"name\": \"a\", \"points\": [{\"at\": [0, 0]}, {\"at\": [1, 0]}]},\n"
     "  {\"name\": \"a\", \"points\": [{\"at\": [0, 1]}, {\"at\": [1, 1]}]}\n]}",
     3, "duplicate spline name 'a'"},
    {"CoordinateNotANumber", "{\"splines\": [\n  {\"name\": \"a\", \"points\": [\n    {\"at\": [0, \"x\"]},\n"
     "    {\"at\": [1, 0]}]}\n]}", 3, "\"at\" must be a number"},
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
     5, "stack member 1 at (0, 1, 0) is not at its head's position (0, 0, 0)"},
    {"StackedTwice",
     "{\"splines\": [\n  {\"name\": \"a\", \"points\": [{\"at\": [0, 0]}, {\"at\": [1, 0]}]},\n"
     "  {\"name\": \"b\", \"points\": [{\"at\": [0, 0]}, {\"at\": [1, 0]}]}\n],\n"
     " \"stacks\": [[\"a:0\", \"b:0\"],\n   [\"a:1\", \"b:1\", \"a:0\"]]}",
     6, "point 'a:0' is already in a stack"},
    // Structure the validator rejects: a hook whose carrier ends its spline.
    {"CarrierWithoutNext",
     "{\"splines\": [\n  {\"name\": \"a\", \"points\": [{\"at\": [0, 0]}, {\"at\": [1, 0]}]},\n"
     "  {\"name\": \"h\", \"points\": [{\"at\": [1, 1]},\n    {\"hook\": 0.5}]}\n],\n"
     " \"stacks\": [[\"a:1\", \"h:1\"]]}",
     4, "figure rule hook-carrier: a hook's carrier has no next"},
    {"HookWithoutCarrier",
     "{\"splines\": [\n  {\"name\": \"h\", \"points\": [{\"at\": [1, 1]},\n    {\"hook\": 0.25}]}\n]}", 3,
     "figure rule hook-carrier: a hook has no carrier above it"},
    {"TooDeep", "[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]", 1, "nesting deeper than 32"},
};

void PrintTo(const BadFile& bad, std::ostream* os) { *os << bad.name; }

class FigureFileRejects : public ::testing::TestWithParam<BadFile> {};

TEST_P(FigureFileRejects, WithLineAndReasonAndNothingKept) {
  const BadFile& bad = GetParam();
  const long before = MarrowLiveBlocks();
  FigureFileResult r = ReadFigureFile(bad.text);
  EXPECT_EQ(r.figure, nullptr);
  EXPECT_EQ(r.error.line, bad.line) << r.error.reason;
  EXPECT_NE(r.error.reason.find(bad.reason), std::string::npos) << r.error.reason;
  EXPECT_EQ(MarrowLiveBlocks(), before);
}

INSTANTIATE_TEST_SUITE_P(Cases, FigureFileRejects, ::testing::ValuesIn(kBadFiles),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(FigureFile, FormatsTheLineBeforeTheReason) {
  EXPECT_EQ(FormatFigureFileError({7, "unknown key 'x'"}), "line 7: unknown key 'x'");
  EXPECT_EQ(FormatFigureFileError({0, "out of memory"}), "out of memory");
}

}  // namespace
}  // namespace splinecore::demo
