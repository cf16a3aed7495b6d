// SPDX-License-Identifier: MIT
// Lengths several segments at a time: the scalar chord sum, the SSE2 lanes
// (chord_lanes.h) and the choice of kernel; the AVX2 lanes are compiled in
// batch_length_avx2.cpp.
#include "measure/batch_length.h"

#include <algorithm>
#include <cstring>

#include "measure/forward_difference.h"
#include "measure/view_cubic.h"
#include "splinecore/segment_cp.h"

#ifdef __SSE2__
#include "measure/chord_lanes.h"
#define SPLINECORE_HAVE_SSE2 1
#endif

namespace splinecore::detail {

namespace {

FDSteps ChordSteps() {
  FDSteps s;
  InitFDSteps(kChordCount, &s);
  return s;
}

float Add(float sum, double x) { return static_cast<float>(sum + x); }

}  // namespace

float CubicLength(const Cubic& cubic) {
  Column col;
  InitChordColumn(&col, &cubic);
  float sum = 0.0f;
  for (unsigned k = 0; k < kChordCount; ++k) {
    const Vector prev = col.p;
    BumpFD(&col);
    sum = Add(sum, ChordLength(prev, col.p));
  }
  return sum;
}

bool LengthKernelRuns(LengthKernel kernel) {
  switch (kernel) {
    case LengthKernel::kScalar:
      return true;
    case LengthKernel::kSse2:
#ifdef SPLINECORE_HAVE_SSE2
      return true;
#else
      return false;
#endif
    case LengthKernel::kAvx2:
#ifdef SPLINECORE_HAVE_AVX2
      __builtin_cpu_init();
      return __builtin_cpu_supports("avx2");
#else
      return false;
#endif
  }
  return false;
}

LengthKernel BestLengthKernel() {
  static const LengthKernel best = LengthKernelRuns(LengthKernel::kAvx2)   ? LengthKernel::kAvx2
                                   : LengthKernelRuns(LengthKernel::kSse2) ? LengthKernel::kSse2
                                                                           : LengthKernel::kScalar;
  return best;
}

void CubicLengths(const Cubic* cubics, std::size_t n, float* out, LengthKernel kernel) {
  const FDSteps steps = ChordSteps();
  switch (kernel) {
#ifdef SPLINECORE_HAVE_AVX2
    case LengthKernel::kAvx2:
      for (std::size_t i = 0; i < n; i += 8) Avx2LaneLengths(cubics + i, n - i, out + i, steps);
      return;
#endif
#ifdef SPLINECORE_HAVE_SSE2
    case LengthKernel::kSse2:
      for (std::size_t i = 0; i < n; i += 4) LaneLengths<Sse2Lanes>(cubics + i, n - i, out + i, steps);
      return;
#endif
    default:
      for (std::size_t i = 0; i < n; ++i) out[i] = CubicLength(cubics[i]);
      return;
  }
}

void CurveLengths(SegmentCP* const* points, std::size_t n, float* out) {
  constexpr std::size_t kBlock = 64;
  Cubic cubics[kBlock];
  for (std::size_t first = 0; first < n; first += kBlock) {
    const std::size_t count = std::min(kBlock, n - first);
    for (std::size_t i = 0; i < count; ++i) ViewCubic(points[first + i], &cubics[i]);
    CubicLengths(cubics, count, out + first);
  }
}

std::vector<SegmentCP*> LengthWalk(SegmentCP* c) {
  std::vector<SegmentCP*> walk;
  if (c->GetNext() == nullptr) return walk;
  for (;;) {
    walk.push_back(c);
    if (c->IsLoopEnd()) break;
    c = c->GetNext();
    if (c->GetNext() == nullptr) break;
  }
  return walk;
}

float TotalLength(SegmentCP* c) {
  if (c->GetNext() == nullptr) return 1.0f;
  const std::vector<SegmentCP*> walk = LengthWalk(c);
  std::vector<float> lengths(walk.size());
  CurveLengths(walk.data(), walk.size(), lengths.data());
  float total = 0.0f;
  for (float l : lengths) total = Add(total, l);
  return total;
}

}  // namespace splinecore::detail
