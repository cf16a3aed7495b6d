// SPDX-License-Identifier: MIT
// Pieces shared by Convert and MConvert (internal).
#ifndef SPLINECORE_SRC_CONVERT_CONVERT_COMMON_H
#define SPLINECORE_SRC_CONVERT_CONVERT_COMMON_H

#include <cstdint>
#include <cstring>

#include "splinecore/geometry.h"

namespace splinecore {

// True when pitch and yaw are both zero of either sign: no turn at all.
inline bool MakesNoTurn(const Delta& d) {
  std::uint32_t pitch;
  std::uint32_t yaw;
  std::memcpy(&pitch, &d.pitch, sizeof pitch);
  std::memcpy(&yaw, &d.yaw, sizeof yaw);
  return ((pitch | yaw) & 0x7FFFFFFFu) == 0;
}

// The handle offset a hook partner contributes: the reverse of its in-offset
// when that points away from the hook's neighbour (d), else its out-offset.
inline Vector PartnerOffset(const Vector& d, const Vector& outOffset, const Vector& inOffset) {
  return d.Dot(inOffset) < 0.0 ? -inOffset : outOffset;
}

// t1 + (t2 - t1) * s, each of the three vector operations rounded.
inline Vector InterpolateHookTangent(const Vector& t1, const Vector& t2, float s) {
  Vector t = t2 - t1;
  t = t * s;
  return t1 + t;
}

}  // namespace splinecore

#endif
