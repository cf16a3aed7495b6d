// SPDX-License-Identifier: MIT
#include "splinecore/segment_cp.h"
#include "tangents/tangent_rule.h"

namespace splinecore {

namespace {

// The position the tangent rule reads: screen space or muscle-placement
// model space. Copied, so later fetches cannot change it.
Vector PositionOf(SegmentCP* c, int screen) { return screen != 0 ? c->Getscreenp() : c->Getmp(); }

}  // namespace

int SegmentCP::GetTangents(Vector* inTangent, Vector* outTangent, Vector* inNormal, Vector* outNormal, int screen) {
  if (IsHook()) return 0;
  return detail::TangentRule(
      this, [screen](SegmentCP* x, int) { return PositionOf(x, screen); }, inTangent, outTangent, inNormal, outNormal);
}

}  // namespace splinecore
