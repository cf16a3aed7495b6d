// SPDX-License-Identifier: MIT
// Lengths several segments at a time. A lane holds one segment; its float
// operations are the scalar code's (a float sum or product formed in double
// and rounded once is the float operation), its double ones are done in
// double lanes in the scalar order: ((dx*dx + dy*dy) + dz*dz), the square
// root, then the running sum rounded to float after every chord.
#include "measure/batch_length.h"

#include <algorithm>
#include <cstring>

#include "measure/forward_difference.h"
#include "measure/view_cubic.h"
#include "splinecore/segment_cp.h"

#if defined(__SSE2__)
#include <immintrin.h>
#define SPLINECORE_HAVE_SSE2 1
#if defined(__x86_64__) && defined(__GNUC__)
#define SPLINECORE_HAVE_AVX2 1
#endif
#endif

namespace splinecore::detail {

namespace {

constexpr std::size_t kFloats = sizeof(Cubic) / sizeof(float);  // p0, p1, t0, t1: 12
static_assert(kFloats == 12, "Cubic is twelve packed floats");

FDSteps ChordSteps() {
  FDSteps s;
  InitFDSteps(kChordCount, &s);
  return s;
}

// Lanes cubics, component-major: t[j][lane] is float j of the lane's cubic.
// Lanes past n hold a zero segment.
template <std::size_t Lanes>
void Transpose(const Cubic* cubics, std::size_t n, float (*t)[Lanes]) {
  for (std::size_t lane = 0; lane < Lanes; ++lane) {
    float f[kFloats] = {};
    if (lane < n) std::memcpy(f, &cubics[lane], sizeof f);
    for (std::size_t j = 0; j < kFloats; ++j) t[j][lane] = f[j];
  }
}

#ifdef SPLINECORE_HAVE_SSE2

// Four segments: floats in one register per coordinate, doubles in two.
void Lengths4(const Cubic* cubics, std::size_t n, float* out, const FDSteps& s) {
  alignas(16) float t[kFloats][4];
  Transpose<4>(cubics, n, t);
  const __m128 two = _mm_set1_ps(2.0f), three = _mm_set1_ps(3.0f), minusThree = _mm_set1_ps(-3.0f);
  const __m128 h = _mm_set1_ps(s.h), h2 = _mm_set1_ps(s.h2), h3 = _mm_set1_ps(s.h3);
  const __m128 h3x6 = _mm_set1_ps(s.h3x6), h2x2 = _mm_set1_ps(s.h2x2);
  __m128 p[3], d1[3], d2[3], d3[3];
  for (int k = 0; k < 3; ++k) {
    const __m128 p0 = _mm_load_ps(t[k]), p1 = _mm_load_ps(t[3 + k]);
    const __m128 t0 = _mm_load_ps(t[6 + k]), t1 = _mm_load_ps(t[9 + k]);
    // CubicToPoly, then InitColumn.
    __m128 a = _mm_mul_ps(p0, two);
    a = _mm_sub_ps(a, _mm_mul_ps(p1, two));
    a = _mm_add_ps(a, t0);
    a = _mm_add_ps(a, t1);
    __m128 b = _mm_mul_ps(p0, minusThree);
    b = _mm_add_ps(b, _mm_mul_ps(p1, three));
    b = _mm_sub_ps(b, _mm_mul_ps(t0, two));
    b = _mm_sub_ps(b, t1);
    p[k] = p0;
    d1[k] = _mm_add_ps(_mm_add_ps(_mm_mul_ps(a, h3), _mm_mul_ps(b, h2)), _mm_mul_ps(t0, h));
    d2[k] = _mm_add_ps(_mm_mul_ps(a, h3x6), _mm_mul_ps(b, h2x2));
    d3[k] = _mm_mul_ps(a, h3x6);
  }
  __m128d sumLo = _mm_setzero_pd(), sumHi = _mm_setzero_pd();
  for (unsigned step = 0; step < kChordCount; ++step) {
    __m128 d[3];
    for (int k = 0; k < 3; ++k) {
      const __m128 prev = p[k];
      p[k] = _mm_add_ps(p[k], d1[k]);
      d1[k] = _mm_add_ps(d1[k], d2[k]);
      d2[k] = _mm_add_ps(d2[k], d3[k]);
      d[k] = _mm_sub_ps(prev, p[k]);
    }
    const __m128d xl = _mm_cvtps_pd(d[0]), yl = _mm_cvtps_pd(d[1]), zl = _mm_cvtps_pd(d[2]);
    const __m128d xh = _mm_cvtps_pd(_mm_movehl_ps(d[0], d[0]));
    const __m128d yh = _mm_cvtps_pd(_mm_movehl_ps(d[1], d[1]));
    const __m128d zh = _mm_cvtps_pd(_mm_movehl_ps(d[2], d[2]));
    const __m128d lo = _mm_sqrt_pd(_mm_add_pd(_mm_add_pd(_mm_mul_pd(xl, xl), _mm_mul_pd(yl, yl)), _mm_mul_pd(zl, zl)));
    const __m128d hi = _mm_sqrt_pd(_mm_add_pd(_mm_add_pd(_mm_mul_pd(xh, xh), _mm_mul_pd(yh, yh)), _mm_mul_pd(zh, zh)));
    sumLo = _mm_cvtps_pd(_mm_cvtpd_ps(_mm_add_pd(sumLo, lo)));
    sumHi = _mm_cvtps_pd(_mm_cvtpd_ps(_mm_add_pd(sumHi, hi)));
  }
  alignas(16) float sums[4];
  _mm_store_ps(sums, _mm_movelh_ps(_mm_cvtpd_ps(sumLo), _mm_cvtpd_ps(sumHi)));
  std::memcpy(out, sums, std::min<std::size_t>(n, 4) * sizeof(float));
}

#endif

#ifdef SPLINECORE_HAVE_AVX2

// Eight segments: floats in one 256-bit register per coordinate, doubles in
// two. Only AVX instructions, no fused multiply-add.
__attribute__((target("avx2"))) void Lengths8(const Cubic* cubics, std::size_t n, float* out, const FDSteps& s) {
  alignas(32) float t[kFloats][8];
  Transpose<8>(cubics, n, t);
  const __m256 two = _mm256_set1_ps(2.0f), three = _mm256_set1_ps(3.0f), minusThree = _mm256_set1_ps(-3.0f);
  const __m256 h = _mm256_set1_ps(s.h), h2 = _mm256_set1_ps(s.h2), h3 = _mm256_set1_ps(s.h3);
  const __m256 h3x6 = _mm256_set1_ps(s.h3x6), h2x2 = _mm256_set1_ps(s.h2x2);
  __m256 p[3], d1[3], d2[3], d3[3];
  for (int k = 0; k < 3; ++k) {
    const __m256 p0 = _mm256_load_ps(t[k]), p1 = _mm256_load_ps(t[3 + k]);
    const __m256 t0 = _mm256_load_ps(t[6 + k]), t1 = _mm256_load_ps(t[9 + k]);
    __m256 a = _mm256_mul_ps(p0, two);
    a = _mm256_sub_ps(a, _mm256_mul_ps(p1, two));
    a = _mm256_add_ps(a, t0);
    a = _mm256_add_ps(a, t1);
    __m256 b = _mm256_mul_ps(p0, minusThree);
    b = _mm256_add_ps(b, _mm256_mul_ps(p1, three));
    b = _mm256_sub_ps(b, _mm256_mul_ps(t0, two));
    b = _mm256_sub_ps(b, t1);
    p[k] = p0;
    d1[k] = _mm256_add_ps(_mm256_add_ps(_mm256_mul_ps(a, h3), _mm256_mul_ps(b, h2)), _mm256_mul_ps(t0, h));
    d2[k] = _mm256_add_ps(_mm256_mul_ps(a, h3x6), _mm256_mul_ps(b, h2x2));
    d3[k] = _mm256_mul_ps(a, h3x6);
  }
  __m256d sumLo = _mm256_setzero_pd(), sumHi = _mm256_setzero_pd();
  for (unsigned step = 0; step < kChordCount; ++step) {
    __m256 d[3];
    for (int k = 0; k < 3; ++k) {
      const __m256 prev = p[k];
      p[k] = _mm256_add_ps(p[k], d1[k]);
      d1[k] = _mm256_add_ps(d1[k], d2[k]);
      d2[k] = _mm256_add_ps(d2[k], d3[k]);
      d[k] = _mm256_sub_ps(prev, p[k]);
    }
    const __m256d xl = _mm256_cvtps_pd(_mm256_castps256_ps128(d[0]));
    const __m256d yl = _mm256_cvtps_pd(_mm256_castps256_ps128(d[1]));
    const __m256d zl = _mm256_cvtps_pd(_mm256_castps256_ps128(d[2]));
    const __m256d xh = _mm256_cvtps_pd(_mm256_extractf128_ps(d[0], 1));
    const __m256d yh = _mm256_cvtps_pd(_mm256_extractf128_ps(d[1], 1));
    const __m256d zh = _mm256_cvtps_pd(_mm256_extractf128_ps(d[2], 1));
    const __m256d lo = _mm256_sqrt_pd(
        _mm256_add_pd(_mm256_add_pd(_mm256_mul_pd(xl, xl), _mm256_mul_pd(yl, yl)), _mm256_mul_pd(zl, zl)));
    const __m256d hi = _mm256_sqrt_pd(
        _mm256_add_pd(_mm256_add_pd(_mm256_mul_pd(xh, xh), _mm256_mul_pd(yh, yh)), _mm256_mul_pd(zh, zh)));
    sumLo = _mm256_cvtps_pd(_mm256_cvtpd_ps(_mm256_add_pd(sumLo, lo)));
    sumHi = _mm256_cvtps_pd(_mm256_cvtpd_ps(_mm256_add_pd(sumHi, hi)));
  }
  alignas(32) float sums[8];
  _mm_store_ps(sums, _mm256_cvtpd_ps(sumLo));
  _mm_store_ps(sums + 4, _mm256_cvtpd_ps(sumHi));
  std::memcpy(out, sums, std::min<std::size_t>(n, 8) * sizeof(float));
}

#endif

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
      for (std::size_t i = 0; i < n; i += 8) Lengths8(cubics + i, n - i, out + i, steps);
      return;
#endif
#ifdef SPLINECORE_HAVE_SSE2
    case LengthKernel::kSse2:
      for (std::size_t i = 0; i < n; i += 4) Lengths4(cubics + i, n - i, out + i, steps);
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
