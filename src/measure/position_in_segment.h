// SPDX-License-Identifier: MIT
// In-segment solver of the point at a length (internal).
#ifndef SPLINECORE_SRC_MEASURE_POSITION_IN_SEGMENT_H
#define SPLINECORE_SRC_MEASURE_POSITION_IN_SEGMENT_H

#include "splinecore/measure.h"

namespace splinecore::detail {

// Writes the view-space point and derivative at `rest` along c's segment,
// measured from c (parameter 1) towards c->next (parameter 0) over the 30
// chords and interpolated linearly inside the chord that holds it. When no
// chord holds it, the far end: p0 and t0 of the segment. Precondition:
// c->GetNext() is not null. The result is always 0.0 and is not used.
float PositionDirectionInSegment(SegmentCP* c, float rest, Vector* position, Vector* direction);

}  // namespace splinecore::detail

#endif
