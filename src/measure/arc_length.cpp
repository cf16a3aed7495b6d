// SPDX-License-Identifier: MIT
// Segment and spline lengths in view space, and the point at a length.
#include "splinecore/measure.h"

#include "measure/batch_length.h"
#include "measure/position_in_segment.h"
#include "measure/view_cubic.h"

namespace splinecore {

namespace {

float Add(float sum, double x) { return static_cast<float>(sum + x); }

}  // namespace

float CurveLength(SegmentCP* c) {
  if (c->GetNext() == nullptr) return 0.0f;
  Cubic cubic;
  detail::ViewCubic(c, &cubic);
  return detail::CubicLength(cubic);
}

float GetTotalLength(SegmentCP* c) {
  if (c->GetNext() == nullptr) return 1.0f;
  float total = 0.0f;
  for (;;) {
    total = Add(total, CurveLength(c));
    if (c->IsLoopEnd()) break;
    c = c->GetNext();
    if (c->GetNext() == nullptr) break;
  }
  return total;
}

float PositionDirectionFromSubLength(SegmentCP* c, float length, Vector* position, Vector* direction) {
  if (c->GetNext() == nullptr) {
    *position = TransformPoint(c->cache->view->viewMatrix, c->Getp());
    return 0.0f;
  }
  float walked = 0.0f;
  for (;;) {
    const bool wasLoopEnd = c->IsLoopEnd();
    const float before = walked;
    const double reached = static_cast<double>(walked) + CurveLength(c);
    walked = static_cast<float>(reached);
    if (reached > length) {
      const float rest = static_cast<float>(static_cast<double>(length) - before);
      detail::PositionDirectionInSegment(c, rest, position, direction);
      return walked;
    }
    c = c->GetNext();
    if (wasLoopEnd || c->GetNext() == nullptr) break;
  }
  // Beyond the end: c is the far end of the last segment, parameter 0.
  const Matrix& view = c->cache->view->viewMatrix;
  *position = TransformPoint(view, c->Getp());
  *direction = c->Getot();
  TransformDirection(view, *direction);
  return walked;
}

}  // namespace splinecore
