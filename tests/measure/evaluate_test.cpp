// Bezier point evaluation: exact end points, aliasing, extrapolation, and the
// rounding of the three-coordinate and plane variants.
#include <gtest/gtest.h>

#include "expect_vector.h"
#include "splinecore/measure.h"

namespace splinecore {
namespace {

using test::ExpectVector;

struct Piece {
  Vector p0{0.1f, -1.3f, 2.5f};
  Vector p1{1.7f, 2.9f, -0.4f};
  Vector p2{3.3f, 0.6f, 1.1f};
  Vector p3{4.1f, -2.2f, 0.7f};
};

TEST(CalcPoint, EndParametersGiveTheEndPointsExactlyInSpaceAndInThePlane) {
  Piece q;
  Vector out(9, 9, 9);
  CalcPoint(q.p0, q.p1, q.p2, q.p3, 0.0f, out);
  ExpectVector(out, 0.1f, -1.3f, 2.5f);
  CalcPoint(q.p0, q.p1, q.p2, q.p3, 1.0f, out);
  ExpectVector(out, 4.1f, -2.2f, 0.7f);
  out.z = 42.0f;
  CalcPoint2(q.p0, q.p1, q.p2, q.p3, 0.0f, out);
  ExpectVector(out, 0.1f, -1.3f, 42.0f);
  CalcPoint2(q.p0, q.p1, q.p2, q.p3, 1.0f, out);
  ExpectVector(out, 4.1f, -2.2f, 42.0f);
}

// Weights at 1/2 are 1/8, 3/8, 3/8, 1/8; x = (0 + 3 + 9 + 4)/8 = 2,
// y = (0 + 6 + 6 + 0)/8 = 1.5, all exact.
TEST(CalcPoint, OutMayBeTheFirstControlPoint) {
  Vector p0(0, 0, 0), p1(1, 2, 0), p2(3, 2, 0), p3(4, 0, 0);
  Vector separate(7, 7, 7);
  CalcPoint(p0, p1, p2, p3, 0.5f, separate);
  ExpectVector(separate, 2.0f, 1.5f, 0.0f);
  CalcPoint(p0, p1, p2, p3, 0.5f, p0);
  ExpectVector(p0, 2.0f, 1.5f, 0.0f);
}

// At t = 2 the weights are -1, 6, -12, 8: x = 6 - 36 + 32 = 2,
// y = 12 - 24 = -12, z = 8 * 1 = 8.
TEST(CalcPoint, ExtrapolatesOutsideTheUnitInterval) {
  Vector p0(0, 0, 0), p1(1, 2, 0), p2(3, 2, 0), p3(4, 0, 1);
  Vector out;
  CalcPoint(p0, p1, p2, p3, 2.0f, out);
  ExpectVector(out, 2.0f, -12.0f, 8.0f);
}

// Expected floats from a python3 emulation of the arithmetic (struct 'f'
// rounding): CalcPoint rounds each weighted point and each partial sum,
// CalcPoint2 rounds one double sum per coordinate; at t = 0.3 their y differ
// in the last bit.
TEST(CalcPoint, RoundsEveryWeightedTermAndPartialSum) {
  Piece q;
  Vector out;
  CalcPoint(q.p0, q.p1, q.p2, q.p3, 0.3f, out);
  ExpectVector(out, 0x1.84b5dep+0f, 0x1.c624dep-1f, 0x1.d0d842p-1f);
}

TEST(CalcPoint2, RoundsOneDoubleSumPerCoordinateAndLeavesZ) {
  Piece q;
  Vector out(0, 0, -5.5f);
  CalcPoint2(q.p0, q.p1, q.p2, q.p3, 0.3f, out);
  ExpectVector(out, 0x1.84b5dep+0f, 0x1.c624e0p-1f, -5.5f);
}

}  // namespace
}  // namespace splinecore
