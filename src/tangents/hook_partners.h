// SPDX-License-Identifier: MIT
// The hook partners: the non-hook control points of other splines stacked at
// the two ends of a hook's segment, from whose handles the hook takes its
// tangent (internal).
#ifndef SPLINECORE_SRC_TANGENTS_HOOK_PARTNERS_H
#define SPLINECORE_SRC_TANGENTS_HOOK_PARTNERS_H

#include "splinecore/segment_cp.h"

namespace splinecore::detail {

// The carrier's stackPrev as it is (hook or not); when the carrier tops its
// stack, the first non-hook below `hook`. Null when there is none.
SegmentCP* FirstHookPartner(SegmentCP* hook, SegmentCP* carrier);

// Second partner as the tangent getters find it: the stackPrev of the
// carrier's next as it is; when that is null, the first non-hook below the
// carrier's next. The carrier must have a next.
SegmentCP* SecondHookPartnerForGetters(SegmentCP* carrier);

// Second partner as the conversions find it: the first non-hook above the
// carrier's next, else the first non-hook below it. The carrier must have a
// next.
SegmentCP* SecondHookPartnerForConvert(SegmentCP* carrier);

}  // namespace splinecore::detail

#endif
