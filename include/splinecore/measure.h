// SPDX-License-Identifier: MIT
/// @file
/// Curve evaluation and measurement: Bezier points, forward differencing in
/// the plane, and arc length in view space.
#ifndef SPLINECORE_MEASURE_H
#define SPLINECORE_MEASURE_H

#include "splinecore/export.h"
#include "splinecore/geometry.h"

namespace splinecore {

class SegmentCP;

/// One Hermite piece: end points and the derivatives there.
struct Cubic {
  Vector p0;  ///< point at parameter 0
  Vector p1;  ///< point at parameter 1
  Vector t0;  ///< derivative at 0
  Vector t1;  ///< derivative at 1
};

/// Forward-differencing state.
struct Column {
  Vector p;   ///< current point
  Vector d1;  ///< first forward difference
  Vector d2;  ///< second forward difference
  Vector d3;  ///< third forward difference (constant)
};

/// Point of the Bezier piece (p0, p1, p2, p3) at t, all three coordinates.
/// out may be the same object as p0. t is not clamped.
SPLINECORE_API void CalcPoint(Vector& p0, Vector& p1, Vector& p2, Vector& p3, float t, Vector& out);
/// The same in the plane: writes out.x then out.y; out.z is left unchanged.
SPLINECORE_API void CalcPoint2(Vector& p0, Vector& p1, Vector& p2, Vector& p3, float t, Vector& out);
/// Prepares col (x and y only) for n equal steps along cubic from parameter
/// 0. n must be at least 1: with n = 0 the column holds infinities and NaNs.
SPLINECORE_API void InitFD2D(Column* col, Cubic* cubic, unsigned short n);
/// Advances col one step in x and y; z is never touched.
SPLINECORE_API void BumpFD2D(Column* col);

/// Length of c's segment (from c's next to c) in view space, as the sum of 30
/// chords. c must have a next; without one the result is 0.0.
SPLINECORE_API float CurveLength(SegmentCP* c);
/// Sum of the segment lengths from c to the end of its spline (the loopEnd
/// point's closing segment included); 1.0 when c has no next.
SPLINECORE_API float GetTotalLength(SegmentCP* c);
/// The view-space point and direction (derivative toward c, not normalised)
/// at `length` along the spline from c. Returns the walked length through the
/// segment that holds the point (or the whole length when `length` reaches
/// the end). Without a next: position = c's view position, direction
/// untouched, result 0.0.
SPLINECORE_API float PositionDirectionFromSubLength(SegmentCP* c, float length, Vector* position, Vector* direction);

}  // namespace splinecore

#endif
