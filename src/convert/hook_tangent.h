// SPDX-License-Identifier: MIT
// A hook's tangent from its partners' handle points (internal): the
// arithmetic of its conversion, in whatever space the values are given.
#ifndef SPLINECORE_SRC_CONVERT_HOOK_TANGENT_H
#define SPLINECORE_SRC_CONVERT_HOOK_TANGENT_H

#include "splinecore/geometry.h"

namespace splinecore::detail {

// The handle offset a hook partner at `at`, with handle points `in` and
// `out`, contributes: the reverse of its in-offset when that points away
// from the hook's neighbour (d), else its out-offset.
inline Vector PartnerOffset(const Vector& d, const Vector& at, const Vector& in, const Vector& out) {
  Vector outOffset = out;
  outOffset -= at;
  Vector inOffset = at;
  inOffset -= in;
  return d.Dot(inOffset) < 0.0 ? -inOffset : outOffset;
}

// The hook's tangent: t1 + (t2 - t1) * s, each of the three vector
// operations rounded, reversed when the hook has no prev (its neighbour
// lies ahead) so that it keeps pointing toward prev.
inline Vector HookTangent(const Vector& t1, const Vector& t2, float s, bool hasPrev) {
  Vector t = t2 - t1;
  t = t * s;
  t = t1 + t;
  return hasPrev ? t : -t;
}

}  // namespace splinecore::detail

#endif
