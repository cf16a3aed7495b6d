// SPDX-License-Identifier: MIT
// Segment lengths several at a time (internal): each lane of the SSE2 (4
// segments) or AVX2 (8 segments) kernel does the scalar chord sum's
// operations in the same order and precision, so every length has the bits
// of CurveLength.
#ifndef SPLINECORE_SRC_MEASURE_BATCH_LENGTH_H
#define SPLINECORE_SRC_MEASURE_BATCH_LENGTH_H

#include <cstddef>
#include <vector>

#include "measure/forward_difference.h"
#include "splinecore/measure.h"

namespace splinecore::detail {

// The 30-chord length of one view-space segment: CurveLength after ViewCubic.
float CubicLength(const Cubic& cubic);

enum class LengthKernel { kScalar, kSse2, kAvx2 };

// The widest kernel the processor runs (AVX2 only in x86-64 builds), chosen
// once.
LengthKernel BestLengthKernel();
bool LengthKernelRuns(LengthKernel kernel);

// out[i] = CubicLength(cubics[i]) for i < n, bit for bit, with `kernel`
// (which must run here).
void CubicLengths(const Cubic* cubics, std::size_t n, float* out, LengthKernel kernel = BestLengthKernel());

#ifdef SPLINECORE_HAVE_AVX2
// out[i] = CubicLength(cubics[i]) for i < min(n, 8), eight lanes of AVX2
// (batch_length_avx2.cpp, compiled for AVX2: call it only where the
// processor has it).
void Avx2LaneLengths(const Cubic* cubics, std::size_t n, float* out, const FDSteps& steps);
#endif

// out[i] = CurveLength(points[i]) for i < n; every point must have a next.
// The view cubics are read in order, as n calls of CurveLength read them.
void CurveLengths(SegmentCP* const* points, std::size_t n, float* out);

// The segments GetTotalLength(c) measures, in its order (none without a next).
std::vector<SegmentCP*> LengthWalk(SegmentCP* c);

// GetTotalLength(c) with the segments measured in batches.
float TotalLength(SegmentCP* c);

}  // namespace splinecore::detail

#endif
