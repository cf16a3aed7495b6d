// SPDX-License-Identifier: MIT
#include "splinecore/segment_cp.h"
#include "tangents/tangent_rule.h"

namespace splinecore {

using detail::HalfChords;
using detail::SmoothInterior;
using detail::SmoothNoNext;
using detail::SmoothNoPrev;

namespace {

const Vector kZero(0.0f, 0.0f, 0.0f);

// The position the tangent rule reads: screen space or muscle-placement
// model space. Copied, so later fetches cannot change it.
Vector PositionOf(SegmentCP* c, int screen) { return screen != 0 ? c->Getscreenp() : c->Getmp(); }

}  // namespace

int SegmentCP::GetTangents(Vector* inTangent, Vector* outTangent, Vector* inNormal, Vector* outNormal, int screen) {
  if (IsHook()) return 0;
  const Vector P = PositionOf(this, screen);
  Vector A = kZero;
  Vector B = kZero;
  if (prev != nullptr) A = PositionOf(prev, screen);
  if (next != nullptr) B = PositionOf(next, screen);

  if (IsSmooth()) {
    if (prev != nullptr && next != nullptr) {
      return SmoothInterior(P, A, B, inTangent, outTangent, inNormal, outNormal);
    }
    if (prev == nullptr && next != nullptr && next->next != nullptr) {
      return SmoothNoPrev(P, B, PositionOf(next->next, screen), inTangent, outTangent, inNormal, outNormal);
    }
    if (next == nullptr && prev != nullptr && prev->prev != nullptr) {
      return SmoothNoNext(P, A, PositionOf(prev->prev, screen), inTangent, outTangent, inNormal, outNormal);
    }
  }
  return HalfChords(P, prev != nullptr ? &A : nullptr, next != nullptr ? &B : nullptr, inTangent, outTangent,
                    inNormal, outNormal);
}

}  // namespace splinecore
