// Figure: one local edit and the next query of the edited spline, on a
// figure of 10^4 and of 10^5 control points. A local edit should cost the
// same on both; the ratio table sets the larger figure against the smaller.
#include <benchmark/benchmark.h>

#include "splinecore/figure.h"

namespace splinecore {
namespace {

constexpr int kPointsPerSpline = 100;

// Open wavy splines of 100 points each, side by side.
void Fill(Figure& f, int points) {
  for (int s = 0; s < points / kPointsPerSpline; ++s) {
    SplineDesc d;
    for (int i = 0; i < kPointsPerSpline; ++i)
      d.points.push_back(PointDesc{Vector(static_cast<float>(i), static_cast<float>(s) + 0.25f * (i % 2), 0)});
    f.AddSpline(d);
  }
}

void EditAndQuery(benchmark::State& state, int points) {
  Figure f;
  Fill(f, points);
  const PointId moved{0, kPointsPerSpline / 2};
  float y = 0;
  for (auto _ : state) {
    y = y == 0 ? 0.5f : 0;
    f.Move(moved, Vector(kPointsPerSpline / 2, y, 0));
    benchmark::DoNotOptimize(f.SplineLength(0));
  }
}

void BM_LocalEdit10k(benchmark::State& state) { EditAndQuery(state, 10000); }
void BM_LocalEdit100k(benchmark::State& state) { EditAndQuery(state, 100000); }

BENCHMARK(BM_LocalEdit10k)->Name("figure local edit + query/10^4 points")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_LocalEdit100k)->Name("figure local edit + query/10^5 points")->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace splinecore
