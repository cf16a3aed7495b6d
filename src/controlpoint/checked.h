// SPDX-License-Identifier: MIT
// Precondition checks of the getters in a checked build (SPLINECORE_CHECKED):
// a violated precondition aborts with a message naming the control point and
// the rule, instead of a crash somewhere later. Compiled out otherwise.
#ifndef SPLINECORE_SRC_CONTROLPOINT_CHECKED_H
#define SPLINECORE_SRC_CONTROLPOINT_CHECKED_H

#include "splinecore/segment_cp.h"

namespace splinecore::detail {

// What a getter reads: model or screen positions, and for the tangent
// getters a hook's carrier.
enum class Needs { kModel, kScreen, kModelTangent, kScreenTangent };

#ifdef SPLINECORE_CHECKED
// Aborts unless c has its cache and head, the view record when `needs` is
// kScreen(Tangent), and, for a tangent getter on a hook, a carrier above it.
// (A hook's position without a carrier, and a carrier without a next, are
// defined cases.)
void CheckGetter(const SegmentCP* c, Needs needs);
#else
inline void CheckGetter(const SegmentCP*, Needs) {}
#endif

}  // namespace splinecore::detail

#endif
