// Turning and scaling tangents: TurnToward's square-based turn with its
// range reduction, and ApplyDelta's pitch, yaw and magnitude.
//
// Expected hex floats come from a throwaway python3 script that redoes each
// step with double arithmetic and rounds every stored component to float32
// through struct.pack('f'); simple values are worked out by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "convert/apply_delta.h"

namespace splinecore {
namespace {

void ExpectVector(const Vector& v, float x, float y, float z) {
  EXPECT_EQ(v.x, x);
  EXPECT_EQ(v.y, y);
  EXPECT_EQ(v.z, z);
}

Vector Turned(const Vector& a, const Vector& b, float degrees) {
  Vector out(99.0f, 99.0f, 99.0f);
  TurnToward(a, b, out, degrees);
  return out;
}

const Vector kX(1.0f, 0.0f, 0.0f);
const Vector kY(0.0f, 1.0f, 0.0f);
constexpr float kHalfSqrt2 = 0x1.6a09e6p-1f;  // float(sqrt(0.5))

TEST(TurnTowardQuadrants, CornersOfTheSquareAreExact) {
  ExpectVector(Turned(kX, kY, 90.0f), 0.0f, 1.0f, 0.0f);
  ExpectVector(Turned(kX, kY, 180.0f), -1.0f, 0.0f, 0.0f);
  ExpectVector(Turned(kX, kY, 270.0f), 0.0f, -1.0f, 0.0f);
  ExpectVector(Turned(kX, kY, 360.0f), 1.0f, 0.0f, 0.0f);
}

TEST(TurnTowardQuadrants, MidpointsAreTheDiagonals) {
  ExpectVector(Turned(kX, kY, 45.0f), kHalfSqrt2, kHalfSqrt2, 0.0f);
  ExpectVector(Turned(kX, kY, 135.0f), -kHalfSqrt2, kHalfSqrt2, 0.0f);
  ExpectVector(Turned(kX, kY, 225.0f), -kHalfSqrt2, -kHalfSqrt2, 0.0f);
  ExpectVector(Turned(kX, kY, 315.0f), kHalfSqrt2, -kHalfSqrt2, 0.0f);
}

TEST(TurnTowardQuadrants, EachQuadrantBlendsItsTwoCornersLinearly) {
  // 30: a + (b - a)/3 = (2/3, 1/3), normalised: (2, 1)/sqrt(5), not the
  // circular (cos 30, sin 30).
  ExpectVector(Turned(kX, kY, 30.0f), 0x1.c9f25cp-1f, 0x1.c9f25ep-2f, 0.0f);
  // 100: b + (-a - b)/9.
  ExpectVector(Turned(kX, kY, 100.0f), -0x1.fc0bd8p-4f, 0x1.fc0bd8p-1f, 0.0f);
  // 200: -a + (a - b)*2/9.
  ExpectVector(Turned(kX, kY, 200.0f), -0x1.ec4cdep-1f, -0x1.19507ep-2f, 0.0f);
  // 300: -b + (a + b)/3.
  ExpectVector(Turned(kX, kY, 300.0f), 0x1.c9f25ep-2f, -0x1.c9f25cp-1f, 0.0f);
  // 359.5 keeps its fraction.
  ExpectVector(Turned(kX, kY, 359.5f), 0x1.fffdf6p-1f, -0x1.6e1e4p-8f, 0.0f);
}

TEST(TurnTowardQuadrants, WorksOnTheSquareOfNonUnitNonPerpendicularVectors) {
  const Vector a(2.0f, 0.0f, 0.0f);
  const Vector b(1.0f, 1.0f, 0.0f);
  // 45: (a + b)/2 = (1.5, 0.5), normalised.
  ExpectVector(Turned(a, b, 45.0f), 0x1.e5b9dp-1f, 0x1.43d136p-2f, 0.0f);
  // 135: (b - a)/2 = (-0.5, 0.5), normalised.
  ExpectVector(Turned(a, b, 135.0f), -kHalfSqrt2, kHalfSqrt2, 0.0f);
}

TEST(TurnTowardQuadrants, ZeroDegreesCopiesAUnnormalised) {
  const Vector a(2.0f, -3.0f, 0.5f);
  ExpectVector(Turned(a, kY, 0.0f), 2.0f, -3.0f, 0.5f);
  ExpectVector(Turned(a, kY, -0.0f), 2.0f, -3.0f, 0.5f);
}

TEST(TurnTowardQuadrants, ZeroBKeepsTheUnitAShortOfNinetyDegrees) {
  const Vector zero(0.0f, 0.0f, 0.0f);
  ExpectVector(Turned(kX, zero, 60.0f), 1.0f, 0.0f, 0.0f);
  ExpectVector(Turned(kX, zero, 120.0f), -1.0f, 0.0f, 0.0f);
}

TEST(TurnTowardQuadrants, AZeroBlendStaysZero) {
  // a = -b at 45 degrees: a + (b - a)/2 = 0, which is not normalised.
  ExpectVector(Turned(kX, Vector(-1.0f, 0.0f, 0.0f), 45.0f), 0.0f, 0.0f, 0.0f);
}

TEST(TurnTowardRangeReduction, NegativeAnglesWrapIntoTheTurn) {
  ExpectVector(Turned(kX, kY, -90.0f), 0.0f, -1.0f, 0.0f);
  // -30 becomes 330: -b + (a + b)*2/3.
  ExpectVector(Turned(kX, kY, -30.0f), 0x1.c9f25cp-1f, -0x1.c9f25ap-2f, 0.0f);
  // -0.5 drops its fraction: 0 + 360 gives a.
  ExpectVector(Turned(kX, kY, -0.5f), 1.0f, 0.0f, 0.0f);
  // -390.25: integer part -390, remainder -30, so the turn of -30.
  ExpectVector(Turned(kX, kY, -390.25f), 0x1.c9f25cp-1f, -0x1.c9f25ap-2f, 0.0f);
  // -360 gives 0 + 360: a.
  ExpectVector(Turned(kX, kY, -360.0f), 1.0f, 0.0f, 0.0f);
}

TEST(TurnTowardRangeReduction, LargeAnglesDropTheirFraction) {
  ExpectVector(Turned(kX, kY, 450.75f), 0.0f, 1.0f, 0.0f);
  // 1000.5: 1000 mod 360 = 280, -b + (a + b)/9.
  ExpectVector(Turned(kX, kY, 1000.5f), 0x1.fc0bd8p-4f, -0x1.fc0bd8p-1f, 0.0f);
  // 720 reduces to 0, which normalises a (unlike a zero angle).
  const Vector a(2.0f, 0.0f, 0.0f);
  ExpectVector(Turned(a, kY, 720.0f), 1.0f, 0.0f, 0.0f);
}

TEST(TurnTowardRangeReduction, AnglesAtTheEdgesOfA32BitIntStillTurn) {
  const Vector a(2.0f, 0.0f, 0.0f);
  const Vector b(0.0f, 3.0f, 0.0f);
  // 2147483520 (the largest float below 2^31) mod 360 = 0: a normalised.
  ExpectVector(Turned(a, b, 2147483520.0f), 1.0f, 0.0f, 0.0f);
  // -2^31 mod 360 = -128, so 232: -a + (a - b)*52/90.
  ExpectVector(Turned(a, b, -2147483648.0f), -0x1.c07b0cp-2f, -0x1.cc4866p-1f, 0.0f);
}

TEST(TurnTowardRangeReduction, UnrepresentableAnglesMakeNoTurn) {
  const Vector a(2.0f, -3.0f, 0.5f);
  const float angles[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                          -std::numeric_limits<float>::infinity(), 2147483648.0f, -2147483904.0f, 3.0e9f,
                          -1.0e30f, std::numeric_limits<float>::max()};
  for (float degrees : angles) {
    SCOPED_TRACE(degrees);
    ExpectVector(Turned(a, kY, degrees), 2.0f, -3.0f, 0.5f);
  }
}

TEST(ApplyDelta, PitchTurnsTowardTheNormalAndNormalisesIt) {
  Vector t(2.0f, 0.0f, 0.0f);
  Vector normal(0.0f, 0.0f, 3.0f);
  ApplyDelta(t, 90.0f, 0.0f, 1.0f, normal);
  ExpectVector(t, 0.0f, 0.0f, 2.0f);
  ExpectVector(normal, 0.0f, 0.0f, 1.0f);
}

TEST(ApplyDelta, YawTurnsTowardTangentCrossNormal) {
  Vector t(2.0f, 0.0f, 0.0f);
  Vector normal(0.0f, 0.0f, 3.0f);
  ApplyDelta(t, 0.0f, 90.0f, 1.0f, normal);
  ExpectVector(t, 0.0f, -2.0f, 0.0f);
}

TEST(ApplyDelta, MagnitudeScalesWithoutTurning) {
  Vector t(2.0f, 0.0f, 0.0f);
  Vector normal(0.0f, 0.0f, 3.0f);
  ApplyDelta(t, 0.0f, 0.0f, 3.0f, normal);
  ExpectVector(t, 6.0f, 0.0f, 0.0f);
}

TEST(ApplyDelta, PitchThenYaw) {
  // w = (sqrt 1/2, 0, sqrt 1/2), c = (0, -1, 0): t = (0.5, -sqrt 1/2, 0.5).
  Vector t(1.0f, 0.0f, 0.0f);
  Vector normal(0.0f, 0.0f, 1.0f);
  ApplyDelta(t, 45.0f, 45.0f, 1.0f, normal);
  ExpectVector(t, 0.5f, -kHalfSqrt2, 0.5f);
}

TEST(ApplyDelta, KeepsTheLengthThroughASquareTurn) {
  // 30 degrees of pitch: (2, 0, 1)/sqrt(5) scaled back by 2.
  Vector t(2.0f, 0.0f, 0.0f);
  Vector normal(0.0f, 0.0f, 3.0f);
  ApplyDelta(t, 30.0f, 0.0f, 1.0f, normal);
  ExpectVector(t, 0x1.c9f25cp+0f, 0.0f, 0x1.c9f25ep-1f);
}

TEST(ApplyDelta, ZeroTangentLeavesTangentAndNormalAlone) {
  Vector t(0.0f, -0.0f, 0.0f);
  Vector normal(0.0f, 0.0f, 3.0f);
  ApplyDelta(t, 45.0f, 10.0f, 2.0f, normal);
  ExpectVector(t, 0.0f, 0.0f, 0.0f);
  EXPECT_TRUE(std::signbit(t.y));
  ExpectVector(normal, 0.0f, 0.0f, 3.0f);
}

TEST(ApplyDelta, ZeroNormalIsNotNormalised) {
  // Short of 90 degrees the turn keeps the unit tangent; at 90 the blend of
  // b = 0 and -a * 0 is zero and stays zero.
  Vector t(0.0f, 3.0f, 0.0f);
  Vector normal(0.0f, 0.0f, 0.0f);
  ApplyDelta(t, 45.0f, 0.0f, 1.0f, normal);
  ExpectVector(t, 0.0f, 3.0f, 0.0f);
  ExpectVector(normal, 0.0f, 0.0f, 0.0f);
  Vector u(0.0f, 3.0f, 0.0f);
  ApplyDelta(u, 90.0f, 0.0f, 0.5f, normal);
  ExpectVector(u, 0.0f, 0.0f, 0.0f);
}

}  // namespace
}  // namespace splinecore
