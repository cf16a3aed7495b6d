// Lengths several segments at a time: every kernel the processor runs gives
// the scalar chord sum's bits, on random segments and through the figure's
// length queries on the shared figures.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "figure_corpus.h"
#include "measure/batch_length.h"
#include "splinecore/figure.h"
#include "splinecore/segment_cp.h"

namespace splinecore::test {
namespace {

std::uint32_t Bits(float x) {
  std::uint32_t b;
  std::memcpy(&b, &x, sizeof b);
  return b;
}

std::vector<detail::LengthKernel> Kernels() {
  std::vector<detail::LengthKernel> out;
  for (auto k : {detail::LengthKernel::kScalar, detail::LengthKernel::kSse2, detail::LengthKernel::kAvx2})
    if (detail::LengthKernelRuns(k)) out.push_back(k);
  return out;
}

TEST(BatchLength, EveryKernelGivesTheScalarBitsOnRandomSegments) {
  EXPECT_TRUE(detail::LengthKernelRuns(detail::LengthKernel::kScalar));  // the reference runs everywhere
  EXPECT_FALSE(detail::LengthKernelRuns(static_cast<detail::LengthKernel>(99)));  // no such kernel
#if defined(__x86_64__) || defined(__SSE2__)
  EXPECT_TRUE(detail::LengthKernelRuns(detail::LengthKernel::kSse2));  // every x86 build has it
#endif
  // Coordinates from 1e-6 to 1e12 in size, some exactly zero, some segments
  // with coincident ends or zero tangents; an odd count leaves a partial
  // group of lanes.
  std::mt19937 random(18);
  std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
  std::uniform_int_distribution<int> exponent(-6, 12), pick(0, 15);
  std::vector<Cubic> cubics(100003);
  for (Cubic& c : cubics) {
    const float scale = std::pow(10.0f, static_cast<float>(exponent(random)));
    float* f = &c.p0.x;
    for (int j = 0; j < 12; ++j) f[j] = pick(random) == 0 ? 0.0f : unit(random) * scale;
    if (pick(random) == 0) c.p1 = c.p0;
    if (pick(random) == 0) c.t0 = c.t1 = Vector(0, 0, 0);
  }
  std::vector<float> scalar(cubics.size());
  for (std::size_t i = 0; i < cubics.size(); ++i) scalar[i] = detail::CubicLength(cubics[i]);
  for (detail::LengthKernel kernel : Kernels()) {
    std::vector<float> batch(cubics.size() + 8, -1.0f);  // and nothing written past the last
    detail::CubicLengths(cubics.data(), cubics.size(), batch.data(), kernel);
    std::size_t differ = 0;
    for (std::size_t i = 0; i < cubics.size(); ++i) differ += Bits(batch[i]) != Bits(scalar[i]);
    for (std::size_t i = cubics.size(); i < batch.size(); ++i) differ += batch[i] != -1.0f;
    EXPECT_EQ(differ, 0u) << "kernel " << static_cast<int>(kernel);
  }
  // A straight segment of length 5 at uniform speed: all 30 chords are 1/6.
  const Cubic straight{Vector(0, 0, 0), Vector(3, 4, 0), Vector(3, 4, 0), Vector(3, 4, 0)};
  for (detail::LengthKernel kernel : Kernels()) {
    float length = 0;
    detail::CubicLengths(&straight, 1, &length, kernel);
    EXPECT_NEAR(length, 5.0f, 1e-5f);
  }
}

TEST(BatchLength, FigureLengthsAreTheScalarWalksOnTheSharedFigures) {
  std::vector<FigureDescription> figures = SharedFigures();
  ASSERT_GE(figures.size(), 4u);
  SplineDesc zigzag;  // more segments than one block of the batch
  for (int i = 0; i < 150; ++i) zigzag.points.push_back(PointDesc{Vector(static_cast<float>(i), static_cast<float>(i % 3), 0)});
  FigureDescription longSpline;
  longSpline.view = longSpline.inverseView = longSpline.screen = longSpline.inverseScreen = Matrix{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};
  longSpline.splines.push_back(zigzag);
  figures.push_back(longSpline);
  int segments = 0;
  for (const FigureDescription& d : figures) {
    Figure f(d);
    for (int s = 0; s < f.SplineCount(); ++s) {
      const float batch = f.SplineLength(s);  // brings the figure to its canonical state first
      SegmentCP* first = f.ControlPoint(PointId{s, 0});
      EXPECT_EQ(Bits(batch), Bits(GetTotalLength(first))) << "spline " << s;
      const std::vector<SegmentCP*> walk = detail::LengthWalk(first);
      std::vector<float> lengths(walk.size());
      detail::CurveLengths(walk.data(), walk.size(), lengths.data());
      for (std::size_t i = 0; i < walk.size(); ++i) EXPECT_EQ(Bits(lengths[i]), Bits(CurveLength(walk[i])));
      segments += static_cast<int>(walk.size());
    }
  }
  EXPECT_GT(segments, 20);
}

}  // namespace
}  // namespace splinecore::test
