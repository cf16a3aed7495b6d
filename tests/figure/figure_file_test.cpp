// Figure files: a valid file describes the figure it says; a bad one is
// refused with its line and reason; writing and reading back keeps every
// bit, for the shared figures of examples/figures and the fuzz corpus.
#include "splinecore/figure_file.h"

#include <fstream>
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
  ASSERT_EQ(d.muscleEffects.size(), 1u);
  EXPECT_EQ(d.muscleEffects[0].offset, Vector(0, 0.5f, 0));
  // A scale alone: y flipped, nothing turned or moved, both ways; a
  // translation alone: y flipped (the scale is 1), moved by (3, 4) and back;
  // coordinates at the limit.
  const FigureDescription scaled = ReadFigureFile(
      R"({"view": {"scale": 2}, "screen": {"translate": [3, 4]}, "splines": [{"points": [{"at": [1e6, -1e6]}]}]})");
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 4; ++c) {
      const float k = c != r ? 0.0f : r == 1 ? -1.0f : 1.0f;
      EXPECT_TRUE(scaled.view.m[r][c] == 2 * k && scaled.inverseView.m[r][c] == k / 2) << r << "," << c;
      EXPECT_TRUE(d.view.m[r][c] == (r == c) && d.inverseView.m[r][c] == (r == c)) << "no view: the identity";
      const float t = c != 3 || r == 2 ? 0.0f : r == 0 ? 3.0f : 4.0f;
      EXPECT_TRUE(scaled.screen.m[r][c] == k + t && scaled.inverseScreen.m[r][c] == k + (r == 0 ? -t : t)) << r << "," << c;
    }
  // A quarter turn after a y-flipping scale by 2: x' = 2y + 50, y' = 2x + 300.
  Figure f(d);
  const Vector screen = f.Position(PointId{0, 3}, Space::kScreen);
  EXPECT_NEAR(screen.x, 50.0f, 1e-4f);
  EXPECT_NEAR(screen.y, 316.0f, 1e-4f);
  // The hook sits half way along the rail's straight middle segment.
  EXPECT_NEAR(f.Position(PointId{3, 1}, Space::kModel).x, 4.0f, 1e-5f);
}

struct BadFile {
  std::string name;
  std::string text;
  int line;
  std::string reason;  // a part of the reason
};

// The cases of refused_files.txt (its first lines tell the format).
std::vector<BadFile> RefusedFiles() {
  std::ifstream in(std::string(SPLINECORE_SOURCE_DIR) + "/tests/figure/refused_files.txt");
  std::vector<BadFile> files;
  for (std::string row; std::getline(in, row);) {
    if (row.rfind('#', 0) == 0) continue;
    if (row.rfind("=== ", 0) == 0) {
      const std::size_t comma = row.find(", line "), colon = row.find(": ", comma);
      files.push_back(BadFile{row.substr(4, comma - 4), "", std::stoi(row.substr(comma + 7)), row.substr(colon + 2)});
    } else if (!files.empty()) {
      files.back().text += row + "\n";
    }
  }
  for (BadFile& f : files) f.text.pop_back();
  return files;
}

void PrintTo(const BadFile& bad, std::ostream* os) { *os << bad.name; }

void ExpectRefused(const std::string& text, int line, const std::string& reason) {
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

INSTANTIATE_TEST_SUITE_P(Cases, FigureFileRejects, ::testing::ValuesIn(RefusedFiles()),
                         [](const auto& info) { return info.param.name; });

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

TEST(FigureFile, SplinesAndPointsAreCountedAcrossTheFile) {
  // 4,096 splines with 60,000 points in all are allowed; one spline or one
  // point more is too many. Spline k starts on line k + 1.
  const std::string one = "{\"points\": [{\"at\": [0, 0]}]},\n";
  std::string splines = "{\"splines\": [", last = "{\"points\": [{\"at\": [0, 0]}";
  for (int i = 0; i < 4095; ++i) splines += one;
  for (int i = 4096; i < 60000; ++i) last += ", {\"at\": [0, 0]}";
  EXPECT_EQ(ReadFigureFile(splines + last + "]}]}").splines.size(), 4096u);
  ExpectRefused(splines + last + ", {\"at\": [0, 0]}]}]}", 4096, "more than 60000 points in all");
  ExpectRefused(splines + one + last + "]}]}", 1, "more than 4096 splines");
}

TEST(FigureFile, HostEffectsCannotBeWritten) {
  struct Nudge final : CustomMuscleEffect {};
  Figure f;
  f.AddSpline(SplineDesc{{PointDesc{Vector(0, 0, 0)}}, false, "s"});
  f.AddMuscleEffect(PointId{0, 0}, std::make_shared<Nudge>());
  EXPECT_THROW(WriteFigureFile(f.Describe()), FigureError);
  f.SetMuscleMode(true);
  f.SplineLengths();
  EXPECT_FALSE(f.ControlPoint(PointId{0, 0})->IsMuscleMoved());  // the defaults move and turn nothing
}

}  // namespace
}  // namespace splinecore
