// SPDX-License-Identifier: MIT
#include "convert/apply_delta.h"

#include <cmath>

namespace splinecore::detail {

namespace {

// Brings a nonzero angle into the range the quadrant table covers: the
// remainder of the integer part by 360 (exact in double for every float),
// plus 360 when negative. Returns false for an angle that is not finite.
bool ReduceAngle(float degrees, double* reduced) {
  const double d = degrees;
  if (!std::isfinite(d)) return false;
  if (d < 0.0) {
    *reduced = static_cast<float>(std::fmod(std::trunc(d), 360.0) + 360.0);
  } else if (d > 360.0) {
    *reduced = static_cast<float>(std::fmod(std::trunc(d), 360.0));
  } else {
    *reduced = d;
  }
  return true;
}

// The fraction of the quadrant that starts at `start`, rounded to float.
float QuadrantFraction(double d, double start) { return static_cast<float>((d - start) * (1.0 / 90.0)); }

}  // namespace

void TurnToward(const Vector& a, const Vector& b, Vector& out, float degrees) {
  double d = 0.0;
  if (degrees == 0.0f || !ReduceAngle(degrees, &d)) {
    out = a;
    return;
  }
  // Piecewise-linear walk around the square a, b, -a, -b.
  if (d < 90.0) {
    out = a + (b - a) * QuadrantFraction(d, 0.0);
  } else if (d < 180.0) {
    out = b + (-a - b) * QuadrantFraction(d, 90.0);
  } else if (d < 270.0) {
    out = -a + (a - b) * QuadrantFraction(d, 180.0);
  } else {
    out = -b + (a + b) * QuadrantFraction(d, 270.0);
  }
  const float len = Length(out);
  if (len != 0.0f) out = ScaledByReciprocal(out, len);
}

void ApplyDelta(Vector& t, float pitch, float yaw, float magnitude, Vector& normal) {
  const float length = Length(t);
  if (length == 0.0f) return;
  const float normalLength = Length(normal);
  if (normalLength != 0.0f) normal = ScaledByReciprocal(normal, normalLength);
  t = ScaledByReciprocal(t, length);
  const Vector side = t.Cross(normal);
  Vector pitched;
  TurnToward(t, normal, pitched, pitch);
  TurnToward(pitched, side, t, yaw);
  t = t * length * magnitude;
}

}  // namespace splinecore::detail
