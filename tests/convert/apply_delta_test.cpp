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
#include "expect_vector.h"

namespace splinecore::detail {
namespace {

using test::ExpectVector;

const Vector kX(1, 0, 0), kY(0, 1, 0), kZero(0, 0, 0);
constexpr float kHalfSqrt2 = 0x1.6a09e6p-1f;  // float(sqrt(0.5))

struct Turn {
  const char* name;
  Vector a, b;
  float degrees;
  Vector expected;
};

const Turn kTurns[] = {
    // Quadrants: corners of the square are exact, midpoints the diagonals.
    {"90", kX, kY, 90, {0, 1, 0}},
    {"180", kX, kY, 180, {-1, 0, 0}},
    {"270", kX, kY, 270, {0, -1, 0}},
    {"360", kX, kY, 360, {1, 0, 0}},
    {"45", kX, kY, 45, {kHalfSqrt2, kHalfSqrt2, 0}},
    {"135", kX, kY, 135, {-kHalfSqrt2, kHalfSqrt2, 0}},
    {"225", kX, kY, 225, {-kHalfSqrt2, -kHalfSqrt2, 0}},
    {"315", kX, kY, 315, {kHalfSqrt2, -kHalfSqrt2, 0}},
    // Each quadrant blends its two corners linearly. 30: a + (b - a)/3 =
    // (2/3, 1/3), normalised (2, 1)/sqrt(5), not the circular (cos 30, sin 30).
    {"30", kX, kY, 30, {0x1.c9f25cp-1f, 0x1.c9f25ep-2f, 0}},
    {"100: b + (-a - b)/9", kX, kY, 100, {-0x1.fc0bd8p-4f, 0x1.fc0bd8p-1f, 0}},
    {"200: -a + (a - b)*2/9", kX, kY, 200, {-0x1.ec4cdep-1f, -0x1.19507ep-2f, 0}},
    {"300: -b + (a + b)/3", kX, kY, 300, {0x1.c9f25ep-2f, -0x1.c9f25cp-1f, 0}},
    {"359.5 keeps its fraction", kX, kY, 359.5f, {0x1.fffdf6p-1f, -0x1.6e1e4p-8f, 0}},
    // The square of non-unit, non-perpendicular vectors; results normalised.
    {"45 of (2,0,0), (1,1,0): (a + b)/2", {2, 0, 0}, {1, 1, 0}, 45, {0x1.e5b9dp-1f, 0x1.43d136p-2f, 0}},
    {"135 of (2,0,0), (1,1,0): (b - a)/2", {2, 0, 0}, {1, 1, 0}, 135, {-kHalfSqrt2, kHalfSqrt2, 0}},
    // Zero angles copy a unnormalised; a zero b keeps the unit a short of 90.
    {"0", {2, -3, 0.5f}, kY, 0, {2, -3, 0.5f}},
    {"-0", {2, -3, 0.5f}, kY, -0.0f, {2, -3, 0.5f}},
    {"60 toward zero", kX, kZero, 60, {1, 0, 0}},
    {"120 toward zero", kX, kZero, 120, {-1, 0, 0}},
    {"a = -b at 45: the zero blend stays zero", kX, {-1, 0, 0}, 45, {0, 0, 0}},
    // Range reduction: negative angles wrap into the turn.
    {"-90", kX, kY, -90, {0, -1, 0}},
    {"-30 becomes 330: -b + (a + b)*2/3", kX, kY, -30, {0x1.c9f25cp-1f, -0x1.c9f25ap-2f, 0}},
    {"-0.5 drops its fraction: 0 + 360 gives a", kX, kY, -0.5f, {1, 0, 0}},
    {"-390.25: integer part -390, remainder -30", kX, kY, -390.25f, {0x1.c9f25cp-1f, -0x1.c9f25ap-2f, 0}},
    {"-360 gives 0 + 360: a", kX, kY, -360, {1, 0, 0}},
    // Large angles drop their fraction.
    {"450.75", kX, kY, 450.75f, {0, 1, 0}},
    {"1000.5: 1000 mod 360 = 280, -b + (a + b)/9", kX, kY, 1000.5f, {0x1.fc0bd8p-4f, -0x1.fc0bd8p-1f, 0}},
    {"720 reduces to 0, which normalises a (unlike a zero angle)", {2, 0, 0}, kY, 720, {1, 0, 0}},
    // The edges of a 32-bit int still turn.
    {"2147483520 (largest float below 2^31) mod 360 = 0: a normalised", {2, 0, 0}, {0, 3, 0}, 2147483520.0f,
     {1, 0, 0}},
    {"-2^31 mod 360 = -128, so 232: -a + (a - b)*52/90", {2, 0, 0}, {0, 3, 0}, -2147483648.0f,
     {-0x1.c07b0cp-2f, -0x1.cc4866p-1f, 0}},
};

TEST(TurnToward, SquareTurnsAndRangeReduction) {
  for (const Turn& t : kTurns) {
    SCOPED_TRACE(t.name);
    Vector out(99, 99, 99);
    TurnToward(t.a, t.b, out, t.degrees);
    ExpectVector(out, t.expected);
  }
}

TEST(TurnToward, HugeAnglesReduceLikeTheirRemainder) {
  // The remainder of the integer part by 360 (python3: math.fmod(math.trunc(d), 360), plus 360 when
  // negative) is exact for every float: a huge angle turns exactly as its small equivalent does.
  const struct {
    float huge, equivalent;
  } kPairs[] = {{2147483648.0f, 128}, {3.0e9f, 120},           {-3.0e9f, 240},
                {-2147483904.0f, 336}, {-1.0e30f, 240}, {std::numeric_limits<float>::max(), 720}};
  for (const auto& pair : kPairs) {
    SCOPED_TRACE(pair.huge);
    Vector huge(99, 99, 99), equivalent(99, 99, 99);
    // a is not unit: "no turn" would copy it unnormalised.
    TurnToward(Vector(2, 0, 0), kY, huge, pair.huge);
    TurnToward(Vector(2, 0, 0), kY, equivalent, pair.equivalent);
    ExpectVector(huge, equivalent);
    EXPECT_FALSE(huge == Vector(2, 0, 0)) << "no turn";
  }
}

TEST(TurnToward, NonFiniteAnglesMakeNoTurn) {
  const Vector a(2.0f, -3.0f, 0.5f);
  const float angles[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                          -std::numeric_limits<float>::infinity()};
  for (float degrees : angles) {
    SCOPED_TRACE(degrees);
    Vector out(99, 99, 99);
    TurnToward(a, kY, out, degrees);
    ExpectVector(out, a);
  }
}

struct DeltaCase {
  const char* name;
  Vector t, normal;
  float pitch, yaw, magnitude;
  Vector expectedT, expectedNormal;
};

// The normal comes out normalised unless the tangent or the normal is zero.
const DeltaCase kDeltas[] = {
    {"pitch turns toward the normal", {2, 0, 0}, {0, 0, 3}, 90, 0, 1, {0, 0, 2}, {0, 0, 1}},
    {"yaw turns toward t x normal", {2, 0, 0}, {0, 0, 3}, 0, 90, 1, {0, -2, 0}, {0, 0, 1}},
    {"magnitude scales without turning", {2, 0, 0}, {0, 0, 3}, 0, 0, 3, {6, 0, 0}, {0, 0, 1}},
    // w = (sqrt 1/2, 0, sqrt 1/2), c = (0, -1, 0).
    {"pitch then yaw", {1, 0, 0}, {0, 0, 1}, 45, 45, 1, {0.5f, -kHalfSqrt2, 0.5f}, {0, 0, 1}},
    {"a square turn of 30 keeps the length: (2, 0, 1)/sqrt(5) scaled by 2", {2, 0, 0}, {0, 0, 3}, 30, 0, 1,
     {0x1.c9f25cp+0f, 0, 0x1.c9f25ep-1f}, {0, 0, 1}},
    {"zero tangent: both left alone", {0, -0.0f, 0}, {0, 0, 3}, 45, 10, 2, {0, 0, 0}, {0, 0, 3}},
    // A zero normal is not normalised: short of 90 degrees the turn keeps the
    // unit tangent; at 90 the blend of b = 0 and -a * 0 is zero and stays zero.
    {"zero normal, 45", {0, 3, 0}, kZero, 45, 0, 1, {0, 3, 0}, kZero},
    {"zero normal, 90", {0, 3, 0}, kZero, 90, 0, 0.5f, {0, 0, 0}, kZero},
};

TEST(ApplyDelta, PitchYawAndMagnitude) {
  for (const DeltaCase& c : kDeltas) {
    SCOPED_TRACE(c.name);
    Vector t = c.t, normal = c.normal;
    ApplyDelta(t, c.pitch, c.yaw, c.magnitude, normal);
    ExpectVector(t, c.expectedT);
    ExpectVector(normal, c.expectedNormal);
    EXPECT_TRUE(!(c.t == kZero) || std::signbit(t.y) == std::signbit(c.t.y));  // a zero t keeps its -0
  }
}

}  // namespace
}  // namespace splinecore::detail
