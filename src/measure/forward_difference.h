// SPDX-License-Identifier: MIT
// Three-coordinate and plane forward-differencing helpers (internal).
#ifndef SPLINECORE_SRC_MEASURE_FORWARD_DIFFERENCE_H
#define SPLINECORE_SRC_MEASURE_FORWARD_DIFFERENCE_H

#include "splinecore/measure.h"

namespace splinecore::detail {

// Power form a*t^3 + b*t^2 + c*t + d of a Hermite piece.
struct CubicPoly {
  Vector a;
  Vector b;
  Vector c;
  Vector d;
};

// Step sizes for n steps: h = 1/n, h^2, h^3, 6h^3, 2h^2.
struct FDSteps {
  float h;
  float h2;
  float h3;
  float h3x6;
  float h2x2;
};

void InitFDSteps(unsigned short n, FDSteps* s);
void CubicToPoly(CubicPoly* poly, const Cubic* cubic);
void CubicToPoly2D(CubicPoly* poly, const Cubic* cubic);
void InitColumn(Column* col, const CubicPoly* poly, const FDSteps* s);
void InitColumn2D(Column* col, const CubicPoly* poly, const FDSteps* s);

// Number of chords a segment is measured with.
inline constexpr unsigned short kChordCount = 30;

// A three-coordinate column at parameter 0 of cubic, for kChordCount steps.
void InitChordColumn(Column* col, const Cubic* cubic);
// One three-coordinate step: p += d1, then d1 += d2, then d2 += d3. Inline:
// it is the inner loop of every length measurement.
inline void BumpFD(Column* col) {
  col->p += col->d1;
  col->d1 += col->d2;
  col->d2 += col->d3;
}

}  // namespace splinecore::detail

#endif
