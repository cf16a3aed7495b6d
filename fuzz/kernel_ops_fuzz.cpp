// Fuzz target for the kernel below Figure: decodes bytes into a structurally
// valid figure of raw records (built as a host owning its memory does) whose floats
// are arbitrary (NaN, infinities, extremes, denormals, -0 in positions,
// deltas, hook parameters, muscle effects and view matrices), then runs a
// sequence of queries and edits on it. Every call must return, the figure
// must pass ValidateFigure after every step, and every block taken from the
// memory services must be back at teardown. A failed check aborts, which
// the fuzzer and the corpus replay both report as a crash.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "controlpoint/walks.h"
#include "fuzz_input.h"
#include "marrow/marrow.h"
#include "splinecore/splinecore.h"
#include "test_figure.h"

namespace splinecore::fuzz {
namespace {

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "kernel_ops: %s\n", what);
  std::abort();
}

// A host muscle effect with fuzzed behaviour: moves the position by a fixed
// vector and, when its flags say so, turns and rescales the deltas.
class FuzzEffect final : public MuscleEffect {
 public:
  FuzzEffect(Vector move, Delta turn, std::int16_t inFlags, std::int16_t outFlags)
      : move_(move), turn_(turn), inFlags_(inFlags), outFlags_(outFlags) {}
  std::int32_t ApplyToPosition(std::int32_t, SegmentCP*, Vector* position) override {
    *position += move_;
    return move_ != Vector(0, 0, 0);
  }
  std::int16_t ApplyToInDelta(std::int32_t, SegmentCP*, Delta* d) override {
    return static_cast<std::int16_t>(TurnDelta(d, turn_, inFlags_));
  }
  std::int16_t ApplyToOutDelta(std::int32_t, SegmentCP*, Delta* d) override {
    return static_cast<std::int16_t>(TurnDelta(d, turn_, outFlags_));
  }
  Vector move_;
  Delta turn_;
  std::int16_t inFlags_, outFlags_;
};

bool IsCarrier(SegmentCP* c) { return !c->IsHook() && detail::RunStep(c) != nullptr; }

void ReportViolation(const FigureViolation& v, void*) {
  std::fprintf(stderr, "kernel_ops: %s at %p: %s\n", FigureRuleName(v.rule), static_cast<const void*>(v.cp),
               v.message);
}

// Whether reversing the slice gives a run to a hook: a carrier's next
// becomes its prev, the run's new carrier.
bool HandsRunToHook(const Slice* slice) {
  for (SegmentCP* c : detail::SplinePoints(slice->first))
    if (IsCarrier(c) && c->next != nullptr && c->next->IsHook()) return true;
  return false;
}

class FuzzFigure {
 public:
  explicit FuzzFigure(FuzzInput& in) {
    Build(in);
    Validate("after building");
  }
  ~FuzzFigure() {
    FreeGroup(&fig_.cache.groupList);
    FreeGroup(&fig_.cache.skinGroupList);
    for (; slices_ != nullptr; DeleteSlice(&slices_, slices_)) DeleteAllCP(slices_->first);
  }
  FuzzFigure(const FuzzFigure&) = delete;
  FuzzFigure& operator=(const FuzzFigure&) = delete;

  void Step(FuzzInput& in) {
    if (cps_.empty()) return;
    SegmentCP* c = cps_[in.Below(static_cast<unsigned>(cps_.size()))];
    switch (in.Below(4)) {
      case 0: Query(in, c); break;
      case 1: Edit(in, c); break;
      case 2: GroupEdit(in, c); break;
      default:  // a group edit whose allocations fail after a few
        MarrowFailAfter(in.Below(3));
        GroupEdit(in, c);
        MarrowFailAfter(-1);
    }
    Validate("after a step");
  }

 private:
  void Build(FuzzInput& in) {
    std::vector<std::vector<SegmentCP*>> stacks;  // each top to bottom
    const unsigned splines = 1 + in.Below(4);
    for (unsigned s = 0; s < splines; ++s) BuildSpline(in, s, stacks);
    // Each hook goes directly below a carrier on another spline (any other,
    // so runs may end on each other's hooks); without one it stays an
    // ordinary point.
    for (const PendingHook& pending : pendingHooks_) {
      std::vector<SegmentCP*> others;
      for (const Carrier& c : carriers_)
        if (c.spline != pending.spline) others.push_back(c.cp);
      if (others.empty()) {
        pending.hook->OffHook();
        stacks.push_back({pending.hook});
        continue;
      }
      // Before the merges below, every carrier tops a stack of its own.
      SegmentCP* carrier = others[pending.carrier % others.size()];
      auto stack = std::find_if(stacks.begin(), stacks.end(), [&](const auto& m) { return m.front() == carrier; });
      stack->insert(stack->begin() + 1, pending.hook);
    }
    // Merge whole stacks: a stack's top is never a hook, so runs stay intact.
    for (unsigned m = in.Below(4); m > 0 && stacks.size() > 1; --m) {
      const std::size_t a = in.Below(static_cast<unsigned>(stacks.size()));
      const std::size_t b = in.Below(static_cast<unsigned>(stacks.size()));
      if (a == b) continue;
      stacks[a].insert(stacks[a].end(), stacks[b].begin(), stacks[b].end());
      stacks.erase(stacks.begin() + static_cast<std::ptrdiff_t>(b));
    }
    for (const auto& stack : stacks) test::TestFigure::Stack(stack);
    if (in.Bit()) BuildMuscle(in);
    const Matrix screen = FuzzMatrix(in);
    fig_.SetScreen(screen, FuzzMatrix(in));
    const Matrix view = FuzzMatrix(in);
    fig_.SetView(view, FuzzMatrix(in));
    fig_.cache.generation = in.Byte();
    fig_.cache.screenGeneration = in.Byte();
    fig_.cache.mode = in.Byte();
    fig_.record.figureFlags = in.Byte();
  }
  void BuildSpline(FuzzInput& in, unsigned spline, std::vector<std::vector<SegmentCP*>>& stacks) {
    const unsigned n = 1 + in.Below(5);
    const bool closed = in.Bit();
    const std::uint32_t skin = in.Below(4) == 0 ? cpflag::skinA : 0;
    std::vector<SegmentCP*> points;
    for (unsigned i = 0; i < n; ++i) {
      const std::uint8_t kind = in.Byte();
      const std::uint32_t flags = skin | (kind & 1 ? cpflag::smooth : 0) | (kind & 2 ? cpflag::exempt : 0);
      SegmentCP* cp;
      if ((kind & 0x1C) == 0 && n >= 2) {
        // A hook; it joins a carrier's run once every spline is linked.
        cp = fig_.NewHook(in.Float(), flags);
        pendingHooks_.push_back({static_cast<HookSegmentCP*>(cp), spline, in.Byte()});
      } else {
        cp = fig_.NewCP(Vector(0, 0, 0), flags);
        stacks.push_back({cp});
      }
      cp->p = in.Vec();
      cp->indelta = in.Bit() ? in.Turn() : Delta{0, 0, 1};
      cp->outdelta = in.Bit() ? in.Turn() : Delta{0, 0, 1};
      points.push_back(cp);
      cps_.push_back(cp);
    }
    test::Link(points, closed);
    for (SegmentCP* cp : points)
      if (!cp->IsHook() && cp->next != nullptr) carriers_.push_back({cp, spline});
    Slice* slice = AddSlice(&slices_);
    if (slice == nullptr) Fail("AddSlice failed while building");
    slice->first = points.front();
  }
  void BuildMuscle(FuzzInput& in) {
    const int count = static_cast<int>(cps_.size()) - static_cast<int>(in.Below(3));
    fig_.AddMuscleTable(static_cast<std::uint16_t>(count < 0 ? 0 : count));
    static constexpr std::int16_t kFlags[] = {0, 1, 4, 5};
    for (SegmentCP* cp : cps_) {
      if (cp->id >= fig_.cache.muscleTable->count || !in.Bit()) continue;
      MuscleCPData* data = fig_.AddMuscleData(cp);
      data->indelta = in.Turn();
      data->outdelta = in.Turn();
      data->position = in.Vec();
      for (unsigned e = in.Below(3); e > 0; --e) {
        const Vector move = in.Vec();
        const Delta turn = in.Turn();
        const std::int16_t inFlags = kFlags[in.Below(4)];
        fig_.AddEffect<FuzzEffect>(data, move, turn, inFlags, kFlags[in.Below(4)]);
      }
    }
  }
  // The identity, a singular matrix, a uniform scale with a translation, or any.
  Matrix FuzzMatrix(FuzzInput& in) {
    Matrix m = test::IdentityMatrix();
    const unsigned kind = in.Below(4);
    if (kind == 1) return Matrix{};
    if (kind == 2) {
      const float s = in.Float();
      for (int r = 0; r < 3; ++r) m.m[r][r] = s;
      for (int r = 0; r < 3; ++r) m.m[r][3] = in.Float();
    }
    if (kind == 3)
      for (auto& row : m.m)
        for (float& e : row) e = in.Float();
    return m;
  }
  void Query(FuzzInput& in, SegmentCP* c) {
    using Get = Vector& (SegmentCP::*)();
    static constexpr Get kGetters[6][2] = {
        {&SegmentCP::Getp, &SegmentCP::Getmp},     {&SegmentCP::Getmusclep, &SegmentCP::Getnonmusclep},
        {&SegmentCP::Getscreenp, nullptr},         {&SegmentCP::Getit, &SegmentCP::Getot},
        {&SegmentCP::Getscreenit, &SegmentCP::Getscreenot}, {&SegmentCP::Getmit, &SegmentCP::Getmot}};
    using HookGet = Vector* (HookSegmentCP::*)();
    static constexpr HookGet kHookGetters[] = {
        &HookSegmentCP::Gethit,  &HookSegmentCP::Gethot,  &HookSegmentCP::Getpit,  &HookSegmentCP::Getpot,
        &HookSegmentCP::Getmhit, &HookSegmentCP::Getmhot, &HookSegmentCP::Getmpit, &HookSegmentCP::Getmpot};
    Vector a, b;
    const unsigned kind = in.Below(9);
    if (kind < 6) {
      for (Get get : kGetters[kind])
        if (get != nullptr) Sink((c->*get)());
      return;
    }
    switch (kind) {
      case 6:
        if (c->IsHook()) {
          auto* h = static_cast<HookSegmentCP*>(c);
          for (HookGet get : kHookGetters) Sink(*(h->*get)());
          sink_ = sink_ + h->GetS();
        }
        break;
      case 7:
        if (c->next != nullptr) sink_ = sink_ + CurveLength(c);
        sink_ = sink_ + GetTotalLength(c) + PositionDirectionFromSubLength(c, in.Float(), &a, &b);
        break;
      default: {
        Vector n1, n2;
        const bool normals = in.Bit();
        sink_ = sink_ + c->GetTangents(&a, &b, normals ? &n1 : nullptr, normals ? &n2 : nullptr, in.Byte());
      }
    }
  }
  void Edit(FuzzInput& in, SegmentCP* c) {
    switch (in.Below(14)) {
      case 0: c->p = in.Vec(); break;
      case 1: c->indelta = in.Turn(); break;
      case 2: c->outdelta = in.Turn(); break;
      case 3: if (c->IsHook()) static_cast<HookSegmentCP*>(c)->SetS(in.Float()); break;
      case 4: c->Touch(static_cast<std::int32_t>(in.Byte())); break;
      case 5: ++fig_.cache.generation; break;
      case 6: ++fig_.cache.screenGeneration; break;
      case 7: fig_.cache.mode ^= kMuscleMode; break;
      case 8: {
        Matrix* m[] = {&fig_.view.viewMatrix, &fig_.view.inverseViewMatrix, &fig_.view.screenMatrix,
                       &fig_.view.inverseScreenMatrix};
        const unsigned e = in.Byte();
        m[e % 4]->m[(e / 4) % 3][(e / 12) % 4] = in.Float();
        break;
      }
      case 9: {
        Slice* slice = MatchSliceCP(slices_, c);
        // Left out: a reversal that would hand a run to a hook keeps the run
        // in place, which leaves a carrier without a next, a figure the
        // validator rejects (Slices.ReverseSliceRunOntoHookRegressions).
        const bool nullSlice = in.Bit();
        if (HandsRunToHook(slice)) break;
        ReverseSlice(nullSlice ? nullptr : slice);
        break;
      }
      case 10: if (MayDelete(c)) Delete(c); break;
      case 11:
        if (!c->IsHook()) {
          if (in.Bit()) HookRange(c); else MHookRange(c);
        }
        break;
      case 12: {
        static constexpr void (SegmentCP::*kConvert[])() = {&SegmentCP::Convert, &SegmentCP::MConvert,
                                                            &SegmentCP::SetPrevp};
        (c->*kConvert[in.Below(3)])();
        break;
      }
      default: {
        static constexpr void (SegmentCP::*kOff[])() = {
            &SegmentCP::OffCacheditot,  &SegmentCP::OffCachedpitot,      &SegmentCP::OffCachedmitot,
            &SegmentCP::OffCachedmpitot, &SegmentCP::OffCachedscreenitot, &SegmentCP::OffCachedscreenpitot};
        (c->*kOff[in.Below(6)])();
      }
    }
  }
  void GroupEdit(FuzzInput& in, SegmentCP* c) {
    GroupNode** list = in.Bit() ? &fig_.cache.skinGroupList : &fig_.cache.groupList;
    switch (in.Below(9)) {
      case 0: c->AddToGroup(ListFor(c), in.Bit()); break;
      case 1: {
        bool listed = false;
        for (GroupNode* g = *ListFor(c); g != nullptr; g = g->next) listed = listed || g->cp == c;
        if (!listed) c->AddToGroupNoCheck(ListFor(c));
        break;
      }
      case 2: c->DeleteFromGroup(ListFor(c)); break;
      case 3: FreeGroup(list); break;
      case 4: if (*list != nullptr) MoveGroup(*list, in.Vec()); break;
      case 5: if (in.Bit()) PeakGroup(*list); else SmoothGroup(*list); break;
      case 6: if (in.Bit()) ConvertGroup(*list, in.Byte()); else ConvertCP(c); break;
      case 7: sink_ = sink_ + c->IsAnyGrouped(); break;
      default: GroupSlice(slices_, c, ListFor(c));
    }
  }
  // DeleteCP keeps the figure valid unless it removes a carrier (its run
  // would hang from nothing or from the wrong point), the last point after a
  // carrier (the carrier would lose its next), or leaves a hook without
  // spline neighbours.
  bool MayDelete(SegmentCP* c) {
    if (IsCarrier(c)) return false;
    if (c->next == nullptr && c->prev != nullptr && IsCarrier(c->prev)) return false;
    const Slice* slice = MatchSliceCP(slices_, c);
    int points = 0;
    bool hooks = false;
    for (SegmentCP* x : detail::SplinePoints(slice->first)) {
      ++points;
      hooks = hooks || x->IsHook();
    }
    return points > 2 || !hooks;
  }
  void Delete(SegmentCP* c) {
    Slice* slice = MatchSliceCP(slices_, c);
    if (slice == nullptr) Fail("a live control point is in no slice");
    DeleteCP(&slice->first, c);
    cps_.erase(std::remove(cps_.begin(), cps_.end(), c), cps_.end());
    if (slice->first == nullptr) DeleteSlice(&slices_, slice);
  }
  GroupNode** ListFor(const SegmentCP* c) {
    return c->flags & (cpflag::skinA | cpflag::skinB) ? &fig_.cache.skinGroupList : &fig_.cache.groupList;
  }
  void Validate(const char* when) {
    std::vector<SegmentCP*> firsts;
    for (Slice* s = slices_; s != nullptr; s = s->next) firsts.push_back(s->first);
    if (ValidateFigure(firsts.data(), static_cast<int>(firsts.size()), ReportViolation, nullptr) != 0) Fail(when);
  }
  void Sink(const Vector& v) { sink_ += v.x + v.y + v.z; }

  test::TestFigure fig_;
  Slice* slices_ = nullptr;
  std::vector<SegmentCP*> cps_;  // every live control point
  struct Carrier { SegmentCP* cp; unsigned spline; };  // cp: a non-hook with a next
  std::vector<Carrier> carriers_;
  // carrier: an index into the other splines' carriers, modulo their number.
  struct PendingHook { HookSegmentCP* hook; unsigned spline; std::uint8_t carrier; };
  std::vector<PendingHook> pendingHooks_;
  volatile float sink_ = 0;
};

}  // namespace
}  // namespace splinecore::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using splinecore::fuzz::FuzzFigure;
  using splinecore::fuzz::FuzzInput;
  const long liveBefore = MarrowLiveBlocks();
  {
    FuzzInput in(data, size);
    FuzzFigure figure(in);
    for (int step = 0; step < 64 && !in.Empty(); ++step) figure.Step(in);
  }
  if (MarrowLiveBlocks() != liveBefore) splinecore::fuzz::Fail("memory-service blocks leaked");
  return 0;
}
