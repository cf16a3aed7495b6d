// The 30-chord length against the arc length found by fine numeric
// integration of the speed, for a few curved segments.
//
// Bound. An arc of length s with curvature k has the chord s - k^2 s^3/24 +
// O(s^5). A parameter step h = 1/30 covers s ~ |P'| h, so the 30 chords fall
// short of the arc by E = (h^2/24) * integral over [0, 1] of k^2 |P'|^3 dt
// (k^2 |P'|^3 = |P' x P''|^2 / |P'|^3), up to a relative O(h^2), about 0.1%.
// Float rounding of the stepping and of the running sum adds at most a few
// ulps of the length per step, about 30 * 2^-24 * L < 2e-5 here, under 5% of
// the smallest E below (~5e-4). So the deficit must lie within 10% of E.
#include <cmath>

#include "measure_figure.h"

namespace splinecore::test {
namespace {

struct Segment {
  Vector np, not_, cp, cit;  // model: next's position and out tangent, c's position and in tangent
};

// The view-space Hermite piece in double, from the model data by hand:
// V(x, y, z) = (10 - 2y, 2x - 4, 2z + 1), L(v) = (-2 v.y, 2 v.x, 2 v.z).
struct Piece {
  double a[3], b[3], c[3];

  explicit Piece(const Segment& s) {
    const double p0[3] = {10.0 - 2.0 * s.np.y, 2.0 * s.np.x - 4.0, 2.0 * s.np.z + 1.0};
    const double p1[3] = {10.0 - 2.0 * s.cp.y, 2.0 * s.cp.x - 4.0, 2.0 * s.cp.z + 1.0};
    const double t0[3] = {-2.0 * s.not_.y, 2.0 * s.not_.x, 2.0 * s.not_.z};
    const double t1[3] = {-2.0 * s.cit.y, 2.0 * s.cit.x, 2.0 * s.cit.z};
    for (int i = 0; i < 3; ++i) {
      a[i] = 2 * p0[i] - 2 * p1[i] + t0[i] + t1[i];
      b[i] = -3 * p0[i] + 3 * p1[i] - 2 * t0[i] - t1[i];
      c[i] = t0[i];
    }
  }
  void Derivatives(double t, double d1[3], double d2[3]) const {
    for (int i = 0; i < 3; ++i) {
      d1[i] = 3 * a[i] * t * t + 2 * b[i] * t + c[i];
      d2[i] = 6 * a[i] * t + 2 * b[i];
    }
  }
  double Speed(double t) const {
    double d1[3], d2[3];
    Derivatives(t, d1, d2);
    return std::sqrt(d1[0] * d1[0] + d1[1] * d1[1] + d1[2] * d1[2]);
  }
  // k^2 |P'|^3 = |P' x P''|^2 / |P'|^3.
  double ChordErrorDensity(double t) const {
    double d1[3], d2[3];
    Derivatives(t, d1, d2);
    const double x = d1[1] * d2[2] - d1[2] * d2[1];
    const double y = d1[2] * d2[0] - d1[0] * d2[2];
    const double z = d1[0] * d2[1] - d1[1] * d2[0];
    const double speed = Speed(t);
    return (x * x + y * y + z * z) / (speed * speed * speed);
  }
};

// Composite Simpson rule over [0, 1] with 10^5 intervals.
template <class F>
double Integrate(F f) {
  const int n = 100000;
  const double h = 1.0 / n;
  double sum = f(0.0) + f(1.0);
  for (int k = 1; k < n; ++k) sum += (k % 2 != 0 ? 4.0 : 2.0) * f(k * h);
  return sum * h / 3.0;
}

using ArcLengthAccuracy = MeasureFigure;

TEST_F(ArcLengthAccuracy, ThirtyChordsFallShortByTheChordError) {
  const Segment segments[] = {
      {Vector(0, 0, 0), Vector(1.25f, -0.5f, 0.75f), Vector(2, 3, 1), Vector(0.5f, 1.75f, -1)},
      {Vector(1, 2, 0.5f), Vector(-2.5f, 0.5f, 1.5f), Vector(3, -1, 2), Vector(1.5f, -2, 0.25f)},
      {Vector(0.3f, -1.1f, 2.7f), Vector(4.2f, 0.9f, -1.3f), Vector(2.2f, 1.4f, 0.6f), Vector(-0.7f, 3.1f, 0.8f)},
      {Vector(0, 0, 0), Vector(3, 0, 0), Vector(1, 1, 0), Vector(0, 3, 0)},
  };
  const Vector zero(0, 0, 0);
  for (const Segment& s : segments) {
    SegmentCP* c = WithTangents(s.cp, s.cit, zero);
    fig.Open({c, WithTangents(s.np, zero, s.not_)});
    const Piece piece(s);
    const double arc = Integrate([&](double t) { return piece.Speed(t); });
    const double h = 1.0 / 30.0;
    const double chordError = h * h / 24.0 * Integrate([&](double t) { return piece.ChordErrorDensity(t); });
    const double measured = CurveLength(c);
    EXPECT_LT(measured, arc);
    EXPECT_GT(arc - measured, 0.9 * chordError) << "arc " << arc << " measured " << measured;
    EXPECT_LT(arc - measured, 1.1 * chordError) << "arc " << arc << " measured " << measured;
  }
}

}  // namespace
}  // namespace splinecore::test
