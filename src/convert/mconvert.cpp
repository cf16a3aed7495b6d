// SegmentCP::MConvert: muscle-mode tangents from the muscle-mode model
// positions, with no transform.
#include "controlpoint/position_cache.h"
#include "convert/apply_delta.h"
#include "convert/convert_common.h"
#include "splinecore/hooks.h"
#include "tangents/hook_partners.h"

namespace splinecore {

namespace {

// The muscle handle offset of partner x, out-offset asked for first.
Vector MusclePartnerOffset(SegmentCP* x, const Vector& d) {
  Vector outOffset = x->Getmot();
  outOffset -= x->Getmp();
  Vector inOffset = x->Getmp();
  inOffset -= x->Getmit();
  return PartnerOffset(d, outOffset, inOffset);
}

void MConvertHook(HookSegmentCP* c) {
  SegmentCP* neighbour = c->prev != nullptr ? c->prev : c->next;
  if (neighbour == nullptr) return;
  Vector d = neighbour->Getmp();
  d -= c->Getmp();
  SegmentCP* carrier = detail::FindCarrier(c);
  if (carrier == nullptr || carrier->next == nullptr) return;
  SegmentCP* first = FirstHookPartner(c, carrier);
  if (first == nullptr) return;
  const Vector t1 = MusclePartnerOffset(first, d);
  SegmentCP* second = SecondHookPartnerForConvert(carrier);
  if (second == nullptr) return;
  const Vector t2 = MusclePartnerOffset(second, d);
  const Vector t = InterpolateHookTangent(t1, t2, c->GetS());
  c->mot = c->prev != nullptr ? t : -t;
  c->mit = c->mot;
}

}  // namespace

void SegmentCP::MConvert() {
  if (IsHook()) {
    MConvertHook(static_cast<HookSegmentCP*>(this));
    return;
  }
  const Delta in = Getindelta();
  const Delta out = Getoutdelta();
  if (MakesNoTurn(in) && MakesNoTurn(out)) {
    GetTangents(&mit, &mot, nullptr, nullptr, 0);
    if (in.magnitude != 1.0f) mit *= in.magnitude;
    if (out.magnitude != 1.0f) mot *= out.magnitude;
    return;
  }
  Vector inNormal;
  Vector outNormal;
  if (GetTangents(&mit, &mot, &inNormal, &outNormal, 0) != 0) {
    ApplyDelta(mit, in.pitch, in.yaw, in.magnitude, inNormal);
    ApplyDelta(mot, out.pitch, out.yaw, out.magnitude, outNormal);
  }
}

}  // namespace splinecore
