// SPDX-License-Identifier: MIT
// Placement of a carrier's hooks on its segment, written once over the
// space: in screen space (HookRange: the pieces are cut in screen space and
// carried back to model space) and in muscle mode (MHookRange).
#include "controlpoint/spaces.h"
#include "hooks/subdivide_bezier.h"

namespace splinecore {

namespace {

// The segment parameter of a hook: t runs from the carrier's next (0) to
// the carrier (1), s the other way.
float ParameterOf(HookSegmentCP* h) { return static_cast<float>(1.0 - h->GetS()); }

template <class Space>
void PlaceRun(SegmentCP* carrier) {
  SegmentCP* end = carrier->next;
  if (end == nullptr) return;
  const Matrix& inverse = carrier->cache->view->inverseScreenMatrix;
  const Vector q = Space::Position(end);
  const Vector p = Space::Position(carrier);
  float a = 1.0f;
  Vector c1;
  Vector c2;
  HookSegmentCP* last = nullptr;
  for (SegmentCP* k : detail::HookRun(carrier)) {
    auto* h = static_cast<HookSegmentCP*>(k);
    c1 = Space::OutHandle(end);
    c2 = Space::InHandle(carrier);
    // Places the whole run first when h's screen position is stale, so that
    // every hook's screenp comes from its new place.
    if constexpr (Space::kScreen) h->Getscreenp();
    const float b = ParameterOf(h);
    detail::CutPiece<Space::kScreen>(q, c1, c2, p, a, b, inverse, Space::HookIn(h), Space::HookOut(h), h->p);
    a = ParameterOf(h);
    last = h;
  }
  if (last == nullptr) return;
  Vector atEnd;  // the carrier's next, not kept
  detail::CutPiece<Space::kScreen>(q, c1, c2, p, a, 0.0f, inverse, Space::LastIn(last), Space::LastOut(last), atEnd);
}

}  // namespace

void HookRange(SegmentCP* carrier) { PlaceRun<detail::ScreenSpace>(carrier); }

void MHookRange(SegmentCP* carrier) { PlaceRun<detail::MuscleSpace>(carrier); }

}  // namespace splinecore
