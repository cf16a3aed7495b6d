// SPDX-License-Identifier: MIT
// The 30-chord length of several segments at once, written once over a lane
// type (internal; included by batch_length.cpp for SSE2 and by
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

// Lanes floats of a segment each are F; their doubles are two D, the low
// and the high half.
#ifdef __SSE2__
struct Sse2Lanes {
  static constexpr std::size_t kLanes = 4;
  using F = __m128;
  using D = __m128d;
  static F Set(float x) { return _mm_set1_ps(x); }
  static F Load(const float* p) { return _mm_load_ps(p); }
  static F Add(F a, F b) { return _mm_add_ps(a, b); }
  static F Sub(F a, F b) { return _mm_sub_ps(a, b); }
  static F Mul(F a, F b) { return _mm_mul_ps(a, b); }
  static D Low(F a) { return _mm_cvtps_pd(a); }
  static D High(F a) { return _mm_cvtps_pd(_mm_movehl_ps(a, a)); }
  static D Zero() { return _mm_setzero_pd(); }
  static D Add(D a, D b) { return _mm_add_pd(a, b); }
  static D Mul(D a, D b) { return _mm_mul_pd(a, b); }
  static D Sqrt(D a) { return _mm_sqrt_pd(a); }
  static D RoundToFloat(D a) { return _mm_cvtps_pd(_mm_cvtpd_ps(a)); }
  static void Store(float* out, D low, D high) {
    _mm_storeu_ps(out, _mm_movelh_ps(_mm_cvtpd_ps(low), _mm_cvtpd_ps(high)));
  }
};
#endif

#ifdef __AVX2__
struct Avx2Lanes {
  static constexpr std::size_t kLanes = 8;
  using F = __m256;
  using D = __m256d;
  static F Set(float x) { return _mm256_set1_ps(x); }
  static F Load(const float* p) { return _mm256_load_ps(p); }
  static F Add(F a, F b) { return _mm256_add_ps(a, b); }
  static F Sub(F a, F b) { return _mm256_sub_ps(a, b); }
  static F Mul(F a, F b) { return _mm256_mul_ps(a, b); }
  static D Low(F a) { return _mm256_cvtps_pd(_mm256_castps256_ps128(a)); }
  static D High(F a) { return _mm256_cvtps_pd(_mm256_extractf128_ps(a, 1)); }
  static D Zero() { return _mm256_setzero_pd(); }
  static D Add(D a, D b) { return _mm256_add_pd(a, b); }
  static D Mul(D a, D b) { return _mm256_mul_pd(a, b); }
  static D Sqrt(D a) { return _mm256_sqrt_pd(a); }
  static D RoundToFloat(D a) { return _mm256_cvtps_pd(_mm256_cvtpd_ps(a)); }
  static void Store(float* out, D low, D high) {
    _mm_storeu_ps(out, _mm256_cvtpd_ps(low));
    _mm_storeu_ps(out + 4, _mm256_cvtpd_ps(high));
  }
};
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
  const F two = L::Set(2.0f), three = L::Set(3.0f), minusThree = L::Set(-3.0f);
  const F h = L::Set(s.h), h2 = L::Set(s.h2), h3 = L::Set(s.h3), h3x6 = L::Set(s.h3x6), h2x2 = L::Set(s.h2x2);
  F p[3], d1[3], d2[3], d3[3];
  for (int k = 0; k < 3; ++k) {  // CubicToPoly, then InitColumn
    const F p0 = L::Load(t[k]), p1 = L::Load(t[3 + k]), t0 = L::Load(t[6 + k]), t1 = L::Load(t[9 + k]);
    const F a = L::Add(L::Add(L::Sub(L::Mul(p0, two), L::Mul(p1, two)), t0), t1);
    const F b = L::Sub(L::Sub(L::Add(L::Mul(p0, minusThree), L::Mul(p1, three)), L::Mul(t0, two)), t1);
    p[k] = p0;
    d1[k] = L::Add(L::Add(L::Mul(a, h3), L::Mul(b, h2)), L::Mul(t0, h));
    d2[k] = L::Add(L::Mul(a, h3x6), L::Mul(b, h2x2));
    d3[k] = L::Mul(a, h3x6);
  }
  D sumLow = L::Zero(), sumHigh = L::Zero();
  for (unsigned step = 0; step < kChordCount; ++step) {
    F d[3];
    for (int k = 0; k < 3; ++k) {  // BumpFD
      const F prev = p[k];
      p[k] = L::Add(p[k], d1[k]);
      d1[k] = L::Add(d1[k], d2[k]);
      d2[k] = L::Add(d2[k], d3[k]);
      d[k] = L::Sub(prev, p[k]);
    }
    const D lowSquare = L::Add(L::Add(L::Mul(L::Low(d[0]), L::Low(d[0])), L::Mul(L::Low(d[1]), L::Low(d[1]))),
                               L::Mul(L::Low(d[2]), L::Low(d[2])));
    const D highSquare = L::Add(L::Add(L::Mul(L::High(d[0]), L::High(d[0])), L::Mul(L::High(d[1]), L::High(d[1]))),
                                L::Mul(L::High(d[2]), L::High(d[2])));
    sumLow = L::RoundToFloat(L::Add(sumLow, L::Sqrt(lowSquare)));
    sumHigh = L::RoundToFloat(L::Add(sumHigh, L::Sqrt(highSquare)));
  }
  float sums[L::kLanes];
  L::Store(sums, sumLow, sumHigh);
  std::memcpy(out, sums, std::min(n, L::kLanes) * sizeof(float));
}

}  // namespace
}  // namespace splinecore::detail

#endif
