// SPDX-License-Identifier: MIT
// The snapping rule for a hook's parameter s, shared by GetS and slice
// reversal.
#ifndef SPLINECORE_SRC_HOOKS_SNAP_H
#define SPLINECORE_SRC_HOOKS_SNAP_H

#include <cstdint>
#include <cstring>

namespace splinecore::detail {

// 0.25 when the bit pattern of s, read as a signed 32-bit integer, is not
// above that of 0.375 (every negative s, -0 and 0 to 0.375); else 0.5 up to
// 0.625 in double precision or when s is NaN; else 0.75.
inline float SnapS(float s) {
  std::int32_t bits;
  std::memcpy(&bits, &s, sizeof bits);
  if (bits <= 0x3EC00000) return 0.25f;
  if (!(static_cast<double>(s) > 0.625)) return 0.5f;
  return 0.75f;
}

}  // namespace splinecore::detail

#endif
