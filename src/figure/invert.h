// SPDX-License-Identifier: MIT
// The inverse of an affine transform, for transforms given without one,
// and the finiteness check of transforms (internal).
#ifndef SPLINECORE_SRC_FIGURE_INVERT_H
#define SPLINECORE_SRC_FIGURE_INVERT_H

#include "splinecore/geometry.h"

namespace splinecore::detail {

// The linear part inverted by its adjugate over the determinant, the
// translation carried back through it, in double, each entry rounded once.
// False, *out untouched, when the linear part is singular, m is not finite
// or an entry of the inverse is not finite.
bool InvertAffine(const Matrix& m, Matrix* out);

// Whether every entry of m is finite.
bool Finite(const Matrix& m);

}  // namespace splinecore::detail

#endif
