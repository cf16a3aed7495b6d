// Point evaluation, forward differencing and arc length on random smooth
// splines, against lib2geom (when found) and, for CurveLength, against a bare
// loop doing the same arithmetic on plain arrays.
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "marrow/marrow.h"
#include "measure/batch_length.h"
#include "measure/forward_difference.h"
#include "splinecore/splinecore.h"

#ifdef SPLINECORE_BENCH_HAVE_2GEOM
#include <2geom/bezier-curve.h>
#endif

namespace {

using splinecore::Column;
using splinecore::Cubic;
using splinecore::SegmentCP;
using splinecore::Vector;

constexpr std::size_t kSegments = 1024;  // power of two: indices wrap with a mask
constexpr std::size_t kLengths = 256;
constexpr double kGeomTolerance = 0.01;  // lib2geom's default length tolerance

splinecore::Matrix Identity() {
  splinecore::Matrix m{};
  m.m[0][0] = m.m[1][1] = m.m[2][2] = 1.0f;
  return m;
}

// One figure with identity transforms and an open spline of smooth points
// laid out as a random walk in the plane (steps of 20 to 60, turns up to 90
// degrees), so segments are curved but well-behaved.
class BenchSpline {
 public:
  BenchSpline(std::size_t points, unsigned seed) {
    cache_.view = &view_;
    cache_.figure = &record_;
    view_.viewMatrix = view_.inverseViewMatrix = Identity();
    view_.screenMatrix = view_.inverseScreenMatrix = Identity();
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> step(20.0, 60.0), turn(-1.5707963, 1.5707963);
    double x = 0, y = 0, heading = 0;
    SegmentCP* before = nullptr;
    for (std::size_t i = 0; i < points; ++i) {
      SegmentCP* c = new SegmentCP(&cache_);
      c->cache = &cache_;
      c->head = c;
      c->p = Vector(static_cast<float>(x), static_cast<float>(y), 0.0f);
      c->flags = splinecore::cpflag::smooth;
      c->indelta = c->outdelta = splinecore::Delta{0, 0, 1.0f};
      c->prev = before;
      if (before != nullptr) before->next = c;
      before = c;
      cps.push_back(c);
      heading += turn(rng);
      const double d = step(rng);
      x += d * std::cos(heading);
      y += d * std::sin(heading);
    }
  }
  ~BenchSpline() { splinecore::DeleteAllCP(cps.front()); }
  BenchSpline(const BenchSpline&) = delete;
  BenchSpline& operator=(const BenchSpline&) = delete;

  // The view-space Hermite piece of cps[i]'s segment (identity view).
  Cubic Segment(std::size_t i) const {
    SegmentCP* c = cps[i];
    SegmentCP* n = c->GetNext();
    return Cubic{n->Getp(), c->Getp(), n->Getot(), c->Getit()};
  }

  std::vector<SegmentCP*> cps;

 private:
  splinecore::FigureCache cache_{};
  splinecore::ViewRecord view_{};
  splinecore::FigureRecord record_{};
};

// Bezier points (b0 at parameter 0) of a Hermite piece.
struct Bezier {
  Vector b[4];
};

Bezier ToBezier(const Cubic& h) {
  const float third = 1.0f / 3.0f;
  return Bezier{{h.p0, h.p0 + h.t0 * third, h.p1 - h.t1 * third, h.p1}};
}

// Everything the cases share, built once: 1024 segments of a long spline
// and a separate spline of 100 segments.
struct Data {
  BenchSpline longSpline{kSegments + 1, 12345};
  BenchSpline shortSpline{101, 777};
  std::vector<Cubic> hermite;
  std::vector<Bezier> bezier;
  std::vector<float> params;   // evaluation parameters
  std::vector<float> lengths;  // lengths along the short spline

  Data() {
    for (std::size_t i = 0; i < kSegments; ++i) {
      hermite.push_back(longSpline.Segment(i));
      bezier.push_back(ToBezier(hermite.back()));
    }
    std::mt19937 rng(99);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    for (std::size_t i = 0; i < kSegments; ++i) params.push_back(unit(rng));
    const float total = splinecore::GetTotalLength(shortSpline.cps.front());
    for (std::size_t i = 0; i < kLengths; ++i) lengths.push_back(unit(rng) * total);
  }
};

Data& Shared() {
  static Data data;
  return data;
}

// --- CalcPoint ---------------------------------------------------------------

void CalcPointLibrary(benchmark::State& state) {
  Data& d = Shared();
  Vector out;
  std::size_t i = 0;
  for (auto _ : state) {
    Bezier& s = d.bezier[i];
    splinecore::CalcPoint(s.b[0], s.b[1], s.b[2], s.b[3], d.params[i], out);
    benchmark::DoNotOptimize(out);
    i = (i + 1) & (kSegments - 1);
  }
}

void CalcPoint2Library(benchmark::State& state) {
  Data& d = Shared();
  Vector out(0, 0, 0);
  std::size_t i = 0;
  for (auto _ : state) {
    Bezier& s = d.bezier[i];
    splinecore::CalcPoint2(s.b[0], s.b[1], s.b[2], s.b[3], d.params[i], out);
    benchmark::DoNotOptimize(out);
    i = (i + 1) & (kSegments - 1);
  }
}

// --- BumpFD2D ----------------------------------------------------------------

// One step per iteration, cycling over the 1024 columns; every 30 rounds
// the columns start over (amortised copy).
void BumpFD2DLibrary(benchmark::State& state) {
  Data& d = Shared();
  std::vector<Column> start(kSegments);
  for (std::size_t i = 0; i < kSegments; ++i) splinecore::InitFD2D(&start[i], &d.hermite[i], 30);
  std::vector<Column> cols = start;
  std::size_t i = 0, round = 0;
  for (auto _ : state) {
    splinecore::BumpFD2D(&cols[i]);
    benchmark::DoNotOptimize(cols[i]);
    if (++i == kSegments) {
      i = 0;
      if (++round == 30) {
        round = 0;
        cols = start;
      }
    }
  }
}

// --- CurveLength -------------------------------------------------------------

void CurveLengthLibrary(benchmark::State& state) {
  Data& d = Shared();
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(splinecore::CurveLength(d.longSpline.cps[i]));
    i = (i + 1) & (kSegments - 1);
  }
}

float F(double x) { return static_cast<float>(x); }

// Model-space data of one segment and the view matrix as plain arrays.
struct PlainSegment {
  float p0[3], p1[3], t0[3], t1[3];  // next's position and out tangent, c's position and in tangent
  float view[12];
};

PlainSegment Plain(SegmentCP* c) {
  SegmentCP* n = c->GetNext();
  PlainSegment s;
  const Vector* from[4] = {&n->Getp(), &c->Getp(), &n->Getot(), &c->Getit()};
  float* to[4] = {s.p0, s.p1, s.t0, s.t1};
  for (int k = 0; k < 4; ++k) {
    to[k][0] = from[k]->x;
    to[k][1] = from[k]->y;
    to[k][2] = from[k]->z;
  }
  const float* m = &c->cache->view->viewMatrix.m[0][0];
  for (int k = 0; k < 12; ++k) s.view[k] = m[k];
  return s;
}

// The 30-chord length with the library's rounding, view transform included,
// on plain float arrays: what CurveLength costs without the getters.
float BareCurveLength(const PlainSegment& in) {
  float p0[3], p1[3], t0[3], t1[3];
  for (int r = 0; r < 3; ++r) {
    const float* row = in.view + 4 * r;
    const double x = static_cast<double>(row[0]), y = row[1], z = row[2];
    p0[r] = F(x * in.p0[0] + y * in.p0[1] + z * in.p0[2] + row[3]);
    p1[r] = F(x * in.p1[0] + y * in.p1[1] + z * in.p1[2] + row[3]);
    t0[r] = F(x * in.t0[0] + y * in.t0[1] + z * in.t0[2]);
    t1[r] = F(x * in.t1[0] + y * in.t1[1] + z * in.t1[2]);
  }
  const float h = F(1.0 / 30), h2 = F(static_cast<double>(h) * h), h3 = F(static_cast<double>(h2) * h);
  const float h3x6 = F(6.0 * h3), h2x2 = F(2.0 * h2);
  float p[3], d1[3], d2[3], d3[3];
  for (int k = 0; k < 3; ++k) {
    float a = F(p0[k] * 2.0);
    a = F(static_cast<double>(a) - F(p1[k] * 2.0));
    a = F(static_cast<double>(a) + t0[k]);
    a = F(static_cast<double>(a) + t1[k]);
    float b = F(p0[k] * -3.0);
    b = F(static_cast<double>(b) + F(p1[k] * 3.0));
    b = F(static_cast<double>(b) - F(t0[k] * 2.0));
    b = F(static_cast<double>(b) - t1[k]);
    p[k] = p0[k];
    d1[k] = F(static_cast<double>(F(static_cast<double>(F(static_cast<double>(a) * h3)) + F(static_cast<double>(b) * h2))) +
              F(static_cast<double>(t0[k]) * h));
    d2[k] = F(static_cast<double>(F(static_cast<double>(a) * h3x6)) + F(static_cast<double>(b) * h2x2));
    d3[k] = F(static_cast<double>(a) * h3x6);
  }
  float sum = 0.0f;
  for (int step = 0; step < 30; ++step) {
    double dot = 0.0;
    for (int k = 0; k < 3; ++k) {
      const float before = p[k];
      p[k] = F(static_cast<double>(p[k]) + d1[k]);
      d1[k] = F(static_cast<double>(d1[k]) + d2[k]);
      d2[k] = F(static_cast<double>(d2[k]) + d3[k]);
      const double diff = F(static_cast<double>(before) - p[k]);
      dot += diff * diff;
    }
    sum = F(sum + std::sqrt(dot));
  }
  return sum;
}

void CurveLengthBareLoop(benchmark::State& state) {
  Data& d = Shared();
  std::vector<PlainSegment> plain;
  for (std::size_t i = 0; i < kSegments; ++i) {
    plain.push_back(Plain(d.longSpline.cps[i]));
    if (BareCurveLength(plain.back()) != splinecore::CurveLength(d.longSpline.cps[i])) {
      state.SkipWithError("bare loop and CurveLength disagree");
      return;
    }
  }
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(BareCurveLength(plain[i]));
    i = (i + 1) & (kSegments - 1);
  }
}

// --- lengths several segments at a time -------------------------------------

// The 1024 view-space segments measured by one kernel (same bits each).
void LengthsWith(benchmark::State& state, splinecore::detail::LengthKernel kernel) {
  if (!splinecore::detail::LengthKernelRuns(kernel)) {
    state.SkipWithError("the processor does not run this kernel");
    return;
  }
  Data& d = Shared();
  std::vector<float> out(kSegments);
  for (auto _ : state) {
    splinecore::detail::CubicLengths(d.hermite.data(), kSegments, out.data(), kernel);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * kSegments);
}

// A whole spline of 1024 segments, getters and summing included.
void SplineLengthScalar(benchmark::State& state) {
  SegmentCP* first = Shared().longSpline.cps.front();
  for (auto _ : state) benchmark::DoNotOptimize(splinecore::GetTotalLength(first));
}

void SplineLengthBatch(benchmark::State& state) {
  SegmentCP* first = Shared().longSpline.cps.front();
  for (auto _ : state) benchmark::DoNotOptimize(splinecore::detail::TotalLength(first));
}

// --- PositionDirectionFromSubLength -------------------------------------------

void PositionAtLengthLibrary(benchmark::State& state) {
  Data& d = Shared();
  SegmentCP* first = d.shortSpline.cps.front();
  Vector position, direction;
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(splinecore::PositionDirectionFromSubLength(first, d.lengths[i], &position, &direction));
    benchmark::DoNotOptimize(position);
    benchmark::DoNotOptimize(direction);
    i = (i + 1) & (kLengths - 1);
  }
}

#ifdef SPLINECORE_BENCH_HAVE_2GEOM

Geom::CubicBezier ToGeom(const Bezier& s) {
  return Geom::CubicBezier(Geom::Point(s.b[0].x, s.b[0].y), Geom::Point(s.b[1].x, s.b[1].y),
                           Geom::Point(s.b[2].x, s.b[2].y), Geom::Point(s.b[3].x, s.b[3].y));
}

std::vector<Geom::CubicBezier>& GeomCurves() {
  static std::vector<Geom::CubicBezier> curves = [] {
    std::vector<Geom::CubicBezier> v;
    for (const Bezier& s : Shared().bezier) v.push_back(ToGeom(s));
    return v;
  }();
  return curves;
}

void CalcPointGeom(benchmark::State& state) {
  Data& d = Shared();
  const std::vector<Geom::CubicBezier>& curves = GeomCurves();
  std::size_t i = 0;
  for (auto _ : state) {
    Geom::Point p = curves[i].pointAt(d.params[i]);
    benchmark::DoNotOptimize(p);
    i = (i + 1) & (kSegments - 1);
  }
}

// The same samples (k/30 along each segment) evaluated directly.
void BumpFD2DGeom(benchmark::State& state) {
  const std::vector<Geom::CubicBezier>& curves = GeomCurves();
  std::size_t i = 0, round = 1;
  for (auto _ : state) {
    Geom::Point p = curves[i].pointAt(static_cast<double>(round) / 30.0);
    benchmark::DoNotOptimize(p);
    if (++i == kSegments) {
      i = 0;
      if (++round > 30) round = 1;
    }
  }
}

void CurveLengthGeom(benchmark::State& state) {
  const std::vector<Geom::CubicBezier>& curves = GeomCurves();
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(curves[i].length(kGeomTolerance));
    i = (i + 1) & (kSegments - 1);
  }
}

// The point at a length with lib2geom's primitives: segment lengths at the
// tolerance along the walk, then bisection of the parameter (16 halvings)
// on the length of portion(0, t), then the point and derivative there.
// Curves run from the starting point towards the end, as the walk does.
void PositionAtLengthGeom(benchmark::State& state) {
  Data& d = Shared();
  std::vector<Geom::CubicBezier> curves;
  for (std::size_t i = 0; i + 1 < d.shortSpline.cps.size(); ++i) {
    const Bezier s = ToBezier(d.shortSpline.Segment(i));
    curves.push_back(ToGeom(Bezier{{s.b[3], s.b[2], s.b[1], s.b[0]}}));
  }
  std::size_t i = 0;
  for (auto _ : state) {
    const double length = d.lengths[i];
    double walked = 0.0;
    std::vector<Geom::Point> pd;
    for (const Geom::CubicBezier& curve : curves) {
      const double before = walked;
      walked += curve.length(kGeomTolerance);
      if (walked <= length) continue;
      double lo = 0.0, hi = 1.0;
      for (int k = 0; k < 16; ++k) {
        const double mid = 0.5 * (lo + hi);
        std::unique_ptr<Geom::Curve> part(curve.portion(0.0, mid));
        (before + part->length(kGeomTolerance) > length ? hi : lo) = mid;
      }
      pd = curve.pointAndDerivatives(0.5 * (lo + hi), 1);
      break;
    }
    benchmark::DoNotOptimize(pd);
    i = (i + 1) & (kLengths - 1);
  }
}

#endif  // SPLINECORE_BENCH_HAVE_2GEOM

// Cases in "<case>/<implementation>" form, the library first.
const bool kRegistered = [] {
  benchmark::RegisterBenchmark("CalcPoint per point/splinecore CalcPoint", CalcPointLibrary);
  benchmark::RegisterBenchmark("CalcPoint per point/splinecore CalcPoint2", CalcPoint2Library);
  benchmark::RegisterBenchmark("BumpFD2D step/splinecore BumpFD2D", BumpFD2DLibrary);
  benchmark::RegisterBenchmark("CurveLength per segment/splinecore CurveLength", CurveLengthLibrary);
  benchmark::RegisterBenchmark("CurveLength per segment/bare 30-step loop", CurveLengthBareLoop);
  benchmark::RegisterBenchmark("PositionAtLength 100 segments/splinecore", PositionAtLengthLibrary);
  using splinecore::detail::LengthKernel;
  benchmark::RegisterBenchmark("1024 segment lengths/scalar", LengthsWith, LengthKernel::kScalar)
      ->Unit(benchmark::kMicrosecond);
  benchmark::RegisterBenchmark("1024 segment lengths/SSE2, 4 lanes", LengthsWith, LengthKernel::kSse2)
      ->Unit(benchmark::kMicrosecond);
  benchmark::RegisterBenchmark("1024 segment lengths/AVX2, 8 lanes", LengthsWith, LengthKernel::kAvx2)
      ->Unit(benchmark::kMicrosecond);
  benchmark::RegisterBenchmark("Spline length, 1024 segments/GetTotalLength", SplineLengthScalar)
      ->Unit(benchmark::kMicrosecond);
  benchmark::RegisterBenchmark("Spline length, 1024 segments/batch TotalLength", SplineLengthBatch)
      ->Unit(benchmark::kMicrosecond);
#ifdef SPLINECORE_BENCH_HAVE_2GEOM
  benchmark::RegisterBenchmark("CalcPoint per point/lib2geom pointAt", CalcPointGeom);
  benchmark::RegisterBenchmark("BumpFD2D step/lib2geom pointAt(k/30)", BumpFD2DGeom);
  benchmark::RegisterBenchmark("CurveLength per segment/lib2geom length(0.01)", CurveLengthGeom);
  benchmark::RegisterBenchmark("PositionAtLength 100 segments/lib2geom length+portion", PositionAtLengthGeom);
#endif
  return true;
}();

}  // namespace
