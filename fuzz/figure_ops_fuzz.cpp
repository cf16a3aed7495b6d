// Fuzz target for Figure: decodes bytes into building calls, edits and
// queries with arbitrary floats (NaN, infinities, extremes, denormals, -0)
// and arbitrary addresses. Every call must return or refuse with a
// FigureError; a refused call must leave the description as it was; after
// every step the figure must be valid; a host effect of the fuzz's own
// answers from its arguments; at teardown every memory-service block is
// back. A failed check aborts, which the fuzzer and the corpus replay both
// report as a crash.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "figure_members.h"
#include "fuzz_input.h"
#include "marrow/marrow.h"
#include "splinecore/figure.h"

namespace splinecore::fuzz {
namespace {

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "figure_ops: %s\n", what.c_str());
  std::abort();
}

// Moves a point by a fixed vector and, when its flags say so, turns and
// rescales the deltas.
class FuzzEffect final : public CustomMuscleEffect {
 public:
  FuzzEffect(Vector move, Delta turn, int flags) : move_(move), turn_(turn), flags_(flags) {}
  bool MovePosition(PointId, Vector* position) const override {
    *position += move_;
    return true;
  }
  int AdjustInDelta(PointId, Delta* d) const override { return TurnDelta(d, turn_, flags_ & 5); }
  int AdjustOutDelta(PointId, Delta* d) const override { return TurnDelta(d, turn_, flags_ & 1); }

 private:
  Vector move_;
  Delta turn_;
  int flags_;
};

void Bytes(std::vector<unsigned char>& out, const void* p, std::size_t n) {
  const auto* b = static_cast<const unsigned char*>(p);
  out.insert(out.end(), b, b + n);
}

// The description as bytes (floats by their bits), to see that a refused
// call changed nothing.
std::vector<unsigned char> Fingerprint(const Figure& f) {
  const FigureDescription d = f.Describe();
  std::vector<unsigned char> out;
  for (const SplineDesc& s : d.splines) {
    Bytes(out, &s.closed, sizeof s.closed);
    for (const PointDesc& p : s.points) {
      Bytes(out, &p.at, sizeof p.at);
      Bytes(out, &p.in, sizeof p.in);
      Bytes(out, &p.out, sizeof p.out);
      Bytes(out, &p.smooth, sizeof p.smooth);
      Bytes(out, &p.hook, sizeof p.hook);
      Bytes(out, &p.s, sizeof p.s);
    }
  }
  for (const auto& stack : d.stacks) Bytes(out, stack.data(), stack.size() * sizeof(PointId));
  for (const HookDesc& h : d.hooks) Bytes(out, &h, sizeof h);
  for (const MuscleEffectDesc& m : d.muscleEffects) {
    Bytes(out, &m.point, sizeof m.point);
    Bytes(out, &m.offset, sizeof m.offset);
  }
  for (const Matrix* m : {&d.view, &d.inverseView, &d.screen, &d.inverseScreen}) Bytes(out, m, sizeof *m);
  Bytes(out, &d.muscleMode, sizeof d.muscleMode);
  return out;
}

class Session {
 public:
  explicit Session(FuzzInput& in) : in_(in) {}

  void Step() {
    const std::vector<unsigned char> before = Fingerprint(f_);
    try {
      Call();
    } catch (const FigureError& e) {
      if (Fingerprint(f_) != before)
        Fail("a refused call (kind " + std::to_string(kind_) + ") changed the figure: " + e.what());
    }
    // Hooks listed by AddSpline hang nowhere until AddHook; nothing else
    // may be wrong.
    for (const std::string& problem : f_.Validate())
      if (problem.find("a hook has no carrier above it") == std::string::npos) Fail("invalid figure: " + problem);
  }

 private:
  // A spline index from -1 to one past the last.
  int Spline() { return static_cast<int>(in_.Below(static_cast<unsigned>(f_.SplineCount()) + 2)) - 1; }

  // Mostly a point of the figure, sometimes one just outside it.
  PointId Point() {
    const int s = Spline();
    const int n = s >= 0 && s < f_.SplineCount() ? f_.PointCount(s) : 1;
    return PointId{s, static_cast<int>(in_.Below(static_cast<unsigned>(n) + 1))};
  }

  // Points on a small grid meet often, so stacks can form.
  Vector GridPoint() {
    const float x = static_cast<float>(in_.Below(8));
    return Vector(x, static_cast<float>(in_.Below(8)), 0);
  }

  Matrix Transform() {
    Matrix m{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};
    if (in_.Bit())
      for (auto& row : m.m)
        for (float& e : row) e = in_.Float();
    return m;
  }

  void Call() {
    const Space spaces[] = {Space::kModel, Space::kScreen, Space::kMuscle};
    volatile float sink = 0;
    kind_ = static_cast<int>(in_.Below(20));
    // Most calls take a point first.
    const bool onPoint = kind_ == 2 || (kind_ >= 4 && kind_ <= 10) || kind_ == 12 || kind_ == 16;
    const PointId id = onPoint ? Point() : PointId{};
    switch (kind_) {
      case 0:
      case 1: {
        SplineDesc d;
        d.closed = in_.Below(4) == 0;
        for (unsigned i = 1 + in_.Below(6); i > 0; --i) {
          PointDesc p;
          p.at = in_.Below(3) == 0 ? in_.Vec() : GridPoint();
          p.smooth = in_.Bit();
          if (in_.Below(4) == 0) p.in = in_.Turn();
          if (in_.Below(4) == 0) p.out = in_.Turn();
          p.hook = in_.Below(5) == 0;
          p.s = in_.Float();
          d.points.push_back(p);
        }
        f_.AddSpline(d);
        break;
      }
      case 2: f_.AddHook(id, Point()); break;
      case 3: {
        std::vector<PointId> stack;
        for (unsigned i = 2 + in_.Below(2); i > 0; --i) stack.push_back(Point());
        f_.Stack(stack);
        break;
      }
      case 4: f_.AddMuscleOffset(id, in_.Vec()); break;
      case 5: {
        const Vector move = in_.Vec();
        const Delta turn = in_.Turn();
        f_.AddMuscleEffect(id, std::make_shared<FuzzEffect>(move, turn, static_cast<int>(in_.Below(8))));
        break;
      }
      case 6: f_.ClearMuscleEffects(id); break;
      case 7: f_.Move(id, in_.Below(2) == 0 ? in_.Vec() : GridPoint()); break;
      case 8: {
        const Delta in = in_.Turn();
        f_.SetDeltas(id, in, in_.Turn());
        break;
      }
      case 9: f_.SetSmooth(id, in_.Bit()); break;
      case 10: f_.SetHookS(id, in_.Float()); break;
      case 11: f_.Reverse(Spline()); break;
      case 12: f_.Delete(id); break;
      case 13:
      case 14: {
        const bool screen = in_.Bit();
        const Matrix m = Transform();
        if (in_.Bit()) {
          screen ? f_.SetScreen(m) : f_.SetView(m);
        } else {
          const Matrix inverse = Transform();
          screen ? f_.SetScreen(m, inverse) : f_.SetView(m, inverse);
        }
        break;
      }
      case 15: f_.SetMuscleMode(in_.Bit()); break;
      case 16: {
        const Space space = spaces[in_.Below(3)];
        sink = sink + f_.Position(id, space).x;
        if (f_.OwnsSegment(id)) sink = sink + f_.Segment(id, space).h0.y + f_.SegmentLength(id);
        for (const Bezier& b : f_.HookPieces(id, space)) sink = sink + b.h1.z;
        break;
      }
      case 17: {
        const int s = Spline();
        sink = sink + f_.SplineLength(s);
        for (const PointOnSpline& p : f_.PointsAtLengths(s, {in_.Float(), in_.Float(), in_.Float()}))
          sink = sink + p.position.x + p.direction.y;
        break;
      }
      case 18: {
        const int s = Spline();
        const int steps = 1 + static_cast<int>(in_.Below(40));
        for (const Vector& v : f_.Sample(s, steps)) sink = sink + v.x;
        sink = sink + static_cast<float>(f_.SvgPath(s, spaces[in_.Below(3)]).size());
        break;
      }
      default: {
        // The whole figure rebuilt from its description answers alike, and
        // RefreshAll leaves every member as the lazy queries do.
        const FigureDescription d = f_.Describe();
        Figure copy(d);
        if (Fingerprint(copy) != Fingerprint(f_)) Fail("Figure(Describe()) describes another figure");
        if (copy.SplineCount() == 0) break;
        Figure eager(d);
        eager.RefreshAll(eager.MuscleMode() ? Space::kMuscle : Space::kScreen);
        copy.SplineLengths();
        if (test::Members(eager) != test::Members(copy)) Fail("RefreshAll left other bits than the lazy queries");
      }
    }
  }

  FuzzInput& in_;
  Figure f_;
  int kind_ = 0;  // the last call's kind
};

}  // namespace
}  // namespace splinecore::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace splinecore::fuzz;
  const long liveBefore = MarrowLiveBlocks();
  {
    FuzzInput in(data, size);
    Session session(in);
    for (int steps = 0; !in.Empty() && steps < 200; ++steps) session.Step();
  }
  if (MarrowLiveBlocks() != liveBefore) Fail("memory-service blocks leaked");
  return 0;
}
