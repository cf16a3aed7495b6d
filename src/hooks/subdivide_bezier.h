// SPDX-License-Identifier: MIT
// Cutting a cubic Bezier between two parameters (internal).
#ifndef SPLINECORE_SRC_HOOKS_SUBDIVIDE_BEZIER_H
#define SPLINECORE_SRC_HOOKS_SUBDIVIDE_BEZIER_H

#include "splinecore/geometry.h"
#include "splinecore/host.h"

namespace splinecore::detail {

// The Bezier points of the piece of (c0, c1, c2, c3) from parameter a to b,
// by blossoming: out0 = B(a,a,a), out1 = B(a,a,b), out2 = B(a,b,b),
// out3 = B(b,b,b). The outputs must be distinct from each other and from c0
// and c3.
void SubdivideBezier(const Vector* c0, Vector c1, Vector c2, const Vector* c3, float a, float b,
                     Vector* out0, Vector* out1, Vector* out2, Vector* out3);

// A hook's piece of its carrier's segment (q, c1, c2, p) from parameter a
// to b: the handle points `in` and `out` and the point `at` at b, carried
// back to model space by `inverse` when the segment is in screen space.
template <bool kScreen>
inline void CutPiece(const Vector& q, const Vector& c1, const Vector& c2, const Vector& p, float a, float b,
                     const Matrix& inverse, Vector& in, Vector& out, Vector& at) {
  Vector start;
  SubdivideBezier(&q, c1, c2, &p, a, b, &start, &in, &out, &at);
  if constexpr (kScreen) {
    in = TransformPoint(inverse, in);
    out = TransformPoint(inverse, out);
    at = TransformPoint(inverse, at);
  }
}

}  // namespace splinecore::detail

#endif
