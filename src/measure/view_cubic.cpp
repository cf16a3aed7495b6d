// SPDX-License-Identifier: MIT
#include "measure/view_cubic.h"

namespace splinecore::detail {

namespace {

const Matrix& ViewOf(const SegmentCP* c) { return c->cache->view->viewMatrix; }

Vector ViewDirection(const SegmentCP* c, Vector v) {
  TransformDirection(ViewOf(c), v);
  return v;
}

}  // namespace

void ViewCubic(SegmentCP* c, Cubic* cubic) {
  SegmentCP* n = c->GetNext();
  cubic->p0 = TransformPoint(ViewOf(n), n->Getp());
  cubic->p1 = TransformPoint(ViewOf(c), c->Getp());
  cubic->t0 = ViewDirection(n, n->Getot());
  cubic->t1 = ViewDirection(c, c->Getit());
}

}  // namespace splinecore::detail
