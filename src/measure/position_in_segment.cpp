// SPDX-License-Identifier: MIT
// The in-segment solver: which of the 30 chords holds a length, and the
// cubic's point and derivative at the interpolated parameter.
#include "measure/position_in_segment.h"
#include "measure/view_cubic.h"

namespace splinecore::detail {

namespace {

// The float nearest 1/30: the parameter span of one chord.
constexpr double kChordSpan = static_cast<double>(0.033333335f);

// chords[0] ends at c (parameter 1), chords[29] starts at next (parameter 0).
void ChordTable(const Cubic* cubic, float chords[kChordCount]) {
  Column col;
  InitChordColumn(&col, cubic);
  for (unsigned k = 1; k <= kChordCount; ++k) {
    const Vector prev = col.p;
    BumpFD(&col);
    chords[kChordCount - k] = static_cast<float>(ChordLength(prev, col.p));
  }
}

// Parameter of the point `rest` along the chords from c's end; false when
// the chords sum to no more than rest.
bool ParameterAt(const float chords[kChordCount], float rest, float* t) {
  float acc = 0.0f;
  float steps = 0.0f;
  for (unsigned j = 0; j < kChordCount; ++j) {
    const double s = static_cast<double>(acc) + chords[j];
    if (s > rest) {
      *t = static_cast<float>(1.0 - ((static_cast<double>(rest) - acc) / chords[j] * kChordSpan + steps));
      return true;
    }
    steps = static_cast<float>(steps + kChordSpan);
    acc = static_cast<float>(s);
  }
  return false;
}

}  // namespace

float PositionDirectionInSegment(SegmentCP* c, float rest, Vector* position, Vector* direction) {
  Cubic cubic;
  ViewCubic(c, &cubic);
  float chords[kChordCount];
  ChordTable(&cubic, chords);
  float t;
  if (!ParameterAt(chords, rest, &t)) {
    *position = cubic.p0;
    *direction = cubic.t0;
    return 0.0f;
  }
  CubicPoly poly;
  CubicToPoly(&poly, &cubic);
  const Vector& a = poly.a;
  const Vector& b = poly.b;
  const Vector& t0 = cubic.t0;
  const Vector& p0 = cubic.p0;
  const double u = t;
  const double t2 = u * u;
  const double t3 = t2 * u;
  *position = Vector(static_cast<float>(a.x * t3 + b.x * t2 + t0.x * u + p0.x),
                     static_cast<float>(a.y * t3 + b.y * t2 + t0.y * u + p0.y),
                     static_cast<float>(a.z * t3 + b.z * t2 + t0.z * u + p0.z));
  *direction = Vector(static_cast<float>(3.0 * a.x * t2 + 2.0 * b.x * u + t0.x),
                      static_cast<float>(3.0 * a.y * t2 + 2.0 * b.y * u + t0.y),
                      static_cast<float>(3.0 * a.z * t2 + 2.0 * b.z * u + t0.z));
  return 0.0f;
}

}  // namespace splinecore::detail
