// Value types: exact comparisons, transforms, and the rounding points of
// the vector operations.
#include <cmath>

#include <gtest/gtest.h>

#include "splinecore/geometry.h"
#include "test_figure.h"

namespace splinecore {
namespace {

using test::MakeMatrix;

void ExpectBits(const Vector& v, float x, float y, float z) {
  EXPECT_EQ(v.x, x);
  EXPECT_EQ(v.y, y);
  EXPECT_EQ(v.z, z);
}

TEST(VectorEquality, IsExactWithoutTolerance) {
  EXPECT_EQ(Vector(1, 2, 3) == Vector(1, 2, std::nextafter(3.0f, 4.0f)), 0);
  EXPECT_EQ(Vector(1, 2, 3) == Vector(1, 2, 3), 1);
  EXPECT_EQ(Vector(0, 0, 0) == -Vector(0, 0, 0), 1);  // -0 equals 0
}

TEST(VectorScaling, ZeroAndMinusOne) {
  const Vector v(1.5f, -2.0f, 3.25f);
  ExpectBits(v * 0.0, 0.0f, -0.0f, 0.0f);
  Vector negated = v;
  negated.Negate();
  EXPECT_EQ(v * -1.0f == negated, 1);
  Vector scaled = v;
  scaled *= 2.0f;
  ExpectBits(scaled, 3.0f, -4.0f, 6.5f);
}

TEST(VectorScaling, OperatorsRoundTheFactorToFloatScaledKeepsItInDouble) {
  // Derived in python3 with struct-packed floats: x * f(s) vs x * s, rounded.
  const double s = 0.33333330000000333;
  const Vector v(0x1.00182ep+0f, 134, 0);
  EXPECT_EQ((v * s).x, 0x1.557592p-2f);
  Vector scaled = v;
  scaled *= s;
  EXPECT_EQ(scaled.x, 0x1.557592p-2f);
  EXPECT_EQ(Scaled(v, s).x, 0x1.55759p-2f);
  EXPECT_EQ(Scaled(v, 0.1).y, 0x1.acccccp+3f);
  EXPECT_EQ((v * 0.1f).y, 0x1.accccep+3f);
}

TEST(VectorNormalize, ZeroStaysAndThreeFourFive) {
  Vector zero(0, 0, 0);
  ExpectBits(zero.Normalize(), 0, 0, 0);
  Vector v(3, 0, 4);
  v.Normalize();
  // r = 1/5 in double; 3r and 4r rounded to float are the floats nearest 0.6 and 0.8.
  ExpectBits(v, 0.6f, 0.0f, 0.8f);
}

TEST(VectorNormalize, ReciprocalOfTheFloatLengthKeptInDouble) {
  // Derived with a double-precision script: length = sqrt of the double dot
  // product, rounded to float; r = 1.0 / that float, kept in double; each
  // component float(x * r). Taking r from the unrounded length gives z =
  // -0x1.9d8f6ap-3; rounding r to float gives x = -0x1.f55d88p-1.
  Vector v(-0x1.3982fcp+2f, -0x1.75f52ap-4f, -0x1.029b12p+0f);
  v.Normalize();
  ExpectBits(v, -0x1.f55d86p-1f, -0x1.2b03dap-6f, -0x1.9d8f6cp-3f);
}

TEST(VectorCross, RightHanded) {
  ExpectBits(Vector(1, 0, 0).Cross(Vector(0, 1, 0)), 0, 0, 1);
  ExpectBits(Vector(0, 1, 0).Cross(Vector(1, 0, 0)), 0, 0, -1);
}

TEST(VectorCross, EachComponentRoundedOnce) {
  // y*o.z - z*o.y with y = z = 1 + 2^-23 and o = (0, 1, 1 + 2^-22): in double
  // (1+2^-23)(1+2^-22) - (1+2^-23) = 2^-22 + 2^-45, rounded once to float is
  // 2^-22 (1 + 2^-23) = 0x1.000002p-22; rounding the product to float first
  // loses 2^-45 and gives 0x1p-22.
  const float a = 0x1.000002p+0f;
  const Vector c = Vector(0, a, a).Cross(Vector(0, 1, 0x1.000004p+0f));
  EXPECT_EQ(c.x, 0x1.000002p-22f);
}

TEST(Dot, SumsLeftToRightInDouble) {
  // (1 + 1e17) + (-1e17) = 0 in double (1 is below half an ulp of 1e17);
  // summing right to left would give 1.
  const float big = 1e17f;
  EXPECT_EQ(Vector(1, big, -big).Dot(Vector(1, 1, 1)), 0.0);
}

TEST(MatrixTransforms, OriginGivesTranslationColumn) {
  const Matrix m = MakeMatrix({2, 0, 0, 5, 0, 3, 0, -6, 0, 0, 4, 7});
  ExpectBits(TransformPoint(m, Vector(0, 0, 0)), 5, -6, 7);
}

TEST(MatrixTransforms, DirectionIgnoresTranslation) {
  const Matrix translation = MakeMatrix({1, 0, 0, 10, 0, 1, 0, 20, 0, 0, 1, 30});
  Vector d(1.25f, -2.5f, 3.75f);
  TransformDirection(translation, d);
  ExpectBits(d, 1.25f, -2.5f, 3.75f);
}

TEST(MatrixTransforms, InPlaceEqualsCopy) {
  // A rotation about z: in-place use must read x before writing it.
  const Matrix rot = MakeMatrix({0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0});
  Vector v(1, 2, 3);
  TransformDirection(rot, v);
  ExpectBits(v, -2, 1, 3);
  Vector p(1, 2, 3);
  p = TransformPoint(rot, p);
  ExpectBits(p, -2, 1, 3);
}

TEST(MatrixTransforms, RowDotIsTheUnroundedCoordinate) {
  const Matrix m = MakeMatrix({0.1f, 0.2f, 0.3f, 0.4f, 1, 1, 1, 1, 0, 0, 0, 0});
  const Vector v(1.1f, 2.2f, 3.3f);
  const double row0 = RowDot(m.m[0], v);
  EXPECT_EQ(static_cast<float>(row0), TransformPoint(m, v).x);
  EXPECT_EQ(row0, ((static_cast<double>(0.1f) * 1.1f + static_cast<double>(0.2f) * 2.2f) +
                   static_cast<double>(0.3f) * 3.3f) + 0.4f);
}

TEST(MatrixTransforms, RowsSumLeftToRight) {
  // Row (1, 1e17, -1e17, 0.5) on (1, 1, 1): ((1 + 1e17) - 1e17) + 0.5 = 0.5;
  // any other order of the terms gives 1.5.
  const float big = 1e17f;
  const Matrix m = MakeMatrix({1, big, -big, 0.5f, 0, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(TransformPoint(m, Vector(1, 1, 1)).x, 0.5f);
  Vector d(1, 1, 1);
  TransformDirection(m, d);
  EXPECT_EQ(d.x, 0.0f);
}

}  // namespace
}  // namespace splinecore
