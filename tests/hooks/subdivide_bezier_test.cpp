// Cutting a cubic Bezier between two parameters by blossoming.
//
// The dyadic cases are exact in float and were worked out by hand (for the
// arc, B(t) in Bernstein form at t = 1/4, 1/2, 3/4); the pieces of the
// straight segment are the hook placements of a carrier at the origin with
// its next at (3, 0, 0).
#include <gtest/gtest.h>

#include "expect_vector.h"
#include "hooks/subdivide_bezier.h"

namespace splinecore::detail {
namespace {

using test::ExpectVector;

struct Piece {
  Vector p[4];
};

Piece Cut(const Vector (&c)[4], float a, float b) {
  Piece out;
  SubdivideBezier(&c[0], c[1], c[2], &c[3], a, b, &out.p[0], &out.p[1], &out.p[2], &out.p[3]);
  return out;
}

const Vector kCurve[4] = {{0.5f, -1.25f, 2.0f}, {-3.0f, 7.5f, 0.125f}, {4.0f, 1.0f, -6.0f}, {2.0f, 2.0f, 2.0f}};
// Q, C1, C2, P of a straight segment with evenly spaced Bezier points.
const Vector kStraight[4] = {{3, 0, 0}, {2, 0, 0}, {1, 0, 0}, {0, 0, 0}};
// An arc from (0, 0, 0) to (3, 0, 0) through the square's upper corners.
const Vector kArc[4] = {{0, 0, 0}, {0, 3, 0}, {3, 3, 0}, {3, 0, 0}};

TEST(SubdivideBezier, WholeCurveIsTheCurveForwardAndReversedBackward) {
  const Piece forward = Cut(kCurve, 0.0f, 1.0f);
  const Piece backward = Cut(kCurve, 1.0f, 0.0f);
  for (int k = 0; k < 4; ++k) {
    ExpectVector(forward.p[k], kCurve[k]);
    ExpectVector(backward.p[k], kCurve[3 - k]);
  }
}

TEST(SubdivideBezier, PiecesOfAStraightEvenSegmentAreEven) {
  // The point at parameter t lies at x = 3(1 - t).
  const struct {
    float a, b, x[4];
  } pieces[] = {{1, 0.75f, {0, 0.25f, 0.5f, 0.75f}}, {0.75f, 0.25f, {0.75f, 1.25f, 1.75f, 2.25f}},
                {0.75f, 0, {0.75f, 1.5f, 2.25f, 3}}};
  for (const auto& piece : pieces) {
    SCOPED_TRACE(::testing::Message() << piece.a << " to " << piece.b);
    const Piece out = Cut(kStraight, piece.a, piece.b);
    for (int k = 0; k < 4; ++k) ExpectVector(out.p[k], piece.x[k], 0, 0);
  }
}

TEST(SubdivideBezier, EndsOfAPieceLieOnTheCurve) {
  // B(1/4) = (0.46875, 1.6875, 0), B(1/2) = (1.5, 2.25, 0).
  const Piece out = Cut(kArc, 0.25f, 0.5f);
  ExpectVector(out.p[0], 0.46875f, 1.6875f, 0);
  ExpectVector(out.p[1], 0.75f, 2.0625f, 0);
  ExpectVector(out.p[2], 1.125f, 2.25f, 0);
  ExpectVector(out.p[3], 1.5f, 2.25f, 0);
}

TEST(SubdivideBezier, SwappedParametersGiveThePieceBackwards) {
  const Piece forward = Cut(kArc, 0.25f, 0.75f);
  const Piece backward = Cut(kArc, 0.75f, 0.25f);
  ExpectVector(forward.p[1], 1.03125f, 2.4375f, 0);
  ExpectVector(forward.p[2], 1.96875f, 2.4375f, 0);
  for (int k = 0; k < 4; ++k) ExpectVector(backward.p[k], forward.p[3 - k]);
}

}  // namespace
}  // namespace splinecore::detail
