// Rounding points of the tangent, turn and subdivision arithmetic. Each
// input was found by a random search in which the reading used here and
// its alternative give different floats, so each test fails if the code
// rounds at a different place.
//
// Derivation: a throwaway python3 script redoes every step in double
// arithmetic (Python floats) and rounds each stored component to float32
// through struct.pack('f'); it ran both readings on random one-decimal
// inputs and kept the first input where they disagreed. The alternative's
// result is noted beside each expectation that it changes.
#include <gtest/gtest.h>

#include <string>

#include "convert/apply_delta.h"
#include "expect_vector.h"
#include "hooks/subdivide_bezier.h"
#include "test_figure.h"

namespace splinecore::detail {
namespace {

using test::ExpectVector;
using test::TestFigure;

struct At {
  float x, y, z;
  std::uint32_t flags = 0;
};
constexpr std::uint32_t S = cpflag::smooth;

// A smooth point of an open three-point spline; `normal` is expected in
// both normal outputs. The alternative reading's floats are in `other`.
struct TangentReading {
  const char* name;
  const char* other;
  At spline[3];
  int at;
  Vector it, ot, normal;
};

const TangentReading kTangentReadings[] = {
    {"lengths are rounded to float before S = (LA + LB)/L and the factors are formed",
     "double lengths: it.x 0x1.db3be8p+0, ot.y -0x1.a32c9ep+1, ot.z -0x1.fab1b4p+0",
     {{0.7f, -4.9f, -2.8f}, {-0.3f, -2.5f, 0.4f, S}, {-2.2f, 4.2f, 2.7f}},
     1,
     {0x1.db3beap+0f, -0x1.74d01ap+2f, -0x1.c2a726p+1f},
     {0x1.0b2a8p+0f, -0x1.a32c9cp+1f, -0x1.fab1b2p+0f},
     {-0x1.66be58p-2f, -0x1.54b75ep-4f, -0x1.81c8dp-5f}},
    {"W = D * (V . D) with the dot product unrounded",
     "rounded to float first: -0x1.fde046p+1, 0x1.1b43b4p+2, -0x1.338b54p+1",
     {{-2.0f, 2.3f, -1.1f, S}, {1.9f, -2.8f, -1.0f}, {-0.5f, -0.9f, -4.7f}},
     0,
     {-0x1.fde048p+1f, 0x1.1b43b6p+2f, -0x1.338b56p+1f},
     {-0x1.fde048p+1f, 0x1.1b43b6p+2f, -0x1.338b56p+1f},
     {0x1.27411cp-1f, 0x1.c0925ap-2f, -0x1.315ecp-3f}},
    // C sits where the mirrored direction almost equals K: Q.D =
    // 0.95401477119769 < k = 0.95401478050637 in double, while both round to
    // the same float; compared in double the tangent is limited onto K.
    {"the limit test compares doubles",
     "compared in float it stays the mirror (0x1.c6807cp+1, 0x1.28a5bcp+1, -0x1.33126p+2)",
     {{0.4f, 2.4f, -2.4f, S}, {-2.6f, -1.6f, 1.6f}, {-0x1.e0c7ccp+0f, -0x1.95da8ap+1f, 0x1.2436f2p-1f}},
     0,
     {0x1.c6807ep+1f, 0x1.28a5bcp+1f, -0x1.33125ep+2f},
     {0x1.c6807ep+1f, 0x1.28a5bcp+1f, -0x1.33125ep+2f},
     {0x1.ef9a9p-3f, -0x1.30fd4cp-8f, 0x1.6a2cp-3f}},
    {"without prev the mirror is W - (V - W)", "as 2W - V: -0x1.85468p+1, 0x1.85468p+2, 0x1.ac33f4p+2",
     {{-3.0f, 4.4f, 1.9f, S}, {-1.4f, -3.3f, -3.5f}, {-4.3f, -2.0f, 1.0f}},
     0,
     {-0x1.854684p+1f, 0x1.854684p+2f, 0x1.ac33f6p+2f},
     {-0x1.854684p+1f, 0x1.854684p+2f, 0x1.ac33f6p+2f},
     {-0x1.c1dfep-2f, 0x1.137e48p-3f, -0x1.49b672p-2f}},
    {"without next the mirror is 2W - V", "as W - (V - W): 0x1.daf624p+0, -0x1.f251f8p-2, 0x1.6a0f8ep+1",
     {{1.5f, 4.0f, -3.9f}, {4.4f, 2.4f, 4.2f}, {1.2f, 2.4f, 3.0f, S}},
     2,
     {0x1.daf622p+0f, -0x1.f251f6p-2f, 0x1.6a0f8cp+1f},
     {0x1.daf622p+0f, -0x1.f251f6p-2f, 0x1.6a0f8cp+1f},
     {-0x1.4495cp-4f, 0x1.da32dp-1f, 0x1.b0c7b2p-3f}},
};

TEST(TangentReadings, LengthsProjectionLimitAndMirrors) {
  for (const TangentReading& r : kTangentReadings) {
    SCOPED_TRACE(std::string(r.name) + "; the other reading would give " + r.other);
    TestFigure fig;
    SegmentCP* cps[3];
    for (int i = 0; i < 3; ++i) {
      const At& a = r.spline[i];
      cps[i] = fig.NewCP(Vector(a.x, a.y, a.z), a.flags);
    }
    fig.Open({cps[0], cps[1], cps[2]});
    Vector it, ot, inNormal, outNormal;
    EXPECT_EQ(cps[r.at]->GetTangents(&it, &ot, &inNormal, &outNormal, 1), 1);
    ExpectVector(it, r.it);
    ExpectVector(ot, r.ot);
    ExpectVector(inNormal, r.normal);
    ExpectVector(outNormal, r.normal);
  }
}

// The normal is scaled by 1 / (its length rounded to float), the reciprocal
// kept in double (from the double length: 0x1.f53ceep-3, -0x1.e05a62p-1,
// -0x1.f53ceep-3).
TEST(DeltaReadings, NormalIsScaledByTheReciprocalOfTheFloatLength) {
  Vector t(1.0f, 0.0f, 0.0f);
  Vector normal(1.2f, -4.6f, -1.2f);
  ApplyDelta(t, 0.0f, 0.0f, 1.0f, normal);
  ExpectVector(normal, 0x1.f53cecp-3f, -0x1.e05a6p-1f, -0x1.f53cecp-3f);
}

// The unit tangent is scaled by L, rounded, then by magnitude (by the one
// double factor L * magnitude: y 0x1.fae146p+1).
TEST(DeltaReadings, LengthAndMagnitudeAreTwoRoundedScalings) {
  Vector t(-1.9f, 2.2f, -1.4f);
  Vector normal(-1.6f, -3.4f, -3.3f);
  ApplyDelta(t, 0.0f, 0.0f, 1.8f, normal);
  ExpectVector(t, -0x1.b5c29p+1f, 0x1.fae148p+1f, -0x1.428f5cp+1f);
}

// a + (b - a) * f as three rounded Vector operations with f rounded to
// float. With f kept in double: (0x1.41f3f2p-2, -0x1.c72ba2p-1,
// -0x1.54e244p-2); with each component a + (b - a) * f rounded once:
// (0x1.41f3f2p-2, -0x1.c72bap-1, -0x1.54e246p-2).
TEST(DeltaReadings, TurnRowIsRoundedVectorOperations) {
  const Vector a(2.1f, -3.1f, -2.0f);
  const Vector b(-3.2f, -3.5f, 2.4f);
  Vector out;
  TurnToward(a, b, out, 16.6f);
  ExpectVector(out, 0x1.41f3f2p-2f, -0x1.c72bap-1f, -0x1.54e242p-2f);
}

// Factors rounded to float; each point scaled and the four summed as
// rounded Vector operations in the order c0, c1, c2, c3. With unrounded
// double factors, out1.z is -0x1.89d2f2p+1 and out2.x -0x1.e5ca6cp+0; with
// the whole sum formed in double and rounded once, out1 is (-0x1.cb3334p+0,
// -0x1.410e56p+0, -0x1.89d2f2p+1) and out2.y -0x1.16983ap-1.
TEST(SubdivisionReadings, FactorsRoundedAndSumsRoundedInOrder) {
  const Vector c0(-4.2f, -6.8f, -0.3f);
  const Vector c3(-1.3f, -1.5f, -6.9f);
  Vector out[4];
  SubdivideBezier(&c0, Vector(2.5f, -0.3f, -2.8f), Vector(-7.8f, 7.1f, -8.6f), &c3, 0.25f, 0.38f, &out[0], &out[1],
                  &out[2], &out[3]);
  ExpectVector(out[0], -0x1.d5999ap+0f, -0x1.02999cp+1f, -0x1.5p+1f);
  ExpectVector(out[1], -0x1.cb3332p+0f, -0x1.410e54p+0f, -0x1.89d2f4p+1f);
  ExpectVector(out[2], -0x1.e5ca6ep+0f, -0x1.16983cp-1f, -0x1.c4f228p+1f);
  ExpectVector(out[3], -0x1.092e56p+1f, 0x1.2922dp-4f, -0x1.fe542p+1f);
}

}  // namespace
}  // namespace splinecore::detail
