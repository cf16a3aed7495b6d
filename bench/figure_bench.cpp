// Figure: one local edit and the next query of the edited spline, on a
// figure of 10^4 and of 10^5 control points, in model and in muscle mode. A local edit should cost the
// same on both; the ratio table sets the larger figure against the smaller.
#include <benchmark/benchmark.h>

#include "splinecore/figure.h"
#include "splinecore/measure.h"

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

void EditAndQuery(benchmark::State& state, int points, bool muscle) {
  Figure f;
  Fill(f, points);
  if (muscle) {
    // An offset effect on every tenth point of the edited spline.
    for (int i = 0; i < kPointsPerSpline; i += 10) f.AddMuscleOffset(PointId{0, i}, Vector(0, 0.5f, 0));
    f.SetMuscleMode(true);
  }
  const PointId moved{0, kPointsPerSpline / 2};
  float y = 0;
  for (auto _ : state) {
    y = y == 0 ? 0.5f : 0;
    f.Move(moved, Vector(kPointsPerSpline / 2, y, 0));
    benchmark::DoNotOptimize(f.SplineLength(0));
  }
}

void BM_LocalEdit10k(benchmark::State& state) { EditAndQuery(state, 10000, false); }
void BM_LocalEdit100k(benchmark::State& state) { EditAndQuery(state, 100000, false); }
void BM_MuscleEdit10k(benchmark::State& state) { EditAndQuery(state, 10000, true); }
void BM_MuscleEdit100k(benchmark::State& state) { EditAndQuery(state, 100000, true); }

// 10^4 lengths on one spline of 1,000 segments: PointsAtLengths' single
// walk beside a walk per length (PositionDirectionFromSubLength each).
struct LongSpline {
  Figure f;
  std::vector<float> lengths;
  LongSpline() {
    SplineDesc d;
    for (int i = 0; i <= 1000; ++i)
      d.points.push_back(PointDesc{Vector(static_cast<float>(i), 0.25f * static_cast<float>(i % 3), 0)});
    f.AddSpline(d);
    const float total = f.SplineLength(0);
    for (int i = 0; i < 10000; ++i) lengths.push_back(total * static_cast<float>((i * 7919) % 10000) / 10000.0f);
  }
};

void BM_LengthsOneWalk(benchmark::State& state) {
  LongSpline s;
  for (auto _ : state) benchmark::DoNotOptimize(s.f.PointsAtLengths(0, s.lengths));
}

// The same lengths answered on one thread beside two.
void LengthsOn(benchmark::State& state, int threads) {
  static LongSpline s;
  for (auto _ : state) benchmark::DoNotOptimize(s.f.PointsAtLengths(0, s.lengths, threads));
}
void BM_Lengths1(benchmark::State& state) { LengthsOn(state, 1); }
void BM_Lengths2(benchmark::State& state) { LengthsOn(state, 2); }

void BM_LengthsWalkEach(benchmark::State& state) {
  LongSpline s;
  SegmentCP* first = s.f.ControlPoint(PointId{0, 0});
  for (auto _ : state) {
    for (float l : s.lengths) {
      Vector position, direction;
      PositionDirectionFromSubLength(first, l, &position, &direction);
      benchmark::DoNotOptimize(position);
    }
  }
}

// Every spline's length on a figure of 10^6 points (1,000 wavy splines of
// 1,000): the chord sums on one thread beside two.
Figure& Million() {
  static Figure f = [] {
    Figure m;
    for (int s = 0; s < 1000; ++s) {
      SplineDesc d;
      for (int i = 0; i < 1000; ++i)
        d.points.push_back(PointDesc{Vector(static_cast<float>(i), static_cast<float>(s) + 0.25f * (i % 3), 0)});
      m.AddSpline(d);
    }
    m.SplineLengths(1);
    return m;
  }();
  return f;
}

void SplineLengthsOn(benchmark::State& state, int threads) {
  Figure& f = Million();
  for (auto _ : state) benchmark::DoNotOptimize(f.SplineLengths(threads));
}
void BM_SplineLengths1(benchmark::State& state) { SplineLengthsOn(state, 1); }
void BM_SplineLengths2(benchmark::State& state) { SplineLengthsOn(state, 2); }

// Timed by the wall clock (the ratio table does so for " thread" cases).
BENCHMARK(BM_SplineLengths1)->Name("Spline lengths, 10^6 points/1 thread")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_SplineLengths2)->Name("Spline lengths, 10^6 points/2 threads")->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK(BM_Lengths1)->Name("10^4 lengths on threads, 1000 segments/1 thread")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Lengths2)->Name("10^4 lengths on threads, 1000 segments/2 threads")->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK(BM_LengthsOneWalk)->Name("10^4 lengths, 1000 segments/one walk")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LengthsWalkEach)->Name("10^4 lengths, 1000 segments/a walk per length")->Unit(benchmark::kMillisecond);

BENCHMARK(BM_LocalEdit10k)->Name("figure local edit + query/10^4 points")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_LocalEdit100k)->Name("figure local edit + query/10^5 points")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MuscleEdit10k)->Name("figure muscle-mode edit + query/10^4 points")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MuscleEdit100k)->Name("figure muscle-mode edit + query/10^5 points")->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace splinecore
