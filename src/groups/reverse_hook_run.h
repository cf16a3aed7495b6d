// SPDX-License-Identifier: MIT
// Internal helper of slice reversal.
#ifndef SPLINECORE_SRC_GROUPS_REVERSE_HOOK_RUN_H
#define SPLINECORE_SRC_GROUPS_REVERSE_HOOK_RUN_H

#include "splinecore/segment_cp.h"

namespace splinecore::detail {

// Reverses the run of hooks that starts at r (the first below its carrier):
// swaps each hook's stack links, mirrors its snapped s to 1 - s, moves
// lastHook from the last hook to r. Returns the former last hook.
SegmentCP* ReverseHookRun(SegmentCP* r);

}  // namespace splinecore::detail

#endif
