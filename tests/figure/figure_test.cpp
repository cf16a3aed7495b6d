// Figure: ownership, argument errors that change nothing, and the coherence
// contract (an edited figure answers as a figure rebuilt from its
// description, whatever was asked before).
#include "splinecore/figure.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "marrow/marrow.h"
#include "splinecore/measure.h"
#include "splinecore/segment_cp.h"

namespace splinecore {
namespace {

SplineDesc Line(std::initializer_list<Vector> at, bool closed = false) {
  SplineDesc s;
  s.closed = closed;
  for (const Vector& v : at) {
    PointDesc p;
    p.at = v;
    s.points.push_back(p);
  }
  return s;
}

PointDesc Hook(float s) {
  PointDesc p;
  p.hook = true;
  p.s = s;
  return p;
}

// Every float of a description, bit for bit, in one list.
std::vector<std::uint32_t> Bits(const std::vector<float>& values) {
  std::vector<std::uint32_t> bits(values.size());
  if (!values.empty()) std::memcpy(bits.data(), values.data(), values.size() * sizeof(float));
  return bits;
}

void Push(std::vector<float>& out, const Vector& v) { out.insert(out.end(), {v.x, v.y, v.z}); }
void Push(std::vector<float>& out, const Bezier& b) {
  for (const Vector& v : {b.p0, b.h0, b.h1, b.p1}) Push(out, v);
}

// Every answer of the figure, asked point by point, in order or backwards.
std::vector<std::uint32_t> Answers(Figure& f, bool backwards) {
  struct Query {
    PointId id;
    int kind;
  };
  std::vector<Query> queries;
  for (int s = 0; s < f.SplineCount(); ++s) {
    for (int i = 0; i < f.PointCount(s); ++i)
      for (int kind = 0; kind < 9; ++kind) queries.push_back({{s, i}, kind});
  }
  // Asked in either order, answers are listed in query order.
  std::vector<std::vector<float>> answers(queries.size());
  for (std::size_t k = 0; k < queries.size(); ++k) {
    const std::size_t at = backwards ? queries.size() - 1 - k : k;
    const Query& q = queries[at];
    std::vector<float>& out = answers[at];
    SegmentCP* c = f.ControlPoint(q.id);
    const bool owns = c->next != nullptr;
    switch (q.kind) {
      case 0: Push(out, f.Position(q.id, Space::kModel)); break;
      case 1: Push(out, f.Position(q.id, Space::kScreen)); break;
      case 2: if (f.MuscleMode()) Push(out, f.Position(q.id, Space::kMuscle)); break;
      case 3: if (owns) Push(out, f.Segment(q.id, Space::kScreen)); break;
      case 4: if (owns) Push(out, f.Segment(q.id, Space::kModel)); break;
      case 5: if (owns && f.MuscleMode()) Push(out, f.Segment(q.id, Space::kMuscle)); break;
      case 6: if (owns) out.push_back(f.SegmentLength(q.id)); break;
      case 7:
        for (const Bezier& b : f.HookPieces(q.id, f.MuscleMode() ? Space::kMuscle : Space::kScreen)) Push(out, b);
        break;
      case 8:
        if (q.id.index == 0) {
          const float total = f.SplineLength(q.id.spline);
          out.push_back(total);
          for (const PointOnSpline& p : f.PointsAtLengths(q.id.spline, {0.0f, total * 0.5f, total})) {
            Push(out, p.position);
            Push(out, p.direction);
          }
        }
        break;
    }
  }
  std::vector<float> all;
  for (const std::vector<float>& a : answers) all.insert(all.end(), a.begin(), a.end());
  return Bits(all);
}

class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}
  int Below(int n) { return static_cast<int>(engine_() % static_cast<std::uint32_t>(n)); }
  float Coordinate() { return static_cast<float>(Below(65) - 32) * 0.25f; }
  Vector Point() { return Vector(Coordinate(), Coordinate(), Coordinate()); }
  Delta AnyDelta() {
    return Delta{static_cast<float>(Below(9) - 4) * 7.5f, static_cast<float>(Below(9) - 4) * 7.5f,
                 0.5f * static_cast<float>(1 + Below(4))};
  }
  Matrix Scale(Matrix* inverse) {
    Matrix m{};
    *inverse = Matrix{};
    for (int r = 0; r < 3; ++r) {
      const float k = static_cast<float>(1 << Below(3)) * (Below(2) ? 0.5f : -1.0f);
      const float t = Coordinate();
      m.m[r][r] = k;
      m.m[r][3] = t;
      inverse->m[r][r] = 1.0f / k;
      inverse->m[r][3] = -t / k;
    }
    return m;
  }

 private:
  std::mt19937 engine_;
};

// Splines on a quarter grid, some closed, stacks where points are moved
// together, a hook spline riding on each of some segments, muscle offsets.
void BuildRandom(Figure& f, Random& r) {
  const int splines = 2 + r.Below(3);
  for (int s = 0; s < splines; ++s) {
    SplineDesc d;
    d.closed = r.Below(3) == 0;
    const int n = 2 + r.Below(4);
    for (int i = 0; i < n; ++i) {
      PointDesc p;
      p.at = r.Point();
      p.smooth = r.Below(3) != 0;
      if (r.Below(3) == 0) p.in = r.AnyDelta();
      if (r.Below(3) == 0) p.out = r.AnyDelta();
      d.points.push_back(p);
    }
    f.AddSpline(d);
  }
  for (int k = r.Below(3); k > 0; --k) {
    const PointId a{0, r.Below(f.PointCount(0))};
    const PointId b{1 + r.Below(splines - 1), 0};
    SegmentCP* ca = f.ControlPoint(a);
    SegmentCP* cb = f.ControlPoint(b);
    if (ca->stackNext != nullptr || ca->stackPrev != nullptr || cb->stackNext != nullptr || cb->stackPrev != nullptr)
      continue;
    f.Move(b, f.ControlPoint(a)->p);
    f.Stack({a, b});
  }
  for (int k = 1 + r.Below(3); k > 0; --k) {
    const int carrierSpline = r.Below(splines);
    const PointId carrier{carrierSpline, r.Below(f.PointCount(carrierSpline))};
    if (f.ControlPoint(carrier)->next == nullptr) continue;
    SplineDesc d;
    PointDesc end;
    end.at = r.Point();
    d.points = {end, Hook(0.25f * static_cast<float>(1 + r.Below(3))), end};
    d.points.back().at = r.Point();
    const int s = f.AddSpline(d);
    f.AddHook(PointId{s, 1}, carrier);
  }
  for (int k = r.Below(3); k > 0; --k) f.AddMuscleOffset(PointId{0, r.Below(f.PointCount(0))}, r.Point());
  Matrix inverse;
  const Matrix screen = r.Scale(&inverse);
  f.SetScreen(screen, inverse);
}

// One random edit; edits the figure refuses must leave it as it was.
void Edit(Figure& f, Random& r) {
  const int s = r.Below(f.SplineCount());
  const PointId id{s, r.Below(f.PointCount(s))};
  const FigureDescription before = f.Describe();
  try {
    switch (r.Below(8)) {
      case 0: f.Move(id, r.Point()); break;
      case 1: f.SetDeltas(id, r.AnyDelta(), r.AnyDelta()); break;
      case 2: f.SetSmooth(id, r.Below(2) == 0); break;
      case 3: f.SetHookS(id, 0.25f * static_cast<float>(r.Below(5))); break;
      case 4: f.Reverse(s); break;
      case 5: f.Delete(id); break;
      case 6: f.SetMuscleMode(!f.MuscleMode()); break;
      default: {
        Matrix inverse;
        const Matrix screen = r.Scale(&inverse);
        f.SetScreen(screen, inverse);
      }
    }
  } catch (const FigureError&) {
    Figure again(f.Describe());
    Figure original(before);
    if (f.Validate().empty()) {
      EXPECT_EQ(Answers(again, false), Answers(original, false));
    }
  }
}

TEST(Figure, EditedFigureAnswersAsItsRebuiltDescriptionInAnyOrder) {
  const long liveBefore = MarrowLiveBlocks();
  int compared = 0;
  for (std::uint32_t seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE(seed);
    Random r(seed);
    Figure live;
    BuildRandom(live, r);
    for (int edit = 0; edit < 25; ++edit) {
      SCOPED_TRACE(edit);
      // Ask part of the figure before the edit, so history could leak.
      if (live.Validate().empty() && r.Below(2) == 0) Answers(live, r.Below(2) == 0);
      Edit(live, r);
      if (!live.Validate().empty()) continue;
      Figure fresh(live.Describe());
      ASSERT_EQ(Answers(live, false), Answers(fresh, true));
      ++compared;
    }
  }
  EXPECT_GT(compared, 600);
  EXPECT_EQ(MarrowLiveBlocks(), liveBefore);
}

TEST(Figure, RefusedCallsNameThePointAndChangeNothing) {
  Figure f;
  f.AddSpline(Line({{0, 0, 0}, {4, 0, 0}}));
  f.AddSpline(Line({{1, 1, 0}, {2, 2, 0}}));
  SplineDesc withHook = Line({{0, 3, 0}, {1, 3, 0}});
  withHook.points.insert(withHook.points.begin() + 1, Hook(0.5f));
  f.AddSpline(withHook);
  // The hook hangs nowhere yet: queries report the figure invalid.
  EXPECT_THROW(f.SplineLength(0), FigureError);
  f.AddHook(PointId{2, 1}, PointId{0, 0});
  const std::vector<std::uint32_t> before = Bits({f.SplineLength(0), f.SplineLength(1)});
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
  refused([&] { f.Delete(PointId{1, 0}); f.Delete(PointId{1, 0}); }, "the only point of a spline");
  refused([&] { f.Delete(PointId{0, 0}); }, "carries hooks");
  refused([&] { f.AddHook(PointId{2, 1}, PointId{0, 0}); }, "already hangs");
  // Spline 1 lost one point to the accepted first Delete above.
  EXPECT_EQ(f.PointCount(1), 1);
  EXPECT_EQ(Bits({f.SplineLength(0)}).front(), before.front());
  Figure g;
  g.AddSpline(Line({{0, 0, 0}, {4, 0, 0}}));
  SplineDesc lone;
  lone.points = {Line({{0, 0, 0}}).points.front(), Hook(0.5f)};
  g.AddSpline(lone);
  refused([&] { g.AddHook(PointId{1, 1}, PointId{0, 1}); }, "point 0:1: a carrier needs a next");
}

TEST(Figure, StraightLineMeasuresItsLengthAndEnds) {
  // A straight open spline 0 -> 4 on x: its length is 4, the point at length
  // 0 is the first point and the point at the total is the last. Curves
  // travel from next toward prev: the direction points back to the first.
  Figure f;
  f.AddSpline(Line({{0, 0, 0}, {1, 0, 0}, {4, 0, 0}}));
  EXPECT_NEAR(f.SplineLength(0), 4.0f, 1e-5f);
  const PointOnSpline start = f.PointAtLength(0, 0.0f);
  const PointOnSpline end = f.PointAtLength(0, f.SplineLength(0));
  EXPECT_NEAR(start.position.x, 0.0f, 1e-5f);
  EXPECT_NEAR(end.position.x, 4.0f, 1e-5f);
  EXPECT_LT(start.direction.x, 0.0f);
  // Segment ends are the positions, in every space.
  for (Space space : {Space::kModel, Space::kScreen}) {
    const Bezier b = f.Segment(PointId{0, 1}, space);
    EXPECT_EQ(b.p0, f.Position(PointId{0, 2}, space));
    EXPECT_EQ(b.p1, f.Position(PointId{0, 1}, space));
  }
}

TEST(Figure, HookPiecesCoverTheCarriersSegment) {
  // A run of two hooks cuts the carrier's segment into three pieces: they
  // start at the carrier, meet at the hooks and end at the carrier's next.
  Figure f;
  f.AddSpline(Line({{0, 0, 0}, {4, 0, 0}}));
  for (float s : {0.25f, 0.75f}) {
    SplineDesc d = Line({{s * 4, 2, 0}, {s * 4, 3, 0}});
    d.points.insert(d.points.begin() + 1, Hook(s));
    f.AddHook(PointId{f.AddSpline(d), 1}, PointId{0, 0});
  }
  const std::vector<Bezier> pieces = f.HookPieces(PointId{0, 0}, Space::kModel);
  ASSERT_EQ(pieces.size(), 3u);
  EXPECT_EQ(pieces[0].p0, f.Position(PointId{0, 0}, Space::kModel));
  EXPECT_EQ(pieces[0].p1, f.Position(PointId{1, 1}, Space::kModel));
  EXPECT_EQ(pieces[1].p0, pieces[0].p1);
  EXPECT_EQ(pieces[1].p1, f.Position(PointId{2, 1}, Space::kModel));
  EXPECT_EQ(pieces[2].p1, f.Position(PointId{0, 1}, Space::kModel));
  // Each hook is the segment's point at t = 1 - s (t = 0 at the next).
  Bezier b = f.Segment(PointId{0, 0}, Space::kModel);
  for (int k = 0; k < 2; ++k) {
    Vector at;
    CalcPoint(b.p0, b.h0, b.h1, b.p1, k == 0 ? 0.75f : 0.25f, at);
    EXPECT_NEAR(pieces[static_cast<std::size_t>(k)].p1.x, at.x, 1e-6f);
    EXPECT_NEAR(pieces[static_cast<std::size_t>(k)].p1.y, at.y, 1e-6f);
  }
}

}  // namespace
}  // namespace splinecore
