// SPDX-License-Identifier: MIT
#include "figure/invert.h"

#include <cmath>

namespace splinecore::detail {

bool Finite(const Matrix& m) {
  for (const auto& row : m.m)
    for (float v : row)
      if (!std::isfinite(v)) return false;
  return true;
}

bool InvertAffine(const Matrix& m, Matrix* out) {
  if (!Finite(m)) return false;
  double a[3][3];
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) a[r][c] = m.m[r][c];
  const double cof[3][3] = {
      {a[1][1] * a[2][2] - a[1][2] * a[2][1], a[1][2] * a[2][0] - a[1][0] * a[2][2], a[1][0] * a[2][1] - a[1][1] * a[2][0]},
      {a[0][2] * a[2][1] - a[0][1] * a[2][2], a[0][0] * a[2][2] - a[0][2] * a[2][0], a[0][1] * a[2][0] - a[0][0] * a[2][1]},
      {a[0][1] * a[1][2] - a[0][2] * a[1][1], a[0][2] * a[1][0] - a[0][0] * a[1][2], a[0][0] * a[1][1] - a[0][1] * a[1][0]}};
  const double det = a[0][0] * cof[0][0] + a[0][1] * cof[0][1] + a[0][2] * cof[0][2];
  // A singular matrix (det 0) leaves infinities or NaNs below: refused there.
  double inv[3][3];
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) inv[r][c] = cof[c][r] / det;
  Matrix result;
  for (int r = 0; r < 3; ++r) {
    double t = 0.0;
    for (int c = 0; c < 3; ++c) {
      result.m[r][c] = static_cast<float>(inv[r][c]);
      t -= inv[r][c] * m.m[c][3];
    }
    result.m[r][3] = static_cast<float>(t);
  }
  if (!Finite(result)) return false;
  *out = result;
  return true;
}

}  // namespace splinecore::detail
