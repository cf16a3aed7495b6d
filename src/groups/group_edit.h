// SPDX-License-Identifier: MIT
// Internal helpers of the group edits.
#ifndef SPLINECORE_SRC_GROUPS_GROUP_EDIT_H
#define SPLINECORE_SRC_GROUPS_GROUP_EDIT_H

#include <cstdint>

#include "splinecore/segment_cp.h"

namespace splinecore::detail {

// Touches, with `mode`, every hook of the run that starts at h and the two
// spline neighbours on one side of each (skipping `exempt` ones).
void TouchHookRun(SegmentCP* h, long mode);

}  // namespace splinecore::detail

#endif
