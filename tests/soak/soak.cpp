#include "soak.h"

#include <cstring>
#include <memory>
#include <numeric>
#include <random>
#include <utility>
#include <sstream>
#include <vector>

#include "figure_corpus.h"
#include "splinecore/figure.h"

namespace splinecore::soak {
namespace {

class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_(seed) {}
  int Below(int n) { return static_cast<int>(engine_() % static_cast<std::uint64_t>(n)); }
  // A coordinate on a quarter grid in [-8, 8].
  float Coordinate() { return static_cast<float>(Below(65) - 32) * 0.25f; }
  Vector Point() { return Vector(Coordinate(), Coordinate(), Coordinate()); }
  Delta AnyDelta() {
    return Delta{static_cast<float>(Below(9) - 4) * 7.5f, static_cast<float>(Below(9) - 4) * 7.5f,
                 0.5f * static_cast<float>(1 + Below(4))};
  }
  float HookS() {
    const float values[] = {0.25f, 0.5f, 0.75f, 0.3f, 0.6f, 0.9f, -0.0f, 0.625f};
    return values[Below(8)];
  }
  // Power-of-two scales, signs maybe flipped, a grid translation: the
  // inverse is exact.
  Matrix Transform(Matrix* inverse) {
    Matrix m{};
    *inverse = Matrix{};
    for (int r = 0; r < 3; ++r) {
      const float k = static_cast<float>(1 << Below(3)) * (Below(2) != 0 ? 0.5f : -1.0f);
      const float t = Coordinate();
      m.m[r][r] = k;
      m.m[r][3] = t;
      inverse->m[r][r] = 1.0f / k;
      inverse->m[r][3] = -t / k;
    }
    return m;
  }

 private:
  std::mt19937_64 engine_;
};

// A host effect that answers from the point's address alone: shifts the
// position by the point's index and turns the in-tangent.
class TiltEffect final : public CustomMuscleEffect {
 public:
  bool MovePosition(PointId point, Vector* position) const override {
    *position += Vector(0.25f * static_cast<float>(point.index % 3), 0.0f, 0.5f);
    return true;
  }
  int AdjustInDelta(PointId, Delta* delta) const override {
    delta->yaw += 7.5f;
    return 1;
  }
};

// Splines on the grid, some closed; stacks of points moved together; hook
// splines riding on random segments (several hooks may share a run);
// muscle offsets; a screen transform.
void Build(Figure& f, Random& r) {
  const int splines = 2 + r.Below(3);
  for (int s = 0; s < splines; ++s) {
    SplineDesc d;
    d.closed = r.Below(3) == 0;
    for (int i = 2 + r.Below(4); i > 0; --i) {
      PointDesc p;
      p.at = r.Point();
      p.smooth = r.Below(3) != 0;
      if (r.Below(3) == 0) p.in = r.AnyDelta();
      if (r.Below(3) == 0) p.out = r.AnyDelta();
      d.points.push_back(p);
    }
    f.AddSpline(d);
  }
  for (int k = r.Below(4); k > 0; --k) {
    const int sa = r.Below(splines);
    const int sb = r.Below(splines);
    if (sa == sb) continue;
    const PointId a{sa, r.Below(f.PointCount(sa))};
    const PointId b{sb, r.Below(f.PointCount(sb))};
    try {
      f.Move(b, f.Position(a, Space::kModel));
      f.Stack({a, b});
    } catch (const FigureError&) {
      // Already stacked: the figure keeps what it had.
    }
  }
  for (int k = 1 + r.Below(3); k > 0; --k) {
    const int carrierSpline = r.Below(splines);
    const PointId carrier{carrierSpline, r.Below(f.PointCount(carrierSpline))};
    if (!f.OwnsSegment(carrier)) continue;
    SplineDesc d;
    d.points.resize(3);
    d.points[0].at = r.Point();
    d.points[1].hook = true;
    d.points[1].s = r.HookS();
    d.points[2].at = r.Point();
    f.AddHook(PointId{f.AddSpline(d), 1}, carrier);
  }
  for (int k = r.Below(3); k > 0; --k) {
    try {
      f.AddMuscleOffset(PointId{0, r.Below(f.PointCount(0))}, r.Point());
    } catch (const FigureError&) {
    }
  }
  Matrix inverse;
  const Matrix screen = r.Transform(&inverse);
  f.SetScreen(screen, inverse);
}

// One random edit; returns its log line.
std::string Edit(Figure& f, Random& r) {
  const int kind = r.Below(9);
  const int s = r.Below(f.SplineCount());
  const PointId id{s, r.Below(f.PointCount(s))};
  std::ostringstream log;
  log << "edit " << kind << " at " << s << ":" << id.index;
  try {
    switch (kind) {
      case 0: f.Move(id, r.Point()); break;
      case 1: f.SetDeltas(id, r.AnyDelta(), r.AnyDelta()); break;
      case 2: f.SetSmooth(id, r.Below(2) == 0); break;
      case 3: f.SetHookS(id, r.HookS()); break;
      case 4: f.Reverse(s); break;
      case 5: f.Delete(id); break;
      case 6: f.SetMuscleMode(!f.MuscleMode()); break;
      case 7:
        if (r.Below(2) == 0) f.AddMuscleOffset(id, r.Point());
        else f.AddMuscleEffect(id, std::make_shared<TiltEffect>());
        break;
      default: {
        Matrix inverse;
        const Matrix screen = r.Transform(&inverse);
        f.SetScreen(screen, inverse);
      }
    }
  } catch (const FigureError& e) {
    log << " (refused: " << e.what() << ")";
  }
  return log.str();
}

void Push(std::vector<float>& out, const Vector& v) { out.insert(out.end(), {v.x, v.y, v.z}); }
void Push(std::vector<float>& out, const Bezier& b) {
  for (const Vector& v : {b.p0, b.h0, b.h1, b.p1}) Push(out, v);
}

constexpr int kQueryKinds = 9;

// The answer of one query kind at one point (empty where it does not apply).
std::vector<float> Ask(Figure& f, PointId id, int kind) {
  std::vector<float> out;
  const bool owns = f.OwnsSegment(id);
  const bool muscle = f.MuscleMode();
  switch (kind) {
    case 0: Push(out, f.Position(id, Space::kModel)); break;
    case 1: Push(out, f.Position(id, Space::kScreen)); break;
    case 2: if (muscle) Push(out, f.Position(id, Space::kMuscle)); break;
    case 3: if (owns) Push(out, f.Segment(id, Space::kScreen)); break;
    case 4: if (owns) Push(out, f.Segment(id, Space::kModel)); break;
    case 5: if (owns && muscle) Push(out, f.Segment(id, Space::kMuscle)); break;
    case 6: if (owns) out.push_back(f.SegmentLength(id)); break;
    case 7:
      for (const Bezier& b : f.HookPieces(id, muscle ? Space::kMuscle : Space::kScreen)) Push(out, b);
      break;
    default:
      if (id.index == 0) {
        // Points at lengths first: the first answer after an edit may be one.
        for (const PointOnSpline& p : f.PointsAtLengths(id.spline, {0.0f, 1.25f, 40.0f})) {
          Push(out, p.position);
          Push(out, p.direction);
        }
        const float total = f.SplineLength(id.spline);
        out.push_back(total);
        for (const PointOnSpline& p : f.PointsAtLengths(id.spline, {total * 0.5f, total})) {
          Push(out, p.position);
          Push(out, p.direction);
        }
      }
  }
  return out;
}

struct Query { PointId id; int kind; };

std::vector<Query> Queries(const Figure& f) {
  std::vector<Query> queries;
  for (int s = 0; s < f.SplineCount(); ++s)
    for (int i = 0; i < f.PointCount(s); ++i)
      for (int kind = 0; kind < kQueryKinds; ++kind) queries.push_back({{s, i}, kind});
  return queries;
}

bool SameBits(const std::vector<float>& a, const std::vector<float>& b) {
  return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0);
}

}  // namespace

SoakResult RunSoak(const SoakOptions& options) {
  SoakResult result;
  Random r(options.seed);
  while (result.edits < options.edits) {
    ++result.figures;
    Figure live;
    Build(live, r);
    std::string log;
    for (long e = 0; e < options.editsPerFigure && result.edits < options.edits; ++e) {
      // Some answers asked before the edit, in a random order: history that
      // must not leak into later answers.
      std::vector<Query> queries = Queries(live);
      if (live.Validate().empty()) {
        for (int k = r.Below(8); k > 0 && !queries.empty(); --k) {
          const Query& q = queries[static_cast<std::size_t>(r.Below(static_cast<int>(queries.size())))];
          Ask(live, q.id, q.kind);
        }
      }
      log += Edit(live, r) + "\n";
      ++result.edits;
      const std::vector<std::string> problems = live.Validate();
      if (!problems.empty()) {
        ++result.findings;
        if (result.report.size() < 4000) result.report += "validator: " + problems.front() + " after\n" + log;
        break;
      }
      Figure fresh(live.Describe());
      queries = Queries(live);
      // The live figure answers in a random order, the fresh one in order.
      std::vector<std::size_t> order(queries.size());
      std::iota(order.begin(), order.end(), std::size_t{0});
      for (std::size_t k = order.size(); k > 1; --k)
        std::swap(order[static_cast<std::size_t>(r.Below(static_cast<int>(k)))], order[k - 1]);
      std::vector<std::vector<float>> answers(queries.size());
      for (std::size_t at : order) answers[at] = Ask(live, queries[at].id, queries[at].kind);
      bool same = true;
      for (std::size_t k = 0; k < queries.size(); ++k)
        same = SameBits(answers[k], Ask(fresh, queries[k].id, queries[k].kind)) && same;
      same = same && test::Members(live) == test::Members(fresh);  // the raw records too
      if (!same) {
        ++result.mismatches;
        if (result.report.size() < 4000) result.report += "mismatch after\n" + log;
        break;
      }
    }
  }
  return result;
}

std::string SoakSummary(const SoakResult& result, std::uint64_t seed) {
  std::ostringstream out;
  out << "soak: " << result.edits << " edits, " << result.figures << " figures, " << result.mismatches
      << " mismatches, seed " << seed;
  return out.str();
}

}  // namespace splinecore::soak
