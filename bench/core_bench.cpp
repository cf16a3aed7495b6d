// The lazy geometry core on a figure of about 100,000 control points: full
// screen, model and muscle refreshes through the raw getters, the figure's
// RefreshAll, a cached getter, and bare loops that run the refreshes'
// arithmetic kernels on plain arrays without any caching (their ratio to
// the library is what the cache machinery costs).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "controlpoint/walks.h"
#include "convert/apply_delta.h"
#include "convert/hook_tangent.h"
#include "grid_figure.h"
#include "hooks/subdivide_bezier.h"
#include "tangents/hook_partners.h"
#include "tangents/tangent_rule.h"

namespace splinecore::bench {
namespace {

constexpr int kGrid = 213;  // 2 * 213^2 grid points plus hook splines: about 100,000 control points

GridFigure& Grid() {
  static GridFigure figure(kGrid);
  return figure;
}

void PerPoint(benchmark::State& state, std::size_t points) {
  // Seconds per control point, printed with an SI prefix (45.2n = 45.2 ns).
  state.counters["per_cp"] = benchmark::Counter(static_cast<double>(points),
                                                benchmark::Counter::kIsIterationInvariantRate |
                                                    benchmark::Counter::kInvert);
  state.counters["points"] = static_cast<double>(points);
}

void ScreenPass(const std::vector<SegmentCP*>& points) {
  for (SegmentCP* cp : points) {
    benchmark::DoNotOptimize(cp->Getscreenp());
    benchmark::DoNotOptimize(cp->Getscreenit());
    benchmark::DoNotOptimize(cp->Getscreenot());
  }
}

void TouchAll(const std::vector<SegmentCP*>& points) {
  for (SegmentCP* cp : points) cp->Touch(0);
}

// (a) every screen value recomputed after the screen generation changes.
void BM_ScreenRefresh(benchmark::State& state) {
  GridFigure& figure = Grid();
  figure.cache().mode = 0;
  ScreenPass(figure.points());
  for (auto _ : state) {
    ++figure.cache().screenGeneration;
    ScreenPass(figure.points());
  }
  PerPoint(state, figure.points().size());
}

// (b) every tangent recomputed after every control point is touched.
void BM_ModelRefresh(benchmark::State& state) {
  GridFigure& figure = Grid();
  figure.cache().mode = 0;
  for (auto _ : state) {
    state.PauseTiming();
    TouchAll(figure.points());
    state.ResumeTiming();
    for (SegmentCP* cp : figure.points()) {
      benchmark::DoNotOptimize(cp->Getit());
      benchmark::DoNotOptimize(cp->Getot());
    }
  }
  PerPoint(state, figure.points().size());
}

// (c) the same in muscle mode.
void BM_MuscleRefresh(benchmark::State& state) {
  GridFigure& figure = Grid();
  figure.cache().mode = kMuscleMode;
  for (auto _ : state) {
    state.PauseTiming();
    TouchAll(figure.points());
    state.ResumeTiming();
    for (SegmentCP* cp : figure.points()) {
      benchmark::DoNotOptimize(cp->Getmit());
      benchmark::DoNotOptimize(cp->Getmot());
    }
  }
  figure.cache().mode = 0;
  PerPoint(state, figure.points().size());
}

// (d) a getter whose value is cached: a generation comparison and a flag test.
void BM_CachedGetter(benchmark::State& state) {
  GridFigure& figure = Grid();
  figure.cache().mode = 0;
  SegmentCP* cp = figure.points()[figure.points().size() / 2];
  cp->Getit();
  for (auto _ : state) benchmark::DoNotOptimize(cp->Getit());
}

// --- bare loops -------------------------------------------------------------
// The refreshes' arithmetic on plain arrays in spline order, without caching:
// the same inline kernels the library runs (the transforms, the tangent
// rule, ApplyDelta, a hook's piece of its carrier's segment and its tangent
// from its partners), so the ratio to the library is what the lazy machinery
// costs. The whole-frame floors place every hook and give it its tangent;
// the screen and model floors keep the library's placement and hook
// tangents, so the library's hook work counts against it there.

// The same grid in muscle mode (it carries no muscle effects), refreshed.
GridFigure& MuscleGrid() {
  static GridFigure figure(kGrid);
  static const bool refreshed = [] {
    figure.figure().SetMuscleMode(true);
    figure.figure().RefreshAll(Space::kMuscle);
    return true;
  }();
  (void)refreshed;
  return figure;
}

// A carrier's hooks in run order, and a hook's neighbour and partners.
struct Run {
  std::size_t carrier, end;
  std::vector<std::size_t> hooks;
};
struct HookReads {
  std::size_t hook, neighbour, first, second;
};

struct Arrays {
  std::vector<Vector> p;   // the head's position (a hook's placed position)
  std::vector<Vector> mp;  // the same in muscle mode (a hook's muscle placement)
  std::vector<int> head, prev, next;
  std::vector<unsigned char> smooth, hook;
  std::vector<unsigned char> nearHook;  // a hook lies within two steps along the spline
  std::vector<std::size_t> nearHooks;   // those points
  std::vector<float> s;                 // a hook's parameter
  std::vector<Delta> in, out;
  std::vector<Vector> screenp, it, ot, screenit, screenot, mit, mot;
  std::vector<Run> runs;         // by carrier, in spline order
  std::vector<HookReads> hooks;  // in spline order
  std::vector<Vector> hit, hot, pit, pot, mhit, mhot, mpit, mpot;  // per point, written for hooks
};

Arrays& Plain() {
  static Arrays arrays = [] {
    GridFigure& figure = Grid();
    figure.figure().RefreshAll(Space::kScreen);
    Arrays a;
    const auto& points = figure.points();
    // Indices by a sorted lookup of the control-point addresses.
    std::vector<std::pair<const SegmentCP*, int>> sorted;
    for (std::size_t i = 0; i < points.size(); ++i) sorted.emplace_back(points[i], static_cast<int>(i));
    std::sort(sorted.begin(), sorted.end());
    auto find = [&](const SegmentCP* cp) {
      if (cp == nullptr) return -1;
      auto at = std::lower_bound(sorted.begin(), sorted.end(), std::make_pair(cp, -1));
      return at != sorted.end() && at->first == cp ? at->second : -1;
    };
    auto isHook = [](const SegmentCP* cp) { return cp != nullptr && cp->IsHook(); };
    auto index = [&](const SegmentCP* cp) { return static_cast<std::size_t>(find(cp)); };
    for (SegmentCP* cp : points) {
      a.p.push_back(cp->head->p);
      a.head.push_back(find(cp->head));
      a.prev.push_back(find(cp->prev));
      a.next.push_back(find(cp->next));
      a.smooth.push_back(static_cast<unsigned char>(cp->IsSmooth()));
      a.hook.push_back(static_cast<unsigned char>(cp->IsHook()));
      const bool near = !cp->IsHook() && (isHook(cp->prev) || isHook(cp->next) ||
                                          (cp->prev != nullptr && isHook(cp->prev->prev)) ||
                                          (cp->next != nullptr && isHook(cp->next->next)));
      if (near) a.nearHooks.push_back(a.nearHook.size());
      a.nearHook.push_back(static_cast<unsigned char>(near));
      a.in.push_back(cp->indelta);
      a.out.push_back(cp->outdelta);
      a.s.push_back(cp->IsHook() ? static_cast<HookSegmentCP*>(cp)->GetS() : 0.0f);
      if (cp->IsHasHooks()) {
        Run run{index(cp), index(cp->next), {}};
        for (SegmentCP* k : detail::HookRun(cp)) run.hooks.push_back(index(k));
        a.runs.push_back(run);
      }
      if (cp->IsHook()) {
        SegmentCP* carrier = detail::FindCarrier(cp);
        a.hooks.push_back(HookReads{index(cp), index(cp->prev != nullptr ? cp->prev : cp->next),
                                    index(detail::FirstHookPartner(cp, carrier)),
                                    index(detail::SecondHookPartnerForConvert(carrier))});
      }
    }
    Figure& muscle = MuscleGrid().figure();
    for (int s = 0; s < muscle.SplineCount(); ++s)
      for (int k = 0; k < muscle.PointCount(s); ++k) {
        const std::size_t i = a.mp.size();
        a.mp.push_back(a.hook[i] ? muscle.Position(PointId{s, k}, Space::kMuscle) : a.p[i]);
      }
    const std::size_t n = points.size();
    for (auto* v : {&a.screenp, &a.it, &a.ot, &a.screenit, &a.screenot, &a.mit, &a.mot, &a.hit, &a.hot, &a.pit,
                    &a.pot, &a.mhit, &a.mhot, &a.mpit, &a.mpot})
      v->resize(n);
    return a;
  }();
  return arrays;
}

constexpr float kInThird = -0.3333333432674408f;
constexpr float kOutThird = 0.3333333432674408f;

// Screen positions of the heads; hooks' only with `hooks`.
void BareScreenPositions(Arrays& a, const Matrix& s, bool hooks) {
  for (std::size_t i = 0; i < a.p.size(); ++i)
    if (a.head[i] == static_cast<int>(i) && (hooks || !a.hook[i])) a.screenp[i] = TransformPoint(s, a.p[i]);
}

// The tangents of point i by the tangent rule and the deltas, from the
// heads' positions `at` (screen or model); `it` and `ot` hold the previous
// values, which a lone point keeps.
void BareRule(const Arrays& a, std::size_t i, const std::vector<Vector>& positions, Vector& it, Vector& ot) {
  const auto at = [&](int k) -> const Vector& {
    return positions[static_cast<std::size_t>(a.head[static_cast<std::size_t>(k)])];
  };
  const int prev = a.prev[i], next = a.next[i];
  const Vector& P = at(static_cast<int>(i));
  const Vector A = prev >= 0 ? at(prev) : detail::kZeroVector;
  const Vector B = next >= 0 ? at(next) : detail::kZeroVector;
  const Delta in = a.in[i], out = a.out[i];
  const bool turn = !(detail::MakesNoTurn(in) && detail::MakesNoTurn(out));
  Vector inNormal, outNormal;
  Vector* inN = turn ? &inNormal : nullptr;
  Vector* outN = turn ? &outNormal : nullptr;
  int normals;
  if (a.smooth[i] && prev >= 0 && next >= 0) {
    normals = detail::SmoothInterior(P, A, B, &it, &ot, inN, outN);
  } else if (a.smooth[i] && prev < 0 && next >= 0 && a.next[static_cast<std::size_t>(next)] >= 0) {
    normals = detail::SmoothNoPrev(P, B, at(a.next[static_cast<std::size_t>(next)]), &it, &ot, inN, outN);
  } else if (a.smooth[i] && next < 0 && prev >= 0 && a.prev[static_cast<std::size_t>(prev)] >= 0) {
    normals = detail::SmoothNoNext(P, A, at(a.prev[static_cast<std::size_t>(prev)]), &it, &ot, inN, outN);
  } else {
    normals = detail::HalfChords(P, prev >= 0 ? &A : nullptr, next >= 0 ? &B : nullptr, &it, &ot, inN, outN);
  }
  if (!turn) {
    if (in.magnitude != 1.0f) it *= in.magnitude;
    if (out.magnitude != 1.0f) ot *= out.magnitude;
  } else if (normals != 0) {
    detail::ApplyDelta(it, in.pitch, in.yaw, in.magnitude, inNormal);
    detail::ApplyDelta(ot, out.pitch, out.yaw, out.magnitude, outNormal);
  }
}

// Point i's model tangents, found from the screen positions and turned
// back by the inverse screen transform.
void BareModelTangent(Arrays& a, std::size_t i, const Matrix& inverse) {
  Vector it = a.it[i], ot = a.ot[i];
  BareRule(a, i, a.screenp, it, ot);
  TransformDirection(inverse, ot);
  TransformDirection(inverse, it);
  a.it[i] = it;
  a.ot[i] = ot;
}

// Muscle mode without effects: the rule on the model positions, then the
// handle points a third of the tangent from the position.
void BareMuscleHandle(Arrays& a, std::size_t i) {
  Vector it = a.mit[i], ot = a.mot[i];
  BareRule(a, i, a.mp, it, ot);
  a.mit[i] = it * kInThird + a.p[i];
  a.mot[i] = ot * kOutThird + a.p[i];
}

void BareScreenHandle(Arrays& a, std::size_t i, const Matrix& s) {
  const Vector& p = a.p[i];
  a.screenit[i] = TransformPoint(s, a.it[i] * kInThird + p);
  a.screenot[i] = TransformPoint(s, a.ot[i] * kOutThird + p);
}

// Each run's hooks cut from its carrier's segment, in screen space (p,
// the pieces, screenp) or in muscle mode (mp and the muscle pieces), from
// the carrier's and its next's positions and handle points.
template <bool kScreen>
void BarePlaceRuns(Arrays& a, const Matrix& screen, const Matrix& inverse) {
  const std::vector<Vector>& at = kScreen ? a.screenp : a.mp;
  const std::vector<Vector>& ins = kScreen ? a.screenit : a.mit;
  const std::vector<Vector>& outs = kScreen ? a.screenot : a.mot;
  for (const Run& r : a.runs) {
    const auto end = static_cast<std::size_t>(r.end), carrier = static_cast<std::size_t>(r.carrier);
    const Vector q = at[static_cast<std::size_t>(a.head[end])];
    const Vector p = at[static_cast<std::size_t>(a.head[carrier])];
    const Vector& c1 = outs[end];
    const Vector& c2 = ins[carrier];
    float from = 1.0f;
    for (std::size_t h : r.hooks) {
      const float to = static_cast<float>(1.0 - a.s[h]);
      if constexpr (kScreen) {
        detail::CutPiece<true>(q, c1, c2, p, from, to, inverse, a.hit[h], a.hot[h], a.p[h]);
        a.screenp[h] = TransformPoint(screen, a.p[h]);
      } else {
        detail::CutPiece<false>(q, c1, c2, p, from, to, inverse, a.mhit[h], a.mhot[h], a.mp[h]);
      }
      from = to;
    }
    const std::size_t last = r.hooks.back();
    Vector atEnd;
    detail::CutPiece<kScreen>(q, c1, c2, p, from, 0.0f, inverse, kScreen ? a.pit[last] : a.mpit[last],
                              kScreen ? a.pot[last] : a.mpot[last], atEnd);
  }
}

// Each hook's tangent between its partners' handle offsets: model tangents
// turned back from screen space, or muscle handle points.
template <bool kScreen>
void BareHookTangents(Arrays& a, const Matrix& inverse) {
  const std::vector<Vector>& at = kScreen ? a.screenp : a.mp;
  const std::vector<Vector>& ins = kScreen ? a.screenit : a.mit;
  const std::vector<Vector>& outs = kScreen ? a.screenot : a.mot;
  const auto position = [&](std::size_t k) -> const Vector& { return at[static_cast<std::size_t>(a.head[k])]; };
  for (const HookReads& k : a.hooks) {
    const std::size_t h = k.hook;
    Vector d = position(k.neighbour);
    d -= position(h);
    const Vector t1 = detail::PartnerOffset(d, position(k.first), ins[k.first], outs[k.first]);
    const Vector t2 = detail::PartnerOffset(d, position(k.second), ins[k.second], outs[k.second]);
    Vector t = detail::HookTangent(t1, t2, a.s[h], a.prev[h] >= 0);
    if constexpr (kScreen) {
      TransformDirection(inverse, t);
      a.it[h] = a.ot[h] = t;
    } else {
      a.mit[h] = t * kInThird + a.mp[h];
      a.mot[h] = t * kOutThird + a.mp[h];
    }
  }
}

// Everything a new screen transform stales, in the order the values read
// each other: the points no hook reaches, the hooks (placement, tangent,
// screen handles), the hooks' spline neighbours; in muscle mode then the
// muscle handles in the same order.
template <bool Muscle>
[[gnu::flatten]] void BareWholeFrame(Arrays& a, const Matrix& s, const Matrix& inverse) {
  BareScreenPositions(a, s, false);
  for (std::size_t i = 0; i < a.p.size(); ++i)
    if (!a.hook[i] && !a.nearHook[i]) BareModelTangent(a, i, inverse);
  for (std::size_t i = 0; i < a.p.size(); ++i)
    if (!a.hook[i] && !a.nearHook[i]) BareScreenHandle(a, i, s);
  BarePlaceRuns<true>(a, s, inverse);
  BareHookTangents<true>(a, inverse);
  for (const HookReads& k : a.hooks) BareScreenHandle(a, k.hook, s);
  for (std::size_t i : a.nearHooks) BareModelTangent(a, i, inverse);
  for (std::size_t i : a.nearHooks) BareScreenHandle(a, i, s);
  if (Muscle) {
    for (std::size_t i = 0; i < a.p.size(); ++i)
      if (!a.hook[i] && !a.nearHook[i]) BareMuscleHandle(a, i);
    BarePlaceRuns<false>(a, s, inverse);
    BareHookTangents<false>(a, inverse);
    for (std::size_t i : a.nearHooks) BareMuscleHandle(a, i);
  }
}

// The screen and model floors, with the hooks' placement and tangents as
// the library left them.
[[gnu::flatten]] void BareModelTangents(Arrays& a, const Matrix& inverse) {
  for (std::size_t i = 0; i < a.p.size(); ++i)
    if (!a.hook[i]) BareModelTangent(a, i, inverse);
}
void BareScreenHandles(Arrays& a, const Matrix& s) {
  for (std::size_t i = 0; i < a.p.size(); ++i) BareScreenHandle(a, i, s);
}

// The floor must compute what the library computes: every value compared
// bit for bit once, after the whole-frame floor in muscle mode.
bool FloorMatchesLibrary() {
  static const bool same = [] {
    Arrays& a = Plain();
    const ViewRecord& v = Grid().view();
    const std::vector<Vector> muscleAt = a.mp;  // the library's (a hook's muscle placement)
    BareWholeFrame<true>(a, v.screenMatrix, v.inverseScreenMatrix);
    auto equal = [](const Vector& x, const Vector& y) { return std::memcmp(&x, &y, sizeof x) == 0; };
    for (std::size_t i = 0; i < a.p.size(); ++i) {
      SegmentCP* cp = Grid().points()[i];
      SegmentCP* m = MuscleGrid().points()[i];
      if (!equal(a.mit[i], m->mit) || !equal(a.mot[i], m->mot)) return false;
      if (a.head[i] == static_cast<int>(i) && !equal(a.screenp[i], cp->screenp)) return false;
      if (!equal(a.p[i], cp->head->p) || !equal(a.it[i], cp->it) || !equal(a.ot[i], cp->ot) ||
          !equal(a.screenit[i], cp->screenit) || !equal(a.screenot[i], cp->screenot))
        return false;
      if (a.hook[i]) {
        auto* h = static_cast<HookSegmentCP*>(cp);
        auto* mh = static_cast<HookSegmentCP*>(m);
        if (!equal(a.mp[i], muscleAt[i]) || !equal(a.hit[i], h->hit) || !equal(a.hot[i], h->hot) ||
            !equal(a.mhit[i], mh->mhit) || !equal(a.mhot[i], mh->mhot))
          return false;
      }
    }
    for (const Run& r : a.runs) {  // the run's last piece, held by its last hook
      const std::size_t i = r.hooks.back();
      auto* h = static_cast<HookSegmentCP*>(Grid().points()[i]);
      auto* mh = static_cast<HookSegmentCP*>(MuscleGrid().points()[i]);
      if (!equal(a.pit[i], h->pit) || !equal(a.pot[i], h->pot) || !equal(a.mpit[i], mh->mpit) ||
          !equal(a.mpot[i], mh->mpot))
        return false;
    }
    return true;
  }();
  return same;
}

// The floor of a refresh: screen positions, then the model tangents (a
// model refresh), the screen handles (a screen refresh), or the whole frame
// (everything a new screen transform stales, with or without muscle mode),
// on the plain arrays.
template <bool Tangents, bool Handles, bool Muscle = false>
void BM_BareRefresh(benchmark::State& state) {
  if (!FloorMatchesLibrary()) return state.SkipWithError("the bare loop and the library disagree");
  Arrays& a = Plain();
  const ViewRecord& v = Grid().view();
  for (auto _ : state) {
    if (Tangents && Handles) {
      BareWholeFrame<Muscle>(a, v.screenMatrix, v.inverseScreenMatrix);
    } else {
      BareScreenPositions(a, v.screenMatrix, true);
      if (Tangents) BareModelTangents(a, v.inverseScreenMatrix);
      if (Handles) BareScreenHandles(a, v.screenMatrix);
    }
    benchmark::ClobberMemory();
  }
  PerPoint(state, a.p.size());
}

// Figure::RefreshAll after SetScreen (the same transform again).
void BM_FigureWholeRefresh(benchmark::State& state) {
  GridFigure& figure = Grid();
  figure.cache().mode = 0;
  const ViewRecord v = figure.view();
  for (auto _ : state) {
    figure.figure().SetScreen(v.screenMatrix, v.inverseScreenMatrix);
    figure.figure().RefreshAll(Space::kScreen);
  }
  PerPoint(state, figure.points().size());
}

// The same in muscle mode.
void BM_FigureMuscleRefresh(benchmark::State& state) {
  GridFigure& figure = MuscleGrid();
  const ViewRecord v = figure.view();
  for (auto _ : state) {
    figure.figure().SetScreen(v.screenMatrix, v.inverseScreenMatrix);
    figure.figure().RefreshAll(Space::kMuscle);
  }
  PerPoint(state, figure.points().size());
}

// The same on about 10^6 control points, on one thread beside two.
void RefreshMillionOn(benchmark::State& state, int threads) {
  static GridFigure figure(707);
  const ViewRecord v = figure.view();
  figure.figure().RefreshAll(Space::kScreen, threads);  // the plan for this many threads, made once
  for (auto _ : state) {
    figure.figure().SetScreen(v.screenMatrix, v.inverseScreenMatrix);
    figure.figure().RefreshAll(Space::kScreen, threads);
  }
  PerPoint(state, figure.points().size());
}
void BM_RefreshMillion1(benchmark::State& state) { RefreshMillionOn(state, 1); }
void BM_RefreshMillion2(benchmark::State& state) { RefreshMillionOn(state, 2); }

// Names are "<case>/<implementation>" so that the ratio table sets each
// bare loop against the library.
const bool kRegistered = [] {
  const char* screen = "Screen refresh, 100k cps";
  const char* model = "Model refresh, 100k cps";
  benchmark::RegisterBenchmark((std::string(screen) + "/splinecore").c_str(), BM_ScreenRefresh)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark((std::string(screen) + "/bare loop").c_str(), BM_BareRefresh<false, true>)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark((std::string(model) + "/splinecore").c_str(), BM_ModelRefresh)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark((std::string(model) + "/bare loop").c_str(), BM_BareRefresh<true, false>)
      ->Unit(benchmark::kMillisecond);
  const char* whole = "Refresh after SetScreen, 100k cps";
  benchmark::RegisterBenchmark((std::string(whole) + "/Figure RefreshAll").c_str(), BM_FigureWholeRefresh)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark((std::string(whole) + "/bare loop").c_str(), BM_BareRefresh<true, true>)
      ->Unit(benchmark::kMillisecond);
  const char* muscle = "Refresh after SetScreen, muscle mode, 100k cps";
  benchmark::RegisterBenchmark((std::string(muscle) + "/Figure RefreshAll").c_str(), BM_FigureMuscleRefresh)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark((std::string(muscle) + "/bare loop").c_str(), BM_BareRefresh<true, true, true>)
      ->Unit(benchmark::kMillisecond);
  // Timed by the wall clock (the ratio table does so for " thread" cases).
  const char* million = "RefreshAll after SetScreen, 10^6 cps";
  benchmark::RegisterBenchmark((std::string(million) + "/1 thread").c_str(), BM_RefreshMillion1)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
  benchmark::RegisterBenchmark((std::string(million) + "/2 threads").c_str(), BM_RefreshMillion2)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
  benchmark::RegisterBenchmark("Muscle refresh, 100k cps/splinecore", BM_MuscleRefresh)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("Cached getter/splinecore Getit", BM_CachedGetter);
  return true;
}();

}  // namespace
}  // namespace splinecore::bench
