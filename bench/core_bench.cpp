// The lazy geometry core on a figure of about 100,000 control points: full
// screen, model and muscle refreshes through the raw getters, the figure's
// RefreshAll, a cached getter, and bare loops that run the refreshes'
// arithmetic kernels on plain arrays without any caching (their ratio to
// the library is what the cache machinery costs).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "convert/apply_delta.h"
#include "grid_figure.h"
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
// rule, ApplyDelta), so the ratio to the library is what the lazy machinery
// costs. Hook points keep the placement the library gave them (in muscle
// mode, their muscle placement) and get no tangent here (their rule
// interpolates partners' handles), so the library's hook work counts
// against it.

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

struct Arrays {
  std::vector<Vector> p;   // the head's position (a hook's placed position)
  std::vector<Vector> mp;  // the same in muscle mode (a hook's muscle placement)
  std::vector<int> head, prev, next;
  std::vector<unsigned char> smooth, hook;
  std::vector<Delta> in, out;
  std::vector<Vector> screenp, it, ot, screenit, screenot, mit, mot;
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
    for (SegmentCP* cp : points) {
      a.p.push_back(cp->head->p);
      a.head.push_back(find(cp->head));
      a.prev.push_back(find(cp->prev));
      a.next.push_back(find(cp->next));
      a.smooth.push_back(static_cast<unsigned char>(cp->IsSmooth()));
      a.hook.push_back(static_cast<unsigned char>(cp->IsHook()));
      a.in.push_back(cp->indelta);
      a.out.push_back(cp->outdelta);
    }
    Figure& muscle = MuscleGrid().figure();
    for (int s = 0; s < muscle.SplineCount(); ++s)
      for (int k = 0; k < muscle.PointCount(s); ++k) {
        const std::size_t i = a.mp.size();
        a.mp.push_back(a.hook[i] ? muscle.Position(PointId{s, k}, Space::kMuscle) : a.p[i]);
      }
    const std::size_t n = points.size();
    a.screenp.resize(n);
    a.it.resize(n);
    a.ot.resize(n);
    a.screenit.resize(n);
    a.screenot.resize(n);
    a.mit.resize(n);
    a.mot.resize(n);
    return a;
  }();
  return arrays;
}

constexpr float kInThird = -0.3333333432674408f;
constexpr float kOutThird = 0.3333333432674408f;

void BareScreenPositions(Arrays& a, const Matrix& s) {
  for (std::size_t i = 0; i < a.p.size(); ++i)
    if (a.head[i] == static_cast<int>(i)) a.screenp[i] = TransformPoint(s, a.p[i]);
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

// The model tangents, found from the screen positions and turned back by
// the inverse screen transform. Flattened like the library's kernel
// (RefreshPlainPoint), so that neither side pays stack copies.
[[gnu::flatten]] void BareModelTangents(Arrays& a, const Matrix& inverse) {
  for (std::size_t i = 0; i < a.p.size(); ++i) {
    if (a.hook[i]) continue;
    Vector it = a.it[i], ot = a.ot[i];
    BareRule(a, i, a.screenp, it, ot);
    TransformDirection(inverse, ot);
    TransformDirection(inverse, it);
    a.it[i] = it;
    a.ot[i] = ot;
  }
}

// Muscle mode without effects: the rule on the model positions, then the
// handle points a third of the tangent from the position.
[[gnu::flatten]] void BareMuscleHandles(Arrays& a) {
  for (std::size_t i = 0; i < a.p.size(); ++i) {
    if (a.hook[i]) continue;
    Vector it = a.mit[i], ot = a.mot[i];
    BareRule(a, i, a.mp, it, ot);
    a.mit[i] = it * kInThird + a.p[i];
    a.mot[i] = ot * kOutThird + a.p[i];
  }
}

void BareScreenHandles(Arrays& a, const Matrix& s) {
  for (std::size_t i = 0; i < a.p.size(); ++i) {
    const Vector& p = a.p[i];
    a.screenit[i] = TransformPoint(s, a.it[i] * kInThird + p);
    a.screenot[i] = TransformPoint(s, a.ot[i] * kOutThird + p);
  }
}

// The floor must compute what the library computes: every tangent and
// muscle handle (hooks aside) and screen value compared bit for bit once.
bool FloorMatchesLibrary() {
  static const bool same = [] {
    Arrays& a = Plain();
    const ViewRecord& v = Grid().view();
    BareScreenPositions(a, v.screenMatrix);
    BareModelTangents(a, v.inverseScreenMatrix);
    for (std::size_t i = 0; i < a.p.size(); ++i)
      if (a.hook[i]) {
        a.it[i] = Grid().points()[i]->it;
        a.ot[i] = Grid().points()[i]->ot;
      }
    BareScreenHandles(a, v.screenMatrix);
    BareMuscleHandles(a);
    for (std::size_t i = 0; i < a.p.size(); ++i) {
      SegmentCP* cp = Grid().points()[i];
      const SegmentCP* m = MuscleGrid().points()[i];
      if (!a.hook[i] && (!(a.mit[i] == m->mit) || !(a.mot[i] == m->mot))) return false;
      if (a.head[i] == static_cast<int>(i) && !(a.screenp[i] == cp->screenp)) return false;
      if (!a.hook[i] && (!(a.it[i] == cp->it) || !(a.ot[i] == cp->ot) || !(a.screenit[i] == cp->screenit) ||
                         !(a.screenot[i] == cp->screenot)))
        return false;
    }
    return true;
  }();
  return same;
}

// The floor of a refresh: screen positions, then the model tangents (a
// model refresh), the screen handles (a screen refresh) or both (everything
// a new screen transform stales), on the plain arrays.
template <bool Tangents, bool Handles, bool Muscle = false>
void BM_BareRefresh(benchmark::State& state) {
  if (!FloorMatchesLibrary()) return state.SkipWithError("the bare loop and the library disagree");
  Arrays& a = Plain();
  const ViewRecord& v = Grid().view();
  for (auto _ : state) {
    BareScreenPositions(a, v.screenMatrix);
    if (Tangents) BareModelTangents(a, v.inverseScreenMatrix);
    if (Handles) BareScreenHandles(a, v.screenMatrix);
    if (Muscle) BareMuscleHandles(a);
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
