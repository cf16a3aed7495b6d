// SPDX-License-Identifier: MIT
// The AVX2 lanes of the batch lengths. This file alone is compiled for AVX2
// (src/subsystems.cmake), and only in builds that define
// SPLINECORE_HAVE_AVX2; the library calls it only where the processor has
// AVX2.
#include "measure/batch_length.h"

#ifdef SPLINECORE_HAVE_AVX2
#include "measure/chord_lanes.h"

namespace splinecore::detail {

void Avx2LaneLengths(const Cubic* cubics, std::size_t n, float* out, const FDSteps& steps) {
  LaneLengths<Avx2Lanes>(cubics, n, out, steps);
}

}  // namespace splinecore::detail
#endif
