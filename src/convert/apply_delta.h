// SPDX-License-Identifier: MIT
// Turning and scaling one tangent by a Delta (internal).
#ifndef SPLINECORE_SRC_CONVERT_APPLY_DELTA_H
#define SPLINECORE_SRC_CONVERT_APPLY_DELTA_H

#include "splinecore/geometry.h"

namespace splinecore::detail {

// Turns t toward `normal` by `pitch` degrees, then toward t x normal by
// `yaw`, and scales it by |t| then by `magnitude`. A zero t is left alone
// (normal too); a zero normal is not normalised.
void ApplyDelta(Vector& t, float pitch, float yaw, float magnitude, Vector& normal);

// Turns a toward b by `degrees` measured on the square (a, b, -a, -b),
// normalised. out must not alias a or b. Zero degrees copies a unchanged. A
// finite angle of any size turns as the remainder of its integer part by 360
// does (exact in double); a non-finite angle makes no turn (out = a).
void TurnToward(const Vector& a, const Vector& b, Vector& out, float degrees);

}  // namespace splinecore::detail

#endif
