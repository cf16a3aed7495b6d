// SPDX-License-Identifier: MIT
// Bezier point evaluation with Bernstein weights kept in double precision.
#include "splinecore/measure.h"

namespace splinecore {

namespace {

struct Bernstein {
  double b0, b1, b2, b3;
};

Bernstein WeightsAt(float t) {
  const double u = t;
  const double s = 1.0 - u;
  const double t2 = u * u;
  const double t3 = u * t2;
  const double s2 = s * s;
  const double s3 = s2 * s;
  return {s3, s2 * u * 3.0, s * t2 * 3.0, t3};
}

}  // namespace

void CalcPoint(Vector& p0, Vector& p1, Vector& p2, Vector& p3, float t, Vector& out) {
  const Bernstein w = WeightsAt(t);
  out = Scaled(p0, w.b0);  // before any other input is read: out may be p0
  Vector term = Scaled(p1, w.b1);
  out += term;
  term = Scaled(p2, w.b2);
  out += term;
  term = Scaled(p3, w.b3);
  out += term;
}

void CalcPoint2(Vector& p0, Vector& p1, Vector& p2, Vector& p3, float t, Vector& out) {
  const Bernstein w = WeightsAt(t);
  out.x = static_cast<float>(w.b0 * p0.x + w.b1 * p1.x + w.b2 * p2.x + w.b3 * p3.x);
  out.y = static_cast<float>(w.b0 * p0.y + w.b1 * p1.y + w.b2 * p2.y + w.b3 * p3.y);
}

}  // namespace splinecore
