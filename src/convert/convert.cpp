// SegmentCP::Convert: model-space tangents found in screen space.
#include "controlpoint/position_cache.h"
#include "convert/apply_delta.h"
#include "convert/convert_common.h"
#include "splinecore/hooks.h"
#include "tangents/hook_partners.h"

namespace splinecore {

namespace {

// The screen handle offset of partner x, out-offset asked for first.
Vector ScreenPartnerOffset(SegmentCP* x, const Vector& d) {
  Vector outOffset = x->Getscreenot();
  outOffset -= x->Getscreenp();
  Vector inOffset = x->Getscreenp();
  inOffset -= x->Getscreenit();
  return PartnerOffset(d, outOffset, inOffset);
}

// A hook's tangent, interpolated at s between its partners' screen handle
// offsets. Returns false, writing nothing, when a partner is missing.
bool ConvertHook(HookSegmentCP* c) {
  SegmentCP* neighbour = c->prev != nullptr ? c->prev : c->next;
  if (neighbour == nullptr) return false;
  Vector d = neighbour->Getscreenp();
  d -= c->Getscreenp();
  SegmentCP* carrier = detail::FindCarrier(c);
  if (carrier == nullptr || carrier->next == nullptr) return false;
  SegmentCP* first = FirstHookPartner(c, carrier);
  if (first == nullptr) return false;
  const Vector t1 = ScreenPartnerOffset(first, d);
  SegmentCP* second = SecondHookPartnerForConvert(carrier);
  if (second == nullptr) return false;
  const Vector t2 = ScreenPartnerOffset(second, d);
  const Vector t = InterpolateHookTangent(t1, t2, c->GetS());
  // Without a prev the hook's neighbour lies ahead: reverse so that the
  // tangent keeps pointing toward prev.
  c->ot = c->prev != nullptr ? t : -t;
  c->it = c->ot;
  return true;
}

}  // namespace

void SegmentCP::Convert() {
  if (IsHook()) {
    if (!ConvertHook(static_cast<HookSegmentCP*>(this))) return;
  } else {
    const Delta in = Getindelta();
    const Delta out = Getoutdelta();
    if (MakesNoTurn(in) && MakesNoTurn(out)) {
      GetTangents(&it, &ot, nullptr, nullptr, 1);
      if (in.magnitude != 1.0f) it *= in.magnitude;
      if (out.magnitude != 1.0f) ot *= out.magnitude;
    } else {
      Vector inNormal;
      Vector outNormal;
      if (GetTangents(&it, &ot, &inNormal, &outNormal, 1) != 0) {
        ApplyDelta(it, in.pitch, in.yaw, in.magnitude, inNormal);
        ApplyDelta(ot, out.pitch, out.yaw, out.magnitude, outNormal);
      }
    }
  }
  const Matrix& inverse = cache->view->inverseScreenMatrix;
  TransformDirection(inverse, ot);
  TransformDirection(inverse, it);
}

}  // namespace splinecore
