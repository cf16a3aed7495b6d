// SPDX-License-Identifier: MIT
// SegmentCP::Convert and SegmentCP::MConvert: one conversion written over
// the space it runs in. Convert finds model tangents in screen space and
// carries them back with inverseScreenMatrix; MConvert finds muscle-mode
// tangents from the muscle-placement positions, with no transform.
#include "controlpoint/spaces.h"
#include "convert/apply_delta.h"
#include "tangents/hook_partners.h"

namespace splinecore {

namespace {

using detail::MuscleSpace;
using detail::ScreenSpace;

// The handle offset a hook partner contributes: the reverse of its in-offset
// when that points away from the hook's neighbour (d), else its out-offset.
Vector PartnerOffset(const Vector& d, const Vector& outOffset, const Vector& inOffset) {
  return d.Dot(inOffset) < 0.0 ? -inOffset : outOffset;
}

// t1 + (t2 - t1) * s, each of the three vector operations rounded.
Vector InterpolateHookTangent(const Vector& t1, const Vector& t2, float s) {
  Vector t = t2 - t1;
  t = t * s;
  return t1 + t;
}

// The handle offset of partner x, out-offset asked for first.
template <class Space>
Vector PartnerOffsetIn(SegmentCP* x, const Vector& d) {
  Vector outOffset = Space::OutHandle(x);
  outOffset -= Space::Position(x);
  Vector inOffset = Space::Position(x);
  inOffset -= Space::InHandle(x);
  return PartnerOffset(d, outOffset, inOffset);
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
  const Vector t = InterpolateHookTangent(t1, t2, c->GetS());
  // Without a prev the hook's neighbour lies ahead: reverse so that the
  // tangent keeps pointing toward prev.
  Space::OutTangent(c) = c->prev != nullptr ? t : -t;
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
