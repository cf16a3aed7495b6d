#include "tangents/hook_partners.h"

namespace splinecore {

namespace {

SegmentCP* FirstNonHookBelow(SegmentCP* x) {
  SegmentCP* m = x->stackNext;
  while (m != nullptr && m->IsHook()) m = m->stackNext;
  return m;
}

SegmentCP* FirstNonHookAbove(SegmentCP* x) {
  SegmentCP* m = x->stackPrev;
  while (m != nullptr && m->IsHook()) m = m->stackPrev;
  return m;
}

}  // namespace

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

}  // namespace splinecore
