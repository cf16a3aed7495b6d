// SPDX-License-Identifier: MIT
// Segment sampling shared by the arc-length operations (internal).
#ifndef SPLINECORE_SRC_MEASURE_VIEW_CUBIC_H
#define SPLINECORE_SRC_MEASURE_VIEW_CUBIC_H

#include "measure/forward_difference.h"
#include "splinecore/segment_cp.h"

namespace splinecore::detail {

// The segment of c (c->next at parameter 0, c at 1) in view space: positions
// through each point's viewMatrix, tangents through its linear part. Reads,
// in order, next's Getp, c's Getp, next's Getot, c's Getit.
// Precondition: c->GetNext() is not null.
void ViewCubic(SegmentCP* c, Cubic* cubic);

// Length of the chord walked by one BumpFD step from `from` to `to`: the
// double square root of the double dot product, not rounded.
inline double ChordLength(const Vector& from, const Vector& to) {
  const Vector d = from - to;
  return std::sqrt(d.Dot(d));
}

}  // namespace splinecore::detail

#endif
