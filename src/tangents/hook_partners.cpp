// SPDX-License-Identifier: MIT
#include "tangents/hook_partners.h"

#include "controlpoint/walks.h"

namespace splinecore::detail {

using detail::FirstNonHookAbove;
using detail::FirstNonHookBelow;

SegmentCP* FirstHookPartner(SegmentCP* hook, SegmentCP* carrier) {
  if (carrier->stackPrev != nullptr) return carrier->stackPrev;
  return FirstNonHookBelow(hook);
}

SegmentCP* SecondHookPartnerForGetters(SegmentCP* carrier) {
  SegmentCP* end = carrier->next;
  if (end->stackPrev != nullptr) return end->stackPrev;
  return FirstNonHookBelow(end);
}

SegmentCP* SecondHookPartnerForConvert(SegmentCP* carrier) {
  SegmentCP* end = carrier->next;
  SegmentCP* above = FirstNonHookAbove(end);
  return above != nullptr ? above : FirstNonHookBelow(end);
}

}  // namespace splinecore::detail
