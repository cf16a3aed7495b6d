// The tangent rule at one control point: every case of smooth interior,
// smooth open ends (with their limiting), peaked points and short ends, the
// orientation of the normal on a bend, and the choice of position space.
//
// Screen matrices are the identity unless a test says otherwise, so screen
// positions equal model positions. Hex-float expectations come from a
// throwaway python3 script redoing each step in double and rounding every
// stored component to float32 with struct.pack('f'); the rest are exact by
// hand.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "test_figure.h"

namespace splinecore {
namespace {

using test::TestFigure;

constexpr std::uint32_t kSmooth = cpflag::smooth;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

void ExpectVector(const Vector& v, float x, float y, float z) {
  EXPECT_EQ(v.x, x);
  EXPECT_EQ(v.y, y);
  EXPECT_EQ(v.z, z);
}

void ExpectUntouched(const Vector& v) {
  EXPECT_TRUE(std::isnan(v.x));
  EXPECT_TRUE(std::isnan(v.y));
  EXPECT_TRUE(std::isnan(v.z));
}

// Outputs of one GetTangents call; unwritten outputs stay NaN.
struct Tangents {
  Vector it{kNaN, kNaN, kNaN};
  Vector ot{kNaN, kNaN, kNaN};
  Vector inNormal{kNaN, kNaN, kNaN};
  Vector outNormal{kNaN, kNaN, kNaN};
  int result = -1;
};

Tangents Compute(SegmentCP* cp, int screen = 1) {
  Tangents t;
  t.result = cp->GetTangents(&t.it, &t.ot, &t.inNormal, &t.outNormal, screen);
  return t;
}

void ExpectNormals(const Tangents& t, float x, float y, float z) {
  ExpectVector(t.inNormal, x, y, z);
  ExpectVector(t.outNormal, x, y, z);
}

class GetTangentsTest : public ::testing::Test {
 protected:
  TestFigure fig;
  SegmentCP* At(float x, float y, float z, std::uint32_t flags = 0) { return fig.NewCP(Vector(x, y, z), flags); }
};

// --- hooks ------------------------------------------------------------------

TEST_F(GetTangentsTest, HookReturnsZeroAndWritesNothing) {
  HookSegmentCP* hook = fig.NewHook(0.5f, kSmooth);
  fig.Open({hook});
  const Tangents t = Compute(hook);
  EXPECT_EQ(t.result, 0);
  ExpectUntouched(t.it);
  ExpectUntouched(t.ot);
  ExpectUntouched(t.inNormal);
  ExpectUntouched(t.outNormal);
}

// --- smooth interior ----------------------------------------------------------

using SmoothInterior = GetTangentsTest;

TEST_F(SmoothInterior, SharesTheChordByTheSegmentLengths) {
  SegmentCP* p = At(0, 0, 0, kSmooth);
  fig.Open({At(1, 0, 0), p, At(-3, 0, 0)});
  const Tangents t = Compute(p);
  EXPECT_EQ(t.result, 1);
  ExpectVector(t.it, 3, 0, 0);
  ExpectVector(t.ot, 1, 0, 0);
  ExpectNormals(t, 0, 0, 0);
}

TEST_F(SmoothInterior, EvenlySpacedCollinearNeighboursGiveTheChordHalves) {
  // it = ot = P - B.
  SegmentCP* p = At(1, 1, 1, kSmooth);
  fig.Open({At(2, 3, 4), p, At(0, -1, -2)});
  const Tangents t = Compute(p);
  EXPECT_EQ(t.result, 1);
  ExpectVector(t.it, 1, 2, 3);
  ExpectVector(t.ot, 1, 2, 3);
}

TEST_F(SmoothInterior, NormalIsTowardPrevCrossChord) {
  SegmentCP* p = At(0, 0, 0, kSmooth);
  fig.Open({At(1, 1, 0), p, At(-1, 1, 0)});
  const Tangents t = Compute(p);
  EXPECT_EQ(t.result, 1);
  ExpectVector(t.it, 1, 0, 0);
  ExpectVector(t.ot, 1, 0, 0);
  ExpectNormals(t, 0, 0, -0x1.6a09e6p-1f);  // -sqrt(1/2)
}

TEST_F(SmoothInterior, CoincidingNeighboursGiveZeroTangentsAndNoNormal) {
  SegmentCP* p = At(0, 0, 0, kSmooth);
  fig.Open({At(2, 1, 0), p, At(2, 1, 0)});
  const Tangents t = Compute(p);
  EXPECT_EQ(t.result, 0);
  ExpectVector(t.it, 0, 0, 0);
  ExpectVector(t.ot, 0, 0, 0);
  ExpectUntouched(t.inNormal);
  ExpectUntouched(t.outNormal);
}

TEST_F(SmoothInterior, PointOnItsPrevGetsTheWholeChordAndAZeroNormal) {
  SegmentCP* p = At(1, 2, 3, kSmooth);
  fig.Open({At(1, 2, 3), p, At(-1, 0, 0)});
  const Tangents t = Compute(p);
  EXPECT_EQ(t.result, 1);
  ExpectVector(t.it, 2, 2, 3);  // A - B
  ExpectVector(t.ot, 0, 0, 0);
  ExpectNormals(t, 0, 0, 0);
}

TEST_F(SmoothInterior, ClosedSplineOfTwoPointsHasCoincidingNeighbours) {
  SegmentCP* p = At(0, 0, 0, kSmooth);
  fig.Closed({p, At(2, 0, 0, kSmooth)});
  const Tangents t = Compute(p);
  EXPECT_EQ(t.result, 0);
  ExpectVector(t.it, 0, 0, 0);
  ExpectVector(t.ot, 0, 0, 0);
}

TEST_F(SmoothInterior, NormalsAreOptional) {
  SegmentCP* p = At(0, 0, 0, kSmooth);
  fig.Open({At(1, 1, 0), p, At(-1, 1, 0)});
  Vector it(kNaN, kNaN, kNaN);
  Vector ot(kNaN, kNaN, kNaN);
  EXPECT_EQ(p->GetTangents(&it, &ot, nullptr, nullptr, 1), 1);
  ExpectVector(it, 1, 0, 0);
  ExpectVector(ot, 1, 0, 0);
}

// --- smooth open ends ---------------------------------------------------------

using SmoothEnd = GetTangentsTest;

TEST_F(SmoothEnd, NoPrevMirrorLeaningTooFarIsTurnedOntoTheMidpointLine) {
  // Mirrored (0, -1, 0) leans past K = (2, -1, 0)/sqrt(5).
  SegmentCP* p = At(0, 0, 0, kSmooth);
  fig.Open({p, At(-1, 0, 0), At(0, -1, 0)});
  const Tangents t = Compute(p);
  EXPECT_EQ(t.result, 1);
  ExpectVector(t.it, 0x1.c9f25cp-1f, -0x1.c9f25cp-2f, 0);
  ExpectVector(t.ot, 0x1.c9f25cp-1f, -0x1.c9f25cp-2f, 0);
  ExpectNormals(t, 0, 0, 1);
}

TEST_F(SmoothEnd, LimitingKeepsTheMirroredLength) {
  // Mirrored (0, -2, 0) is turned onto K = (2, -0.5, 0)/|.|, length 2 kept.
  SegmentCP* p = At(0, 0, 0, kSmooth);
  fig.Open({p, At(-2, 0, 0), At(0, -1, 0)});
  const Tangents t = Compute(p);
  EXPECT_EQ(t.result, 1);
  ExpectVector(t.it, 0x1.f0b686p+0f, -0x1.f0b686p-2f, 0);
  ExpectVector(t.ot, 0x1.f0b686p+0f, -0x1.f0b686p-2f, 0);
  ExpectNormals(t, 0, 0, 1);
}

TEST_F(SmoothEnd, NoPrevMirrorWithinTheLimitIsKept) {
  // (3, 1) from C mirrored across the chord: (3, -1, 0)/sqrt(10).
  SegmentCP* p = At(0, 0, 0, kSmooth);
  fig.Open({p, At(-1, 0, 0), At(-3, -1, 0)});
  const Tangents t = Compute(p);
  EXPECT_EQ(t.result, 1);
  ExpectVector(t.it, 0x1.e5b9dp-1f, -0x1.43d136p-2f, 0);
  ExpectVector(t.ot, 0x1.e5b9dp-1f, -0x1.43d136p-2f, 0);
  ExpectNormals(t, 0, 0, 0x1.43d138p-2f);
}

TEST_F(SmoothEnd, NoNextMirrorsTheOtherEnd) {
  SegmentCP* p = At(0, 0, 0, kSmooth);
  fig.Open({At(0, 1, 0), At(1, 0, 0), p});
  const Tangents t = Compute(p);
  EXPECT_EQ(t.result, 1);
  ExpectVector(t.it, 0x1.c9f25cp-1f, -0x1.c9f25cp-2f, 0);
  ExpectVector(t.ot, 0x1.c9f25cp-1f, -0x1.c9f25cp-2f, 0);
  ExpectNormals(t, 0, 0, 1);
}

TEST_F(SmoothEnd, NoNextMirrorWithinTheLimitIsKept) {
  SegmentCP* p = At(0, 0, 0, kSmooth);
  fig.Open({At(3, 1, 0), At(1, 0, 0), p});
  const Tangents t = Compute(p);
  EXPECT_EQ(t.result, 1);
  ExpectVector(t.it, 0x1.e5b9dp-1f, -0x1.43d136p-2f, 0);
  ExpectVector(t.ot, 0x1.e5b9dp-1f, -0x1.43d136p-2f, 0);
  ExpectNormals(t, 0, 0, 0x1.43d138p-2f);
}

TEST_F(SmoothEnd, CollinearEvenlySpacedEndIsNotLimited) {
  SegmentCP* p = At(0, 0, 0, kSmooth);
  fig.Open({p, At(-1, 0, 0), At(-2, 0, 0)});
  const Tangents t = Compute(p);
  EXPECT_EQ(t.result, 1);
  ExpectVector(t.it, 1, 0, 0);
  ExpectVector(t.ot, 1, 0, 0);
  ExpectNormals(t, 0, 0, 0);
}

TEST_F(SmoothEnd, PointOnItsNextGivesZeroTangentsAndNormals) {
  SegmentCP* p = At(1, 1, 0, kSmooth);
  fig.Open({p, At(1, 1, 0), At(0, -1, 0)});
  const Tangents t = Compute(p);
  EXPECT_EQ(t.result, 1);
  ExpectVector(t.it, 0, 0, 0);
  ExpectVector(t.ot, 0, 0, 0);
  ExpectNormals(t, 0, 0, 0);
}

TEST_F(SmoothEnd, OnlyTheSmoothEndCasesFetchTheSecondNeighbour) {
  SegmentCP* peakedEnd = At(0, 0, 0);
  SegmentCP* second = At(0, -1, 0);
  fig.Open({peakedEnd, At(-1, 0, 0), second});
  Compute(peakedEnd);
  EXPECT_FALSE(second->IsScreenpCached());
  peakedEnd->OnSmooth();
  Compute(peakedEnd);
  EXPECT_TRUE(second->IsScreenpCached());
}

// --- peaked points and short ends ---------------------------------------------

using HalfChord = GetTangentsTest;

TEST_F(HalfChord, PeakedPointTakesHalfChordsAndTheirCross) {
  SegmentCP* p = At(0, 0, 0);
  fig.Open({At(1, 0, 0), p, At(-3, 0, 0)});
  Tangents t = Compute(p);
  EXPECT_EQ(t.result, 1);
  ExpectVector(t.it, 1.5f, 0, 0);
  ExpectVector(t.ot, 0.5f, 0, 0);
  ExpectNormals(t, 0, 0, 0);
}

TEST_F(HalfChord, PeakedBend) {
  SegmentCP* p = At(0, 0, 0);
  fig.Open({At(1, 1, 0), p, At(-1, 1, 0)});
  const Tangents t = Compute(p);
  EXPECT_EQ(t.result, 1);
  ExpectVector(t.it, 0.5f, -0.5f, 0);
  ExpectVector(t.ot, 0.5f, 0.5f, 0);
  ExpectNormals(t, 0, 0, 0.5f);
}

TEST_F(HalfChord, ClosedSplineOfTwoPeakedPoints) {
  SegmentCP* p = At(0, 0, 0);
  fig.Closed({p, At(2, 0, 0)});
  const Tangents t = Compute(p);
  EXPECT_EQ(t.result, 1);
  ExpectVector(t.it, -1, 0, 0);
  ExpectVector(t.ot, 1, 0, 0);
  ExpectNormals(t, 0, 0, 0);
}

TEST_F(HalfChord, OpenTwoPointSmoothSplineTakesHalfChordsAtBothEnds) {
  SegmentCP* first = At(0, 0, 0, kSmooth);
  SegmentCP* last = At(2, 4, 0, kSmooth);
  fig.Open({first, last});
  const Tangents onlyNext = Compute(first);
  EXPECT_EQ(onlyNext.result, 0);
  ExpectVector(onlyNext.it, -1, -2, 0);
  ExpectVector(onlyNext.ot, -1, -2, 0);
  ExpectUntouched(onlyNext.inNormal);
  const Tangents onlyPrev = Compute(last);
  EXPECT_EQ(onlyPrev.result, 0);
  ExpectVector(onlyPrev.it, -1, -2, 0);
  ExpectVector(onlyPrev.ot, -1, -2, 0);
  ExpectUntouched(onlyPrev.outNormal);
}

TEST_F(HalfChord, SmoothEndWithoutSecondNeighbourIsAShortEnd) {
  SegmentCP* p = At(0, 0, 0, kSmooth);
  fig.Open({At(0, 4, 0), p});
  const Tangents t = Compute(p);
  EXPECT_EQ(t.result, 0);
  ExpectVector(t.it, 0, 2, 0);
  ExpectVector(t.ot, 0, 2, 0);
}

TEST_F(HalfChord, LonePointCopiesItsInTangentIntoTheOutTangent) {
  SegmentCP* p = At(5, 5, 5, kSmooth);
  fig.Open({p});
  Vector it(1.0f, -2.0f, 3.0f);
  Vector ot(kNaN, kNaN, kNaN);
  Vector n(kNaN, kNaN, kNaN);
  Vector m(kNaN, kNaN, kNaN);
  EXPECT_EQ(p->GetTangents(&it, &ot, &n, &m, 1), 0);
  ExpectVector(it, 1, -2, 3);
  ExpectVector(ot, 1, -2, 3);
  ExpectUntouched(n);
  ExpectUntouched(m);
}

// --- orientation on a bend ----------------------------------------------------

TEST_F(GetTangentsTest, NormalSidesOnALeftBend) {
  // Counter-clockwise seen from +z in the direction of travel (next toward
  // prev): the spline runs first to last clockwise.
  SegmentCP* cps[4] = {At(0, 2, 0, kSmooth), At(1, 1.75f, 0, kSmooth), At(1.75f, 1, 0, kSmooth),
                       At(2, 0, 0, kSmooth)};
  fig.Open({cps[0], cps[1], cps[2], cps[3]});
  EXPECT_LT(Compute(cps[1]).inNormal.z, 0.0f);  // smooth interior
  EXPECT_LT(Compute(cps[0]).inNormal.z, 0.0f);  // smooth, no prev
  EXPECT_GT(Compute(cps[3]).inNormal.z, 0.0f);  // smooth, no next
  cps[1]->OffSmooth();
  EXPECT_GT(Compute(cps[1]).inNormal.z, 0.0f);  // peaked
}

// --- position space -----------------------------------------------------------

TEST_F(GetTangentsTest, AnyNonzeroScreenReadsScreenPositions) {
  // The screen doubles x; screen = 0 reads the model positions.
  fig.SetScreen(test::MakeMatrix({2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}),
                test::MakeMatrix({0.5f, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}));
  SegmentCP* p = At(0, 0, 0, kSmooth);
  fig.Open({At(1, 1, 0), p, At(-1, 1, 0)});
  for (int screen : {1, 5, -1}) {
    SCOPED_TRACE(screen);
    const Tangents t = Compute(p, screen);
    ExpectVector(t.it, 2, 0, 0);
    ExpectNormals(t, 0, 0, -0x1.c9f25cp-2f);  // -(1/sqrt 5)
  }
  const Tangents model = Compute(p, 0);
  ExpectVector(model.it, 1, 0, 0);
  ExpectNormals(model, 0, 0, -0x1.6a09e6p-1f);
}

TEST_F(GetTangentsTest, NeighbourInAStackUsesTheHeadPosition) {
  SegmentCP* head = At(-3, 0, 0);
  SegmentCP* member = At(100, 100, 100);
  TestFigure::Stack({head, member});
  SegmentCP* p = At(0, 0, 0, kSmooth);
  fig.Open({At(1, 0, 0), p, member});
  fig.Open({head});
  for (int screen : {1, 0}) {
    const Tangents t = Compute(p, screen);
    ExpectVector(t.it, 3, 0, 0);
    ExpectVector(t.ot, 1, 0, 0);
  }
}

}  // namespace
}  // namespace splinecore
