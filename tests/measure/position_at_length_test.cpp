// The point and direction at a length along a spline, in view space.
//
// Expected floats come from a python3 emulation of the arithmetic (struct
// 'f' rounding at every float store, double in between), fed with the view
// transform of MeasureFigure applied by hand.
#include "measure_figure.h"

namespace splinecore::test {
namespace {

class PositionAtLength : public MeasureFigure {
 protected:
  // The triangle open at q2: segment lengths 0x1.800008p+1 and 5.
  SegmentCP* OpenTriangle() {
    auto [q0, q1, q2] = Triangle();
    return fig.Open({q0, q1, q2});
  }

  Vector position{-7, -7, -7};
  Vector direction{-9, -9, -9};
};

TEST_F(PositionAtLength, InsideTheChordTableInterpolates) {
  // The point lies in the chord with index 10, at t = 2/3 up to rounding.
  SegmentCP* c = UniformStraight();
  EXPECT_EQ(PositionDirectionFromSubLength(c, 1.0f, &position, &direction), 0x1.7ffffap+1f);
  ExpectVector(position, 0x1.fffff0p+0f, 0, 0);
  ExpectVector(direction, 3, 0, 0);
}

TEST_F(PositionAtLength, ZeroGivesTheStartPointAndItsInTangent) {
  SegmentCP* c = Curved();
  EXPECT_EQ(PositionDirectionFromSubLength(c, 0.0f, &position, &direction), 0x1.f1fe54p+2f);
  ExpectVector(position, 4, 0, 3);       // V(c)
  ExpectVector(direction, -3.5f, 1, -2);  // L(c's in tangent)
}

TEST_F(PositionAtLength, NegativeExtrapolatesBeyondTheStartPoint) {
  SegmentCP* c = UniformStraight();
  EXPECT_EQ(PositionDirectionFromSubLength(c, -0.5f, &position, &direction), 0x1.7ffffap+1f);
  ExpectVector(position, 0x1.c00004p+1f, 0, 0);  // ~3.5, at t ~ 7/6
  ExpectVector(direction, 3, 0, 0);
}

// Position and direction are one double sum per coordinate with t^2 = t*t
// and t^3 = (t*t)*t unrounded. Rounding each term as a Vector operation would
// give z 0x1.6f3358p+1 and direction z 0x1.1e8c74p+1; rounding t^2 to float
// would give position x 0x1.8e5e86p+2 and direction y 0x1.23700ep+2.
TEST_F(PositionAtLength, PointAndDirectionRoundOncePerCoordinate) {
  SegmentCP* c = Curved();
  EXPECT_EQ(PositionDirectionFromSubLength(c, 2.5f, &position, &direction), 0x1.f1fe54p+2f);
  ExpectVector(position, 0x1.8e5e84p+2f, -0x1.0a97c8p+0f, 0x1.6f3356p+1f);
  ExpectVector(direction, -0x1.0c0d8cp+3f, 0x1.23700cp+2f, 0x1.1e8c72p+1f);
}

TEST_F(PositionAtLength, WalksIntoTheSegmentThatHoldsTheLength) {
  SegmentCP* first = OpenTriangle();
  // 1 past the first segment: 1 along the side from (10, -1) towards (6, -4).
  EXPECT_EQ(PositionDirectionFromSubLength(first, 4.0f, &position, &direction), 0x1.000002p+3f);
  ExpectVector(position, 0x1.266d06p+3f, -0x1.9971e2p+0f, 1);
  ExpectVector(direction, 0x1.0ec98ep+2f, 0x1.962e56p+1f, 0);
}

TEST_F(PositionAtLength, TheWholeLengthGivesTheFarEndAndItsOutTangent) {
  SegmentCP* first = OpenTriangle();
  const float whole = 0x1.000002p+3f;
  EXPECT_EQ(PositionDirectionFromSubLength(first, whole, &position, &direction), whole);
  ExpectVector(position, 6, -4, 1);
  ExpectVector(direction, 2, 1.5f, 0);  // L((0.75, -1, 0)), the last point's half chord
  EXPECT_EQ(PositionDirectionFromSubLength(first, 1e6f, &position, &direction), whole);
  ExpectVector(position, 6, -4, 1);
}

TEST_F(PositionAtLength, ClosedSplineEndsAtTheFirstPointAfterLoopEnd) {
  auto [q0, q1, q2] = Triangle();
  fig.Closed({q0, q1, q2});
  // From q1: its segment (5) and the closing one (~4); then q0 is the far end.
  EXPECT_EQ(PositionDirectionFromSubLength(q1, 100.0f, &position, &direction), 9.0f);
  ExpectVector(position, 10, -4, 1);  // V(q0)
  ExpectVector(direction, -2, 0, 0);  // L(q0's out tangent (0, 1, 0))
}

TEST_F(PositionAtLength, WithoutNextGivesTheViewPositionAndKeepsDirection) {
  SegmentCP* lone = Peaked(Vector(1, 2, 3));
  fig.Open({lone});
  EXPECT_EQ(PositionDirectionFromSubLength(lone, 2.0f, &position, &direction), 0.0f);
  ExpectVector(position, 6, -2, 7);
  ExpectVector(direction, -9, -9, -9);
}

// The walked sum is compared with the length in double before it is stored:
// here kL0 + kL1 exceeds the length, which is that sum rounded down to float,
// so the point is found in the second segment (at t ~ -4e-7). Comparing the
// rounded sum would end the walk and give the far end instead: position
// (0x1.d5c290p+3, -0x1.c8f5c4p+2, -0x1.87ae14p+1), direction
// (0x1.8p+1, -0x1.71eb86p+2, -0x1.747ae2p+2).
TEST_F(PositionAtLength, WalkComparesTheUnroundedSum) {
  SegmentCP* a = WithTangents(Vector(-0.97f, 0.32f, 2.56f), Vector(-2.7f, -1.79f, -1.13f), Vector(0, 0, 0));
  SegmentCP* b = WithTangents(Vector(-1.39f, -2.22f, 0.16f), Vector(0, -1.93f, -0.92f),
                              Vector(-1.17f, 1.56f, -1.26f));
  SegmentCP* c = WithTangents(Vector(-1.57f, -2.34f, -2.03f), Vector(0, 0, 0), Vector(-2.89f, -1.5f, -2.91f));
  fig.Open({a, b, c});
  const float length = 0x1.c4cb78p+3f;  // float(0x1.02c79ep+3 + 0x1.8407b6p+2), rounded down
  EXPECT_EQ(PositionDirectionFromSubLength(a, length, &position, &direction), length);
  ExpectVector(position, 0x1.d5c28ep+3f, -0x1.c8f5bap+2f, -0x1.87ae02p+1f);
  ExpectVector(direction, 0x1.800044p+1f, -0x1.71ebaep+2f, -0x1.747b38p+2f);
}

}  // namespace
}  // namespace splinecore::test
