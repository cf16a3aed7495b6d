// Segment and spline lengths in view space: the 30-chord estimate, its
// rounding, and the walk rules of open and closed splines.
//
// Expected floats come from a python3 emulation of the arithmetic (struct
// 'f' rounding at every float store, double in between), fed with the view
// transform of MeasureFigure applied by hand.
#include "measure_figure.h"

namespace splinecore::test {
namespace {

using ArcLength = MeasureFigure;

// Over the right triangle of MeasureFigure.
class SplineLength : public MeasureFigure {
 protected:
  // 30-chord lengths of the three straight segments.
  static constexpr float kL0 = 0x1.800008p+1f;  // q0's segment, ~3
  static constexpr float kL1 = 5.0f;            // q1's segment
  static constexpr float kL2 = 0x1.fffffcp+1f;  // q2's closing segment, ~4
};

TEST_F(ArcLength, StraightSegmentMeasuresItsChordUpToRounding) {
  // View: n at (0, 0, 0), c at (3, 0, 0), both derivatives (1.5, 0, 0).
  SegmentCP* c = Peaked(Vector(2, 3.5f, -0.5f));
  fig.Open({c, Peaked(Vector(2, 5, -0.5f))});
  const long live = MarrowLiveBlocks();
  EXPECT_EQ(CurveLength(c), 0x1.80000ap+1f);
  EXPECT_EQ(MarrowLiveBlocks(), live);  // measuring allocates nothing
}

TEST_F(ArcLength, UniformStraightSegment) { EXPECT_EQ(CurveLength(UniformStraight()), 0x1.7ffffap+1f); }

// Chords are the double square roots, not rounded; only the running sum is
// rounded. Rounding each chord to float first would give 0x1.f1fe56p+2.
TEST_F(ArcLength, ChordsEnterTheSumUnrounded) { EXPECT_EQ(CurveLength(Curved()), 0x1.f1fe54p+2f); }

TEST_F(SplineLength, LonePointMeasuresOneAndItsSegmentZero) {
  SegmentCP* lone = Peaked(Vector(1, 2, 3));
  fig.Open({lone});
  EXPECT_EQ(CurveLength(lone), 0.0f);  // no next
  EXPECT_EQ(GetTotalLength(lone), 1.0f);
}

TEST_F(SplineLength, OpenSplineSumsItsSegmentsToTheLastPoint) {
  auto [q0, q1, q2] = Triangle();
  fig.Open({q0, q1, q2});
  EXPECT_EQ(GetTotalLength(q0), 0x1.000002p+3f);  // float(kL0 + kL1)
  EXPECT_EQ(GetTotalLength(q1), kL1);
  EXPECT_EQ(GetTotalLength(q2), 1.0f);  // the last point has no next
}

TEST_F(SplineLength, ClosedSplineIncludesTheClosingSegmentOnceAndStopsAfterLoopEnd) {
  auto [q0, q1, q2] = Triangle();
  fig.Closed({q0, q1, q2});
  EXPECT_EQ(GetTotalLength(q0), 12.0f);  // float(float(kL0 + kL1) + kL2)
  EXPECT_EQ(CurveLength(q2), kL2);
  EXPECT_EQ(GetTotalLength(q1), 9.0f);  // kL1 + kL2, not around to q0
  EXPECT_EQ(GetTotalLength(q2), kL2);
}

}  // namespace
}  // namespace splinecore::test
