// Forward differencing: step sizes, the Hermite-to-power set-up in the plane
// and in three coordinates, stepping, and degenerate step counts.
#include <gtest/gtest.h>

#include <cmath>

#include "expect_vector.h"
#include "measure/forward_difference.h"

namespace splinecore::detail {
namespace {

using test::ExpectVector;

// A curved piece whose plane and three-coordinate set-ups round differently.
Cubic CurvedPiece() {
  return Cubic{Vector(0.1f, -1.3f, 2.5f), Vector(4.1f, -2.2f, 0.7f), Vector(4.8f, 12.6f, -8.7f),
               Vector(-3.9f, 1.7f, 2.3f)};
}

// A column whose z members hold sentinels the plane operations must keep.
Column ColumnWithZ() {
  return Column{Vector(0, 0, 11.0f), Vector(0, 0, 12.0f), Vector(0, 0, 13.0f), Vector(0, 0, 14.0f)};
}

// Hex floats in this file come from a python3 emulation of the arithmetic
// (struct 'f' rounding of each stored value, double in between).

TEST(InitFDSteps, ThirtyStepsAreTheRoundedPowers) {
  FDSteps s;
  InitFDSteps(30, &s);
  EXPECT_EQ(s.h, 0x1.111112p-5f);  // 0.033333335
  EXPECT_EQ(s.h2, 0x1.23456ap-10f);
  EXPECT_EQ(s.h3, 0x1.36b072p-15f);
  EXPECT_EQ(s.h3x6, 0x1.d208acp-13f);
  EXPECT_EQ(s.h2x2, 0x1.23456ap-9f);
}

TEST(InitFDSteps, ZeroStepsGiveInfinities) {
  FDSteps s;
  InitFDSteps(0, &s);
  EXPECT_TRUE(std::isinf(s.h) && s.h > 0);
  EXPECT_TRUE(std::isinf(s.h3x6) && std::isinf(s.h2x2));
}

TEST(InitFD2D, StraightPieceStepsByConstantDifferences) {
  // a = b = 0, c = (3, 0): d1 = 3 * float(1/3) rounds to 1 exactly.
  Cubic cubic{Vector(0, 0, 0), Vector(3, 0, 0), Vector(3, 0, 0), Vector(3, 0, 0)};
  Column col = ColumnWithZ();
  InitFD2D(&col, &cubic, 3);
  ExpectVector(col.p, 0, 0, 11.0f);
  ExpectVector(col.d1, 1.0f, 0, 12.0f);
  ExpectVector(col.d2, 0, 0, 13.0f);
  ExpectVector(col.d3, 0, 0, 14.0f);
  const float expectedX[] = {1.0f, 2.0f, 3.0f};
  for (float x : expectedX) {
    BumpFD2D(&col);
    ExpectVector(col.p, x, 0, 11.0f);
  }
}

TEST(InitFD2D, CurvedPieceRoundsOncePerPlaneValueAndSevenStepsReachTheEnd) {
  Cubic cubic = CurvedPiece();
  Column col = ColumnWithZ();
  InitFD2D(&col, &cubic, 7);
  ExpectVector(col.p, 0.1f, -1.3f, 11.0f);
  ExpectVector(col.d1, 0x1.9650eap-1f, 0x1.3e2be4p+0f, 12.0f);
  ExpectVector(col.d2, 0x1.104540p-3f, -0x1.da623ap-1f, 13.0f);
  ExpectVector(col.d3, -0x1.fcb752p-4f, 0x1.206452p-2f, 14.0f);
  for (int k = 0; k < 7; ++k) BumpFD2D(&col);
  ExpectVector(col.p, 0x1.066664p+2f, -0x1.19998ep+1f, 11.0f);  // p1 = (4.1, -2.2) up to rounding
  EXPECT_EQ(col.d1.z, 12.0f);
  EXPECT_EQ(col.d2.z, 13.0f);
  EXPECT_EQ(col.d3.z, 14.0f);
}

TEST(BumpFD2D, OneStepReachesTheEndPoint) {
  Cubic cubic = CurvedPiece();
  Column col = ColumnWithZ();
  InitFD2D(&col, &cubic, 1);
  BumpFD2D(&col);
  ExpectVector(col.p, 0x1.066664p+2f, -0x1.199996p+1f, 11.0f);
}

TEST(BumpFD2D, ConstantPieceStaysAtItsPoint) {
  Cubic cubic{Vector(2.5f, -1.0f, 0), Vector(2.5f, -1.0f, 0), Vector(0, 0, 0), Vector(0, 0, 0)};
  Column col = ColumnWithZ();
  InitFD2D(&col, &cubic, 5);
  for (int k = 0; k < 9; ++k) BumpFD2D(&col);
  ExpectVector(col.p, 2.5f, -1.0f, 11.0f);
}

TEST(InitFD2D, ZeroStepsFillTheDifferencesWithNonFiniteValues) {
  Cubic cubic = CurvedPiece();
  Column col = ColumnWithZ();
  InitFD2D(&col, &cubic, 0);
  ExpectVector(col.p, 0.1f, -1.3f, 11.0f);
  for (const Vector* d : {&col.d1, &col.d2, &col.d3}) {
    EXPECT_FALSE(std::isfinite(d->x));
    EXPECT_FALSE(std::isfinite(d->y));
  }
  EXPECT_EQ(col.d1.z, 12.0f);
  EXPECT_EQ(col.d3.z, 14.0f);
}

TEST(CubicToPoly, RoundsEveryVectorOperation) {
  const Cubic cubic = CurvedPiece();
  CubicPoly poly;
  CubicToPoly(&poly, &cubic);
  ExpectVector(poly.a, -0x1.c66666p+2f, 0x1.01999ap+4f, -0x1.666666p+1f);
  ExpectVector(poly.b, 0x1.93332ep+2f, -0x1.d9999cp+4f, 0x1.366666p+3f);
  ExpectVector(poly.c, 4.8f, 12.6f, -8.7f);
  ExpectVector(poly.d, 0.1f, -1.3f, 2.5f);
}

TEST(CubicToPoly2D, RoundsOnceAndLeavesZ) {
  const Cubic cubic = CurvedPiece();
  CubicPoly poly;
  poly.a.z = 21.0f;
  poly.b.z = 22.0f;
  CubicToPoly2D(&poly, &cubic);
  ExpectVector(poly.a, -0x1.c66666p+2f, 0x1.01999ap+4f, 21.0f);
  ExpectVector(poly.b, 0x1.933330p+2f, -0x1.d9999ap+4f, 22.0f);  // b differs from CubicToPoly
}

TEST(InitColumn, ThreeCoordinateSetUpAndStepping) {
  const Cubic cubic = CurvedPiece();
  CubicPoly poly;
  CubicToPoly(&poly, &cubic);
  FDSteps s;
  InitFDSteps(7, &s);
  Column col;
  InitColumn(&col, &poly, &s);
  ExpectVector(col.p, 0.1f, -1.3f, 2.5f);
  ExpectVector(col.d1, 0x1.9650eap-1f, 0x1.3e2be4p+0f, -0x1.0d956cp+0f);
  ExpectVector(col.d2, 0x1.10453cp-3f, -0x1.da6240p-1f, 0x1.6343ecp-2f);
  ExpectVector(col.d3, -0x1.fcb752p-4f, 0x1.206452p-2f, -0x1.913da8p-5f);
  for (int k = 0; k < 7; ++k) BumpFD(&col);
  ExpectVector(col.p, 0x1.066660p+2f, -0x1.1999b6p+1f, 0x1.66666ep-1f);  // p1 = (4.1, -2.2, 0.7)
}

}  // namespace
}  // namespace splinecore::detail
