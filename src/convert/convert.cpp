// SPDX-License-Identifier: MIT
// SegmentCP::Convert and SegmentCP::MConvert: one conversion written over
// the space it runs in. Convert finds model tangents in screen space and
// carries them back with inverseScreenMatrix; MConvert finds muscle-mode
// tangents from the muscle-placement positions, with no transform.
#include "controlpoint/spaces.h"
#include "convert/apply_delta.h"
#include "convert/hook_tangent.h"
#include "tangents/hook_partners.h"

namespace splinecore {

namespace {

using detail::MuscleSpace;
using detail::ScreenSpace;

// The handle offset of partner x, out-offset asked for first.
template <class Space>
Vector PartnerOffsetIn(SegmentCP* x, const Vector& d) {
  const Vector out = Space::OutHandle(x);
  const Vector at = Space::Position(x);
  return detail::PartnerOffset(d, at, Space::InHandle(x), out);
}

// A hook's tangent, interpolated at s between its partners' handle offsets.
// Returns false, writing nothing, when a spline neighbour, the carrier with
// a next or a partner is missing.
template <class Space>
bool ConvertHook(HookSegmentCP* c) {
  SegmentCP* neighbour = c->prev != nullptr ? c->prev : c->next;
  if (neighbour == nullptr) return false;
  Vector d = Space::Position(neighbour);
  d -= Space::Position(c);
  SegmentCP* carrier = detail::FindCarrier(c);
  if (carrier == nullptr || carrier->next == nullptr) return false;
  SegmentCP* first = detail::FirstHookPartner(c, carrier);
  if (first == nullptr) return false;
  const Vector t1 = PartnerOffsetIn<Space>(first, d);
  SegmentCP* second = detail::SecondHookPartnerForConvert(carrier);
  if (second == nullptr) return false;
  const Vector t2 = PartnerOffsetIn<Space>(second, d);
  Space::OutTangent(c) = detail::HookTangent(t1, t2, c->GetS(), c->prev != nullptr);
  Space::InTangent(c) = Space::OutTangent(c);
  return true;
}

template <class Space>
void ConvertIn(SegmentCP* c) {
  Vector& it = Space::InTangent(c);
  Vector& ot = Space::OutTangent(c);
  if (c->IsHook()) {
    if (!ConvertHook<Space>(static_cast<HookSegmentCP*>(c))) return;
  } else {
    const Delta in = c->Getindelta();
    const Delta out = c->Getoutdelta();
    constexpr int screen = Space::kScreen ? 1 : 0;
    detail::TurnedTangents(in, out, it, ot, [c](Vector* t1, Vector* t2, Vector* n1, Vector* n2) {
      return c->GetTangents(t1, t2, n1, n2, screen);
    });
  }
  if constexpr (Space::kScreen) {
    const Matrix& inverse = c->cache->view->inverseScreenMatrix;
    TransformDirection(inverse, ot);
    TransformDirection(inverse, it);
  }
}

}  // namespace

void SegmentCP::Convert() { ConvertIn<ScreenSpace>(this); }

void SegmentCP::MConvert() { ConvertIn<MuscleSpace>(this); }

}  // namespace splinecore
