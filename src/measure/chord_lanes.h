// SPDX-License-Identifier: MIT
// The 30-chord length of several segments at once, written once over the
// register types (internal; included by batch_length.cpp for SSE2 and by
// batch_length_avx2.cpp, compiled for AVX2, for AVX2). A lane holds one
// segment; its float operations are the scalar code's (a float sum or
// product formed in double and rounded once is the float operation), its
// double ones are done in double lanes in the scalar order: ((dx*dx + dy*dy)
// + dz*dz), the square root, then the running sum rounded to float after
// every chord. Everything here has internal linkage, so that code compiled
// for one instruction set is never merged into the other's translation unit.
#ifndef SPLINECORE_SRC_MEASURE_CHORD_LANES_H
#define SPLINECORE_SRC_MEASURE_CHORD_LANES_H

#include <immintrin.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "measure/forward_difference.h"

namespace splinecore::detail {
namespace {

// The registers of either width as the compiler's vector types, which have
// the arithmetic operators and pass to the instructions.
typedef float Floats4 __attribute__((vector_size(16)));
typedef double Doubles2 __attribute__((vector_size(16)));
typedef float Floats8 __attribute__((vector_size(32)));
typedef double Doubles4 __attribute__((vector_size(32)));

// One register of floats F, one lane a segment, and its doubles as two D,
// the low and the high half. Arithmetic is the vector operators; the
// operations below are the ones without an operator, each naming the
// instruction of either width.
template <class FloatRegister, class DoubleRegister>
struct Lanes {
  using F = FloatRegister;
  using D = DoubleRegister;
  static constexpr bool kAvx = sizeof(F) == 32;
  static constexpr std::size_t kLanes = sizeof(F) / sizeof(float);
  static F Splat(float x) {
    if constexpr (kAvx) return _mm256_set1_ps(x);
    else return _mm_set1_ps(x);
  }
  static F Load(const float* p) {
    F v;
    std::memcpy(&v, p, sizeof v);
    return v;
  }
  static D Low(F a) {
    if constexpr (kAvx) return _mm256_cvtps_pd(_mm256_castps256_ps128(a));
    else return _mm_cvtps_pd(a);
  }
  static D High(F a) {
    if constexpr (kAvx) return _mm256_cvtps_pd(_mm256_extractf128_ps(a, 1));
    else return _mm_cvtps_pd(_mm_movehl_ps(a, a));
  }
  static D Sqrt(D a) {
    if constexpr (kAvx) return _mm256_sqrt_pd(a);
    else return _mm_sqrt_pd(a);
  }
  static D RoundToFloat(D a) {
    if constexpr (kAvx) return _mm256_cvtps_pd(_mm256_cvtpd_ps(a));
    else return _mm_cvtps_pd(_mm_cvtpd_ps(a));
  }
  static void Store(float* out, D low, D high) {
    if constexpr (kAvx) {
      _mm_storeu_ps(out, _mm256_cvtpd_ps(low));
      _mm_storeu_ps(out + 4, _mm256_cvtpd_ps(high));
    } else {
      _mm_storeu_ps(out, _mm_movelh_ps(_mm_cvtpd_ps(low), _mm_cvtpd_ps(high)));
    }
  }
};

#ifdef __SSE2__
using Sse2Lanes = Lanes<Floats4, Doubles2>;
#endif
#ifdef __AVX2__
using Avx2Lanes = Lanes<Floats8, Doubles4>;
#endif

constexpr std::size_t kCubicFloats = sizeof(Cubic) / sizeof(float);  // p0, p1, t0, t1: 12
static_assert(kCubicFloats == 12, "Cubic is twelve packed floats");

// out[i] for the first min(n, L::kLanes) of cubics; lanes past n measure a
// zero segment and are not written.
template <class L>
void LaneLengths(const Cubic* cubics, std::size_t n, float* out, const FDSteps& s) {
  using F = typename L::F;
  using D = typename L::D;
  // Component-major: t[j][lane] is float j of the lane's cubic.
  alignas(32) float t[kCubicFloats][L::kLanes] = {};
  for (std::size_t lane = 0; lane < std::min(n, L::kLanes); ++lane) {
    float f[kCubicFloats];
    std::memcpy(f, &cubics[lane], sizeof f);
    for (std::size_t j = 0; j < kCubicFloats; ++j) t[j][lane] = f[j];
  }
  const F two = L::Splat(2.0f), three = L::Splat(3.0f), minusThree = L::Splat(-3.0f);
  const F h = L::Splat(s.h), h2 = L::Splat(s.h2), h3 = L::Splat(s.h3), h3x6 = L::Splat(s.h3x6), h2x2 = L::Splat(s.h2x2);
  F p[3], d1[3], d2[3], d3[3];
  for (int k = 0; k < 3; ++k) {  // CubicToPoly, then InitColumn
    const F p0 = L::Load(t[k]), p1 = L::Load(t[3 + k]), t0 = L::Load(t[6 + k]), t1 = L::Load(t[9 + k]);
    const F a = p0 * two - p1 * two + t0 + t1;
    const F b = p0 * minusThree + p1 * three - t0 * two - t1;
    p[k] = p0;
    d1[k] = a * h3 + b * h2 + t0 * h;
    d2[k] = a * h3x6 + b * h2x2;
    d3[k] = a * h3x6;
  }
  D sumLow = D{}, sumHigh = D{};
  for (unsigned step = 0; step < kChordCount; ++step) {
    F d[3];
    for (int k = 0; k < 3; ++k) {  // BumpFD
      const F prev = p[k];
      p[k] += d1[k];
      d1[k] += d2[k];
      d2[k] += d3[k];
      d[k] = prev - p[k];
    }
    const D lowX = L::Low(d[0]), lowY = L::Low(d[1]), lowZ = L::Low(d[2]);
    const D highX = L::High(d[0]), highY = L::High(d[1]), highZ = L::High(d[2]);
    sumLow = L::RoundToFloat(sumLow + L::Sqrt(lowX * lowX + lowY * lowY + lowZ * lowZ));
    sumHigh = L::RoundToFloat(sumHigh + L::Sqrt(highX * highX + highY * highY + highZ * highZ));
  }
  float sums[L::kLanes];
  L::Store(sums, sumLow, sumHigh);
  std::memcpy(out, sums, std::min(n, L::kLanes) * sizeof(float));
}

}  // namespace
}  // namespace splinecore::detail

#endif
