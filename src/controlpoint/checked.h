// Precondition checks of the getters in a checked build (SPLINECORE_CHECKED):
// a violated precondition aborts with a message naming the control point and
// the rule, instead of a crash somewhere later. Compiled out otherwise.
#ifndef SPLINECORE_SRC_CONTROLPOINT_CHECKED_H
#define SPLINECORE_SRC_CONTROLPOINT_CHECKED_H

#include "splinecore/segment_cp.h"

namespace splinecore::detail {

enum class Needs { kModel, kScreen };

#ifdef SPLINECORE_CHECKED
// Aborts unless c has its cache and head, the view record when `needs` is
// kScreen, and, for a hook, a carrier above it. (A carrier without a next is
// a defined case: the hook is treated as partnerless.)
void CheckGetter(const SegmentCP* c, Needs needs);
#else
inline void CheckGetter(const SegmentCP*, Needs) {}
#endif

}  // namespace splinecore::detail

#endif
