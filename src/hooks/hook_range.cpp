// Placement of a carrier's hooks on its segment, in screen space
// (HookRange) and in muscle mode (MHookRange).
#include "controlpoint/walks.h"
#include "hooks/subdivide_bezier.h"
#include "splinecore/hooks.h"

namespace splinecore {

namespace {

// The segment parameter of a hook: t runs from the carrier's next (0) to
// the carrier (1), s the other way.
float ParameterOf(HookSegmentCP* h) { return static_cast<float>(1.0 - h->GetS()); }

}  // namespace

void HookRange(SegmentCP* carrier) {
  SegmentCP* end = carrier->next;
  if (end == nullptr) return;
  const Matrix& inverse = carrier->cache->view->inverseScreenMatrix;
  const Vector q = end->Getscreenp();
  const Vector p = carrier->Getscreenp();
  float a = 1.0f;
  Vector c1;
  Vector c2;
  Vector scratch;
  HookSegmentCP* last = nullptr;
  for (SegmentCP* k : detail::HookRun(carrier)) {
    auto* h = static_cast<HookSegmentCP*>(k);
    c1 = end->Getscreenot();
    c2 = carrier->Getscreenit();
    // Places the whole run first when h's screen position is stale, so that
    // every hook's screenp comes from its new place.
    h->Getscreenp();
    const float b = ParameterOf(h);
    SubdivideBezier(&q, c1, c2, &p, a, b, &scratch, &h->hit, &h->hot, &h->p);
    h->hit = TransformPoint(inverse, h->hit);
    h->hot = TransformPoint(inverse, h->hot);
    h->p = TransformPoint(inverse, h->p);
    a = ParameterOf(h);
    last = h;
  }
  if (last == nullptr) return;
  Vector scratchEnd;
  SubdivideBezier(&q, c1, c2, &p, a, 0.0f, &scratch, &last->pit, &last->pot, &scratchEnd);
  last->pit = TransformPoint(inverse, last->pit);
  last->pot = TransformPoint(inverse, last->pot);
}

void MHookRange(SegmentCP* carrier) {
  SegmentCP* end = carrier->next;
  if (end == nullptr) return;
  const Vector q = end->Getmp();
  const Vector p = carrier->Getmp();
  float a = 1.0f;
  Vector c1;
  Vector c2;
  Vector scratch;
  HookSegmentCP* last = nullptr;
  for (SegmentCP* k : detail::HookRun(carrier)) {
    auto* h = static_cast<HookSegmentCP*>(k);
    c1 = end->Getmot();
    c2 = carrier->Getmit();
    const float b = ParameterOf(h);
    SubdivideBezier(&q, c1, c2, &p, a, b, &scratch, &h->mhit, &h->mhot, &h->p);
    a = ParameterOf(h);
    last = h;
  }
  if (last == nullptr) return;
  Vector scratchEnd;
  SubdivideBezier(&q, c1, c2, &p, a, 0.0f, &scratch, &last->mpit, &last->mpot, &scratchEnd);
}

}  // namespace splinecore
