// Degenerate and non-finite input. Finite, moderate input (coincident or
// collinear points, zero and negative magnitudes, angles of any finite size,
// hooks on zero-length segments, singular views) gives finite answers from
// every getter and measure, and degenerate geometry gives zero vectors.
// Non-finite input makes every call return (the asan preset turns any
// undefined behaviour, float-to-int conversions included, into a failure),
// and the results the rules define for it still hold.
#include <cfloat>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "figure_test.h"
#include "splinecore/splinecore.h"

namespace splinecore {
namespace {

using test::ExpectVector;
using test::FixedEffect;
using test::IdentityMatrix;
using test::kNoTurn;
using test::MakeMatrix;
using test::TestFigure;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

// A main spline, and optionally a hook on its first segment (from points[0],
// the carrier, to points[1]) with a partner spline through each end.
struct Shape {
  std::string name;
  std::vector<Vector> points;
  bool closed = false;
  bool smooth = true;
  Delta delta = kNoTurn;  // on both sides of every main point
  bool hook = false;
  float s = 0.5f;
  Matrix screen = IdentityMatrix(), inverseScreen = IdentityMatrix();
  Matrix view = IdentityMatrix(), inverseView = IdentityMatrix();
};

struct Built {
  std::vector<SegmentCP*> main;  // the main spline in order
  std::vector<SegmentCP*> all;   // every control point
  std::vector<SegmentCP*> firsts;  // first point of every spline, the main one first
  HookSegmentCP* hook = nullptr;
};

Built Build(TestFigure& f, const Shape& shape) {
  Built b;
  for (const Vector& p : shape.points) {
    SegmentCP* cp = f.NewCP(p, shape.smooth ? cpflag::smooth : 0);
    cp->indelta = cp->outdelta = shape.delta;
    b.main.push_back(cp);
  }
  b.firsts.push_back(test::LinkSpline(f, b.main, shape.closed));
  b.all = b.main;  // the other splines follow
  if (shape.hook) {
    const Vector a = shape.points[0], c = shape.points[1];
    SegmentCP* over0 = f.NewCP(a, cpflag::smooth);
    SegmentCP* over1 = f.NewCP(c, cpflag::smooth);
    b.firsts.push_back(f.Open({f.NewCP(a + Vector(0, 1, 0)), over0, f.NewCP(a - Vector(0, 1, 0))}));
    b.firsts.push_back(f.Open({f.NewCP(c + Vector(0, 1, 0)), over1, f.NewCP(c - Vector(0, 1, 0))}));
    b.hook = f.NewHook(shape.s);
    b.firsts.push_back(f.Open({f.NewCP(a + Vector(1, 2, 0)), b.hook, f.NewCP(a + Vector(2, -2, 0))}));
    TestFigure::Stack({over0, b.main[0], b.hook});
    TestFigure::Stack({over1, b.main[1]});
    for (std::size_t k = 1; k < b.firsts.size(); ++k)
      for (SegmentCP* c = b.firsts[k]; c != nullptr; c = c->next) b.all.push_back(c);
  }
  f.SetScreen(shape.screen, shape.inverseScreen);
  f.SetView(shape.view, shape.inverseView);
  f.AddMuscleTable(static_cast<std::uint16_t>(f.cache.nextId));
  for (SegmentCP* cp : b.all) f.AddEffect<FixedEffect>(f.AddMuscleData(cp), Vector(0.5f, -0.25f, 1));
  return b;
}

// Every answer of every getter and measure, in both modes, with a label.
std::vector<std::pair<std::string, Vector>> QueryAll(TestFigure& f, const Built& b) {
  std::vector<std::pair<std::string, Vector>> out;
  auto add = [&out](const std::string& what, std::size_t i, const Vector& v) {
    out.emplace_back(what + " of point " + std::to_string(i), v);
  };
  for (int muscle = 0; muscle < 2; ++muscle) {
    f.SetMuscleMode(muscle != 0);
    for (SegmentCP* cp : b.all) cp->Touch(0);
    ++f.cache.generation;
    ++f.cache.screenGeneration;
    for (std::size_t i = 0; i < b.all.size(); ++i) {
      SegmentCP* c = b.all[i];
      add("p", i, c->Getp());
      add("screenp", i, c->Getscreenp());
      add("it", i, c->Getit());
      add("ot", i, c->Getot());
      add("screenit", i, c->Getscreenit());
      add("screenot", i, c->Getscreenot());
      add(muscle ? "musclep" : "nonmusclep", i, muscle ? c->Getmusclep() : c->Getnonmusclep());
      add("mit", i, c->Getmit());
      add("mot", i, c->Getmot());
      Vector in, outT, n1, n2;
      if (c->GetTangents(&in, &outT, &n1, &n2, muscle) == 1) add("tangent-rule normal", i, n1);
      if (c->IsHook()) {
        auto* h = static_cast<HookSegmentCP*>(c);
        for (Vector* v : {h->Gethit(), h->Gethot(), h->Getpit(), h->Getpot()}) add("hook piece", i, *v);
      }
      if (c->next != nullptr) add("CurveLength", i, Vector(CurveLength(c), 0, 0));
      add("GetTotalLength", i, Vector(GetTotalLength(c), 0, 0));
      for (float length : {0.0f, 0.5f, 2.0f, 1e3f}) {
        Vector position(0, 0, 0), direction(0, 0, 0);
        const float walked = PositionDirectionFromSubLength(c, length, &position, &direction);
        add("point at a length", i, position);
        add("direction at a length", i, direction);
        add("walked length", i, Vector(walked, 0, 0));
      }
    }
  }
  return out;
}

const Matrix kZero = MakeMatrix({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
const Matrix kFlat = MakeMatrix({1, 0, 0, 5, 0, 1, 0, -3, 0, 0, 0, 0});  // drops z

std::vector<Shape> ModerateShapes() {
  const Vector o(1, 2, 3);
  std::vector<Shape> shapes = {
      {"coincident open smooth", {o, o, o}},
      {"coincident closed peaked", {o, o, o}, true, false},
      {"collinear smooth, turned", {{0, 0, 0}, {1, 0, 0}, {3, 0, 0}, {4, 0, 0}}, false, true, {30, 60, 1.5f}},
      {"on top of its prev, turned", {{0, 0, 0}, {0, 0, 0}, {2, 1, 0}, {3, 3, 0}}, false, true, {45, 45, 1}},
      {"next on the midpoint", {{0, 0, 0}, {1, 1, 0}, {2, 2, 0}}, false, true, {10, 10, 1}},
      {"closed pair", {{0, 0, 0}, {1, 0, 0}}, true, true, {90, 180, 1}},
      {"zero magnitude", {{0, 0, 0}, {1, 2, 0}, {3, 0, 1}}, false, true, {30, 30, 0}},
      {"negative magnitude", {{0, 0, 0}, {1, 2, 0}, {3, 0, 1}}, false, false, {10, -20, -2}},
      {"hook on a zero-length segment", {o, o, {4, 0, 0}}, false, false, kNoTurn, true},
      {"hook on a collinear segment", {{0, 0, 0}, {3, 0, 0}, {6, 0, 0}}, false, true, kNoTurn, true, 0.75f},
  };
  Shape bent = {"", {{0, 0, 0}, {2, 1, 0}, {3, 3, 1}, {0, 4, 0}}, false, true, kNoTurn, true};
  for (float angle : {FLT_MAX, -FLT_MAX, 2147483520.0f, -2147483520.0f, 3e9f, 720.5f, -359.999f, 1e-30f}) {
    bent.name = "angle " + std::to_string(angle);
    bent.delta = {angle, -angle, 1};
    shapes.push_back(bent);
  }
  bent.delta = {30, 30, 1};
  bent.name = "zero screen matrix";
  bent.screen = bent.inverseScreen = kZero;
  shapes.push_back(bent);
  bent.name = "screen matrix without z";
  bent.screen = bent.inverseScreen = kFlat;
  shapes.push_back(bent);
  bent.name = "zero view matrix";
  bent.screen = bent.inverseScreen = IdentityMatrix();
  bent.view = bent.inverseView = kZero;
  shapes.push_back(bent);
  return shapes;
}

TEST(DegenerateInput, ModerateInputGivesFiniteAnswers) {
  for (const Shape& shape : ModerateShapes()) {
    SCOPED_TRACE(shape.name);
    const long live = MarrowLiveBlocks();
    {
      TestFigure f;
      const Built b = Build(f, shape);
      for (const auto& [what, v] : QueryAll(f, b))
        EXPECT_TRUE(std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z))
            << what << " = (" << v.x << ", " << v.y << ", " << v.z << ")";
      GroupNode* group = nullptr;
      for (SegmentCP* cp : b.main) cp->AddToGroup(&group, 1);
      MoveGroup(group, Vector(1, 1, 1));
      ConvertGroup(group, 1);
      for (SegmentCP* cp : b.main) EXPECT_TRUE(std::isfinite(cp->Getp().x) && std::isfinite(cp->Getit().y));
      FreeGroup(&group);
    }
    EXPECT_EQ(MarrowLiveBlocks(), live);
  }
}

TEST(DegenerateInput, CoincidentPointsGiveZeroTangentsAndLengths) {
  for (bool closed : {false, true}) {
    for (bool smooth : {false, true}) {
      TestFigure f;
      const Vector o(1, 2, 3);
      const Built b = Build(f, {"coincident", {o, o, o}, closed, smooth, {30, 45, 2}});
      for (SegmentCP* c : b.main) {
        ExpectVector(c->Getit(), 0, 0, 0);
        ExpectVector(c->Getot(), 0, 0, 0);
        ExpectVector(c->Getscreenit(), o);
      }
      EXPECT_EQ(GetTotalLength(b.main[0]), 0.0f);
    }
  }
}

TEST(DegenerateInput, SingularScreenMatrixGivesZeroTangents) {
  // Every screen position is the zero matrix's translation: no screen
  // tangent, and the zero inverse carries nothing back either.
  TestFigure f;
  Shape shape{"zero screen", {{0, 0, 0}, {2, 1, 0}, {3, 3, 1}}, false, true, {30, 30, 2}};
  shape.screen = shape.inverseScreen = kZero;
  const Built b = Build(f, shape);
  for (SegmentCP* c : b.main) {
    ExpectVector(c->Getit(), 0, 0, 0);
    ExpectVector(c->Getot(), 0, 0, 0);
  }
}

TEST(DegenerateInput, HookOnZeroLengthSegmentSitsOnIt) {
  TestFigure f;
  const Vector o(1, 2, 3);
  const Built b = Build(f, {"zero-length hooked segment", {o, o, o}, false, false, kNoTurn, true});
  // Both ends and every handle point coincide: the hook and its pieces too.
  ExpectVector(b.hook->Getscreenp(), o);
  for (Vector* v : {b.hook->Gethit(), b.hook->Gethot(), b.hook->Getpit(), b.hook->Getpot()}) ExpectVector(*v, o);
}

// Listed in the host guide: the one non-finite answer from finite input
// that the arithmetic gives. A negative length on a segment whose first
// chord is zero selects that chord (0 > -1) and divides by it: t = +inf,
// and the cubic at t is 0 * inf = NaN.
TEST(DegenerateInput, NegativeLengthOnZeroLengthSegmentIsNaN) {
  TestFigure f;
  const Vector o(1, 2, 3);
  const Built b = Build(f, {"zero-length segment", {o, o}, false, false});
  Vector position(0, 0, 0), direction(0, 0, 0);
  EXPECT_EQ(PositionDirectionFromSubLength(b.main[0], -1.0f, &position, &direction), 0.0f);
  ExpectVector(position, kNaN, kNaN, kNaN);
  ExpectVector(direction, kNaN, kNaN, kNaN);
}

TEST(NonFiniteInput, EveryCallReturnsAndTheMemoryBalances) {
  for (float bad : {kNaN, kInf, -kInf}) {
    std::vector<Shape> shapes;
    Shape base{"", {{0, 0, 0}, {2, 1, 0}, {3, 3, 1}, {0, 4, 0}}, false, true, {30, 30, 1}, true};
    shapes.push_back(base);
    shapes.back().points[1].y = bad;
    shapes.push_back(base);
    shapes.back().delta = {bad, 10, 1};
    shapes.push_back(base);
    shapes.back().delta = {0, 0, bad};
    shapes.push_back(base);
    shapes.back().s = bad;
    for (Matrix Shape::*m : {&Shape::screen, &Shape::inverseScreen, &Shape::view, &Shape::inverseView}) {
      shapes.push_back(base);
      (shapes.back().*m).m[1][1] = bad;
    }
    for (std::size_t i = 0; i < shapes.size(); ++i) {
      SCOPED_TRACE("value " + std::to_string(bad) + ", case " + std::to_string(i));
      const long live = MarrowLiveBlocks();
      {
        TestFigure f;
        const Built b = Build(f, shapes[i]);
        EXPECT_FALSE(QueryAll(f, b).empty());
        GroupNode* group = nullptr;
        for (SegmentCP* cp : b.main) cp->AddToGroup(&group, 1);
        MoveGroup(group, Vector(bad, 1, 0));
        ConvertGroup(group, 0);
        FreeGroup(&group);
        Slice* slices = nullptr;
        Slice* slice = AddSlice(&slices);
        slice->first = b.main[0];
        ReverseSlice(slice);
        f.Unregister(b.main[0]);
        f.Register(slice->first);
        std::vector<SegmentCP*> firsts = b.firsts;
        firsts[0] = slice->first;
        DeleteSlice(&slices, slice);
        EXPECT_EQ(ValidateFigure(firsts.data(), static_cast<int>(firsts.size()), nullptr, nullptr), 0);
      }
      EXPECT_EQ(MarrowLiveBlocks(), live);
    }
  }
}

TEST(NonFiniteInput, AngleThatCannotBeReducedMakesNoTurn) {
  // A peaked point between (4,0,0) and (0,0,0) at (2,0,0) has the half
  // chords (1,0,0) on both sides; an angle that is not finite or beyond a
  // 32-bit integer leaves them as they are.
  for (float angle : {kNaN, kInf, -kInf, 3e9f, -FLT_MAX}) {
    TestFigure f;
    const Built b = Build(f, {"peaked", {{4, 0, 0}, {2, 0, 0}, {0, 0, 0}}, false, false, {angle, angle, 1}});
    ExpectVector(b.main[1]->Getit(), 1, 0, 0);
    ExpectVector(b.main[1]->Getot(), 1, 0, 0);
  }
}

TEST(NonFiniteInput, LonePointMeasuresOne) {
  TestFigure f;
  const Built b = Build(f, {"lone", {{kNaN, kInf, -kInf}}});
  EXPECT_EQ(GetTotalLength(b.main[0]), 1.0f);
}

}  // namespace
}  // namespace splinecore
