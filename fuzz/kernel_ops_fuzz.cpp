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
  std::fprintf(stderr, "figure_ops: %s\n", what);
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

 private:
  Vector move_;
  Delta turn_;
  std::int16_t inFlags_, outFlags_;
};

bool IsCarrier(SegmentCP* c) { return !c->IsHook() && detail::RunStep(c) != nullptr; }

void ReportViolation(const FigureViolation& v, void*) {
  std::fprintf(stderr, "figure_ops: %s at %p: %s\n", FigureRuleName(v.rule), static_cast<const void*>(v.cp),
               v.message);
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
    while (slices_ != nullptr) {
      DeleteAllCP(slices_->first);
      DeleteSlice(&slices_, slices_);
    }
  }
  FuzzFigure(const FuzzFigure&) = delete;
  FuzzFigure& operator=(const FuzzFigure&) = delete;

  void Step(FuzzInput& in);

 private:
  void Build(FuzzInput& in);
  void BuildSpline(FuzzInput& in, unsigned spline, std::vector<std::vector<SegmentCP*>>& stacks);
  void BuildMuscle(FuzzInput& in);
  Matrix FuzzMatrix(FuzzInput& in);
  void Query(FuzzInput& in, SegmentCP* c);
  void Edit(FuzzInput& in, SegmentCP* c);
  void GroupEdit(FuzzInput& in, SegmentCP* c);
  void Delete(SegmentCP* c);
  bool MayDelete(SegmentCP* c);
  GroupNode** ListFor(const SegmentCP* c) {
    return c->flags & (cpflag::skinA | cpflag::skinB) ? &fig_.cache.skinGroupList : &fig_.cache.groupList;
  }
  void Validate(const char* when);
  void Sink(const Vector& v) { sink_ += v.x + v.y + v.z; }

  test::TestFigure fig_;
  Slice* slices_ = nullptr;
  std::vector<SegmentCP*> cps_;       // every live control point
  struct Carrier {
    SegmentCP* cp;  // a non-hook with a next
    unsigned spline;
  };
  std::vector<Carrier> carriers_;
  struct PendingHook {
    HookSegmentCP* hook;
    unsigned spline;
    std::uint8_t carrier;  // index into the other splines' carriers, modulo their number
  };
  std::vector<PendingHook> pendingHooks_;
  volatile float sink_ = 0;
};

Matrix FuzzFigure::FuzzMatrix(FuzzInput& in) {
  Matrix m = test::IdentityMatrix();
  switch (in.Below(4)) {
    case 0:
      break;
    case 1:  // singular
      m = Matrix{};
      break;
    case 2: {  // uniform scale and a translation
      const float s = in.Float();
      for (int r = 0; r < 3; ++r) m.m[r][r] = s;
      for (int r = 0; r < 3; ++r) m.m[r][3] = in.Float();
      break;
    }
    default:
      for (auto& row : m.m)
        for (float& e : row) e = in.Float();
  }
  return m;
}

void FuzzFigure::BuildSpline(FuzzInput& in, unsigned spline, std::vector<std::vector<SegmentCP*>>& stacks) {
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
    if (in.Bit()) cp->indelta = in.Turn(); else cp->indelta = Delta{0, 0, 1};
    if (in.Bit()) cp->outdelta = in.Turn(); else cp->outdelta = Delta{0, 0, 1};
    points.push_back(cp);
    cps_.push_back(cp);
  }
  for (std::size_t i = 0; i + 1 < points.size(); ++i) {
    points[i]->next = points[i + 1];
    points[i + 1]->prev = points[i];
  }
  if (closed) {
    points.back()->next = points.front();
    points.front()->prev = points.back();
    points.back()->OnLoopEnd();
  }
  for (SegmentCP* cp : points)
    if (!cp->IsHook() && cp->next != nullptr) carriers_.push_back({cp, spline});
  Slice* slice = AddSlice(&slices_);
  if (slice == nullptr) Fail("AddSlice failed while building");
  slice->first = points.front();
}

void FuzzFigure::BuildMuscle(FuzzInput& in) {
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

void FuzzFigure::Build(FuzzInput& in) {
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
    SegmentCP* carrier = others[pending.carrier % others.size()];
    for (auto& stack : stacks) {
      const auto at = std::find(stack.begin(), stack.end(), carrier);
      if (at == stack.end()) continue;
      stack.insert(at + 1, pending.hook);
      break;
    }
  }
  // Merge whole stacks: a stack's top is never a hook, so runs stay intact.
  for (unsigned m = in.Below(4); m > 0 && stacks.size() > 1; --m) {
    const std::size_t a = in.Below(static_cast<unsigned>(stacks.size()));
    const std::size_t b = in.Below(static_cast<unsigned>(stacks.size()));
    if (a == b) continue;
    stacks[a].insert(stacks[a].end(), stacks[b].begin(), stacks[b].end());
    stacks.erase(stacks.begin() + static_cast<std::ptrdiff_t>(b));
  }
  for (const auto& stack : stacks) {
    for (std::size_t k = 0; k < stack.size(); ++k) {
      stack[k]->stackPrev = k > 0 ? stack[k - 1] : nullptr;
      stack[k]->stackNext = k + 1 < stack.size() ? stack[k + 1] : nullptr;
    }
    stack.front()->SetHead();
  }
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

void FuzzFigure::Validate(const char* when) {
  std::vector<SegmentCP*> firsts;
  for (Slice* s = slices_; s != nullptr; s = s->next) firsts.push_back(s->first);
  if (ValidateFigure(firsts.data(), static_cast<int>(firsts.size()), ReportViolation, nullptr) != 0) Fail(when);
}

void FuzzFigure::Query(FuzzInput& in, SegmentCP* c) {
  Vector a, b;
  switch (in.Below(12)) {
    case 0: Sink(c->Getp()); Sink(c->Getmp()); break;
    case 1: Sink(c->Getmusclep()); Sink(c->Getnonmusclep()); break;
    case 2: Sink(c->Getscreenp()); break;
    case 3: Sink(c->Getit()); Sink(c->Getot()); break;
    case 4: Sink(c->Getscreenit()); Sink(c->Getscreenot()); break;
    case 5: Sink(c->Getmit()); Sink(c->Getmot()); break;
    case 6:
      if (c->IsHook()) {
        auto* h = static_cast<HookSegmentCP*>(c);
        Sink(*h->Gethit()); Sink(*h->Gethot()); Sink(*h->Getpit()); Sink(*h->Getpot());
        Sink(*h->Getmhit()); Sink(*h->Getmhot()); Sink(*h->Getmpit()); Sink(*h->Getmpot());
        sink_ = sink_ + h->GetS();
      }
      break;
    case 7:
      if (c->next != nullptr) sink_ = sink_ + CurveLength(c);
      sink_ = sink_ + GetTotalLength(c);
      break;
    case 8:
      sink_ = sink_ + PositionDirectionFromSubLength(c, in.Float(), &a, &b);
      break;
    case 9: {
      Vector p0 = in.Vec(), p1 = in.Vec(), p2 = in.Vec(), p3 = in.Vec();
      const float t = in.Float();
      CalcPoint(p0, p1, p2, p3, t, a);
      CalcPoint2(p0, p1, p2, p3, t, b);
      Sink(a);
      break;
    }
    case 10: {
      Cubic cubic{in.Vec(), in.Vec(), in.Vec(), in.Vec()};
      Column col;
      InitFD2D(&col, &cubic, static_cast<unsigned short>(1 + in.Byte()));
      for (unsigned k = in.Below(8); k > 0; --k) BumpFD2D(&col);
      break;
    }
    default: {
      Vector n1, n2;
      const bool normals = in.Bit();
      sink_ = sink_ + c->GetTangents(&a, &b, normals ? &n1 : nullptr, normals ? &n2 : nullptr, in.Byte());
    }
  }
}

// Whether reversing the slice gives a run to a hook: a carrier's next
// becomes its prev, the run's new carrier.
bool HandsRunToHook(const Slice* slice) {
  for (SegmentCP* c : detail::SplinePoints(slice->first))
    if (IsCarrier(c) && c->next != nullptr && c->next->IsHook()) return true;
  return false;
}

// DeleteCP keeps the figure valid unless it removes a carrier (its run
// would hang from nothing or from the wrong point), the last point after a
// carrier (the carrier would lose its next), or leaves a hook without
// spline neighbours.
bool FuzzFigure::MayDelete(SegmentCP* c) {
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

void FuzzFigure::Delete(SegmentCP* c) {
  Slice* slice = MatchSliceCP(slices_, c);
  if (slice == nullptr) Fail("a live control point is in no slice");
  DeleteCP(&slice->first, c);
  for (std::size_t i = 0; i < cps_.size(); ++i)
    if (cps_[i] == c) cps_.erase(cps_.begin() + static_cast<std::ptrdiff_t>(i));
  if (slice->first == nullptr) DeleteSlice(&slices_, slice);
}

void FuzzFigure::GroupEdit(FuzzInput& in, SegmentCP* c) {
  GroupNode** list = in.Bit() ? &fig_.cache.skinGroupList : &fig_.cache.groupList;
  switch (in.Below(9)) {
    case 0:
      c->AddToGroup(ListFor(c), in.Bit());
      break;
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

void FuzzFigure::Edit(FuzzInput& in, SegmentCP* c) {
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
      // Left out: a reversal that would hand a run to a hook keeps the run in
      // place, which leaves a carrier without a next, a figure the validator
      // rejects (tests/groups/reverse_slice_run_onto_hook_test.cpp).
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
    case 12:
      switch (in.Below(3)) {
        case 0: c->Convert(); break;
        case 1: c->MConvert(); break;
        default: c->SetPrevp();
      }
      break;
    default:
      switch (in.Below(6)) {
        case 0: c->OffCacheditot(); break;
        case 1: c->OffCachedpitot(); break;
        case 2: c->OffCachedmitot(); break;
        case 3: c->OffCachedmpitot(); break;
        case 4: c->OffCachedscreenitot(); break;
        default: c->OffCachedscreenpitot();
      }
  }
}

void FuzzFigure::Step(FuzzInput& in) {
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
