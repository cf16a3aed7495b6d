// SPDX-License-Identifier: MIT
// Turning and scaling one tangent by a Delta (internal). Inline: the
// benchmarks' bare loops run this same arithmetic.
#ifndef SPLINECORE_SRC_CONVERT_APPLY_DELTA_H
#define SPLINECORE_SRC_CONVERT_APPLY_DELTA_H

#include <cmath>
#include <cstdint>
#include <cstring>

#include "splinecore/geometry.h"

namespace splinecore::detail {

// True when pitch and yaw are both zero of either sign: the delta turns
// nothing (its magnitude may still scale).
inline bool MakesNoTurn(const Delta& d) {
  std::uint32_t pitch;
  std::uint32_t yaw;
  std::memcpy(&pitch, &d.pitch, sizeof pitch);
  std::memcpy(&yaw, &d.yaw, sizeof yaw);
  return ((pitch | yaw) & 0x7FFFFFFFu) == 0;
}

// Turns t toward `normal` by `pitch` degrees, then toward t x normal by
// `yaw`, and scales it by |t| then by `magnitude`. A zero t is left alone
// (normal too); a zero normal is not normalised.
inline void ApplyDelta(Vector& t, float pitch, float yaw, float magnitude, Vector& normal);

// Turns a toward b by `degrees` measured on the square (a, b, -a, -b),
// normalised. out must not alias a or b. Zero degrees copies a unchanged. A
// finite angle of any size turns as the remainder of its integer part by 360
// does (exact in double); a non-finite angle makes no turn (out = a).
inline void TurnToward(const Vector& a, const Vector& b, Vector& out, float degrees);

// Brings a nonzero angle into the range the quadrant table covers: the
// remainder of the integer part by 360 (exact in double for every float),
// plus 360 when negative. Returns false for an angle that is not finite.
inline bool ReduceAngle(float degrees, double* reduced) {
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
inline float QuadrantFraction(double d, double start) { return static_cast<float>((d - start) * (1.0 / 90.0)); }


inline void TurnToward(const Vector& a, const Vector& b, Vector& out, float degrees) {
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

inline void ApplyDelta(Vector& t, float pitch, float yaw, float magnitude, Vector& normal) {
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

// A non-hook's tangents with its deltas: `rule(it, ot, inNormal, outNormal)`
// writes the rule's tangents (normals only when asked for, when a delta
// turns), then the magnitudes scale them or, with a turn and normals,
// ApplyDelta turns them. The conversions and the whole-figure refresh run this.
template <class Rule>
inline void TurnedTangents(const Delta& in, const Delta& out, Vector& it, Vector& ot, Rule rule) {
  if (MakesNoTurn(in) && MakesNoTurn(out)) {
    rule(&it, &ot, nullptr, nullptr);
    if (in.magnitude != 1.0f) it *= in.magnitude;
    if (out.magnitude != 1.0f) ot *= out.magnitude;
    return;
  }
  Vector inNormal;
  Vector outNormal;
  if (rule(&it, &ot, &inNormal, &outNormal) != 0) {
    ApplyDelta(it, in.pitch, in.yaw, in.magnitude, inNormal);
    ApplyDelta(ot, out.pitch, out.yaw, out.magnitude, outNormal);
  }
}

}  // namespace splinecore::detail

#endif
