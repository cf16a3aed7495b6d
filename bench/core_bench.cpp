// The lazy geometry core on a figure of about 100,000 control points: full
// screen, model and muscle refreshes, a cached getter, and bare loops that
// do the refreshes' arithmetic on plain arrays without any caching (their
// ratio to the lazy versions is what the cache machinery costs).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "grid_figure.h"

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

struct Arrays {
  std::vector<Vector> p, it, ot;
  std::vector<int> prev, next;
  std::vector<Vector> screenp, screenit, screenot;
};

Arrays& Plain() {
  static Arrays arrays = [] {
    GridFigure& figure = Grid();
    Arrays a;
    const auto& points = figure.points();
    std::vector<std::pair<SegmentCP*, int>> index;
    for (std::size_t i = 0; i < points.size(); ++i) {
      SegmentCP* cp = points[i];
      a.p.push_back(cp->Getp());
      a.it.push_back(cp->Getit());
      a.ot.push_back(cp->Getot());
    }
    // Neighbour indices by a sorted lookup of the control-point addresses.
    std::vector<std::pair<const SegmentCP*, int>> sorted;
    for (std::size_t i = 0; i < points.size(); ++i) sorted.emplace_back(points[i], static_cast<int>(i));
    std::sort(sorted.begin(), sorted.end());
    auto find = [&](const SegmentCP* cp) {
      if (cp == nullptr) return -1;
      auto at = std::lower_bound(sorted.begin(), sorted.end(), std::make_pair(cp, -1));
      return at != sorted.end() && at->first == cp ? at->second : -1;
    };
    for (SegmentCP* cp : points) {
      a.prev.push_back(find(cp->prev));
      a.next.push_back(find(cp->next));
    }
    a.screenp.resize(points.size());
    a.screenit.resize(points.size());
    a.screenot.resize(points.size());
    return a;
  }();
  return arrays;
}

void BM_BareScreenRefresh(benchmark::State& state) {
  Arrays& a = Plain();
  const Matrix& s = Grid().view().screenMatrix;
  for (auto _ : state) {
    for (std::size_t i = 0; i < a.p.size(); ++i) {
      a.screenp[i] = TransformPoint(s, a.p[i]);
      a.screenit[i] = TransformPoint(s, a.it[i] * -0.3333333432674408 + a.p[i]);
      a.screenot[i] = TransformPoint(s, a.ot[i] * 0.3333333432674408 + a.p[i]);
    }
    benchmark::ClobberMemory();
  }
  PerPoint(state, a.p.size());
}

void BM_BareModelRefresh(benchmark::State& state) {
  Arrays& a = Plain();
  const Matrix& s = Grid().view().screenMatrix;
  const Matrix& inverse = Grid().view().inverseScreenMatrix;
  for (auto _ : state) {
    for (std::size_t i = 0; i < a.p.size(); ++i) a.screenp[i] = TransformPoint(s, a.p[i]);
    for (std::size_t i = 0; i < a.p.size(); ++i) {
      const int pi = a.prev[i], ni = a.next[i];
      if (pi < 0 || ni < 0) continue;
      const Vector& P = a.screenp[i];
      const Vector& A = a.screenp[pi];
      const Vector& B = a.screenp[ni];
      const Vector chord = A - B;
      const float l = Length(chord);
      if (l == 0.0f) continue;
      const Vector d = chord * (1.0 / l);
      const float lb = Length(P - B), la = Length(A - P);
      const double share = (static_cast<double>(la) + lb) / l;
      Vector it = d * (lb / share);
      Vector ot = d * (la / share);
      TransformDirection(inverse, ot);
      TransformDirection(inverse, it);
      a.it[i] = it;
      a.ot[i] = ot;
    }
    benchmark::ClobberMemory();
  }
  PerPoint(state, a.p.size());
}

// Names are "<case>/<implementation>" so that the ratio table sets each
// bare loop against the library.
const bool kRegistered = [] {
  const char* screen = "Screen refresh, 100k cps";
  const char* model = "Model refresh, 100k cps";
  benchmark::RegisterBenchmark((std::string(screen) + "/splinecore").c_str(), BM_ScreenRefresh)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark((std::string(screen) + "/bare loop").c_str(), BM_BareScreenRefresh)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark((std::string(model) + "/splinecore").c_str(), BM_ModelRefresh)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark((std::string(model) + "/bare loop").c_str(), BM_BareModelRefresh)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("Muscle refresh, 100k cps/splinecore", BM_MuscleRefresh)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("Cached getter/splinecore Getit", BM_CachedGetter);
  return true;
}();

}  // namespace
}  // namespace splinecore::bench
