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

#include <limits>
#include <vector>

#include "figure_test.h"

namespace splinecore {
namespace {

using test::ExpectVector;
using test::TestFigure;

constexpr std::uint32_t S = cpflag::smooth;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
const Vector kUnwritten(kNaN, kNaN, kNaN);

// Outputs of one GetTangents call; unwritten outputs stay NaN.
struct Tangents {
  Vector it = kUnwritten, ot = kUnwritten, inNormal = kUnwritten, outNormal = kUnwritten;
  int result = -1;
};

Tangents Compute(SegmentCP* cp, int screen = 1) {
  Tangents t;
  t.result = cp->GetTangents(&t.it, &t.ot, &t.inNormal, &t.outNormal, screen);
  return t;
}

struct At {
  float x, y, z;
  std::uint32_t flags = 0;
};

// One control point of a spline laid out as `spline`; `normal` is expected
// in both normal outputs (kUnwritten: neither is written).
struct Case {
  const char* name;
  std::vector<At> spline;
  bool closed;
  int at;
  int result;
  Vector it, ot, normal;
};

// -sqrt(1/2); K = (2, -1, 0)/sqrt(5); the mirror (3, -1, 0)/sqrt(10).
constexpr float kHalfRoot2 = 0x1.6a09e6p-1f;
const Vector kToK(0x1.c9f25cp-1f, -0x1.c9f25cp-2f, 0);
const Vector kMirror(0x1.e5b9dp-1f, -0x1.43d136p-2f, 0);

const Case kCases[] = {
    // Smooth interior: the chord B - A shared by the segment lengths.
    {"interior, shared by lengths", {{1, 0, 0}, {0, 0, 0, S}, {-3, 0, 0}}, false, 1, 1, {3, 0, 0}, {1, 0, 0},
     {0, 0, 0}},
    {"interior, even: P - B", {{2, 3, 4}, {1, 1, 1, S}, {0, -1, -2}}, false, 1, 1, {1, 2, 3}, {1, 2, 3},
     {0, 0, 0}},
    {"interior, normal toward prev x chord", {{1, 1, 0}, {0, 0, 0, S}, {-1, 1, 0}}, false, 1, 1, {1, 0, 0},
     {1, 0, 0}, {0, 0, -kHalfRoot2}},
    {"interior, neighbours meet", {{2, 1, 0}, {0, 0, 0, S}, {2, 1, 0}}, false, 1, 0, {0, 0, 0}, {0, 0, 0},
     kUnwritten},
    {"interior on its prev: A - B", {{1, 2, 3}, {1, 2, 3, S}, {-1, 0, 0}}, false, 1, 1, {2, 2, 3},
     {0, 0, 0}, {0, 0, 0}},
    {"closed smooth pair: neighbours meet", {{0, 0, 0, S}, {2, 0, 0, S}}, true, 0, 0, {0, 0, 0},
     {0, 0, 0}, kUnwritten},
    // Smooth open ends: the mirror of the second neighbour, limited to K.
    {"no prev, (0,-1,0) leans past K", {{0, 0, 0, S}, {-1, 0, 0}, {0, -1, 0}}, false, 0,
     1, kToK, kToK, {0, 0, 1}},
    {"no prev, limiting keeps the mirrored length 2", {{0, 0, 0, S}, {-2, 0, 0}, {0, -1, 0}}, false, 0, 1,
     {0x1.f0b686p+0f, -0x1.f0b686p-2f, 0}, {0x1.f0b686p+0f, -0x1.f0b686p-2f, 0}, {0, 0, 1}},
    {"no prev, within the limit", {{0, 0, 0, S}, {-1, 0, 0}, {-3, -1, 0}}, false, 0, 1, kMirror, kMirror,
     {0, 0, 0x1.43d138p-2f}},
    {"no next, limited", {{0, 1, 0}, {1, 0, 0}, {0, 0, 0, S}}, false, 2, 1, kToK, kToK, {0, 0, 1}},
    {"no next, within the limit", {{3, 1, 0}, {1, 0, 0}, {0, 0, 0, S}}, false, 2, 1, kMirror, kMirror,
     {0, 0, 0x1.43d138p-2f}},
    {"collinear evenly spaced end", {{0, 0, 0, S}, {-1, 0, 0}, {-2, 0, 0}}, false, 0, 1, {1, 0, 0}, {1, 0, 0},
     {0, 0, 0}},
    {"end on its next", {{1, 1, 0, S}, {1, 1, 0}, {0, -1, 0}}, false, 0, 1, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}},
    // Peaked points and short ends: half chords.
    {"peaked", {{1, 0, 0}, {0, 0, 0}, {-3, 0, 0}}, false, 1, 1, {1.5f, 0, 0}, {0.5f, 0, 0}, {0, 0, 0}},
    {"peaked bend", {{1, 1, 0}, {0, 0, 0}, {-1, 1, 0}}, false, 1, 1, {0.5f, -0.5f, 0}, {0.5f, 0.5f, 0},
     {0, 0, 0.5f}},
    {"closed pair of peaked points", {{0, 0, 0}, {2, 0, 0}}, true, 0, 1, {-1, 0, 0}, {1, 0, 0}, {0, 0, 0}},
    {"smooth pair, first", {{0, 0, 0, S}, {2, 4, 0, S}}, false, 0, 0, {-1, -2, 0}, {-1, -2, 0}, kUnwritten},
    {"smooth pair, last", {{0, 0, 0, S}, {2, 4, 0, S}}, false, 1, 0, {-1, -2, 0}, {-1, -2, 0}, kUnwritten},
    {"no second neighbour", {{0, 4, 0}, {0, 0, 0, S}}, false, 1, 0, {0, 2, 0}, {0, 2, 0},
     kUnwritten},
};

TEST(GetTangents, EveryCaseOfTheRule) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.name);
    TestFigure fig;
    std::vector<SegmentCP*> cps;
    for (const At& a : c.spline) cps.push_back(fig.NewCP(Vector(a.x, a.y, a.z), a.flags));
    test::LinkSpline(fig, cps, c.closed);
    const Tangents t = Compute(cps[c.at]);
    EXPECT_EQ(t.result, c.result);
    ExpectVector(t.it, c.it);
    ExpectVector(t.ot, c.ot);
    ExpectVector(t.inNormal, c.normal);
    ExpectVector(t.outNormal, c.normal);
  }
}

class GetTangentsTest : public ::testing::Test {
 protected:
  TestFigure fig;
  SegmentCP* P(float x, float y, float z, std::uint32_t f = 0) { return fig.NewCP(Vector(x, y, z), f); }
};

TEST_F(GetTangentsTest, HookReturnsZeroAndWritesNothing) {
  HookSegmentCP* hook = fig.NewHook(0.5f, S);
  fig.Open({hook});
  const Tangents t = Compute(hook);
  EXPECT_EQ(t.result, 0);
  for (const Vector& v : {t.it, t.ot, t.inNormal, t.outNormal}) ExpectVector(v, kUnwritten);
}

TEST_F(GetTangentsTest, NormalsAreOptional) {
  SegmentCP* p = P(0, 0, 0, S);
  fig.Open({P(1, 1, 0), p, P(-1, 1, 0)});
  Vector it = kUnwritten, ot = kUnwritten;
  EXPECT_EQ(p->GetTangents(&it, &ot, nullptr, nullptr, 1), 1);
  ExpectVector(it, 1, 0, 0);
  ExpectVector(ot, 1, 0, 0);
}

TEST_F(GetTangentsTest, OnlyTheSmoothEndCasesFetchTheSecondNeighbour) {
  SegmentCP* peakedEnd = P(0, 0, 0);
  SegmentCP* second = P(0, -1, 0);
  fig.Open({peakedEnd, P(-1, 0, 0), second});
  Compute(peakedEnd);
  EXPECT_FALSE(second->IsScreenpCached());
  peakedEnd->OnSmooth();
  Compute(peakedEnd);
  EXPECT_TRUE(second->IsScreenpCached());
}

TEST_F(GetTangentsTest, LonePointCopiesItsInTangentIntoTheOutTangent) {
  SegmentCP* p = P(5, 5, 5, S);
  fig.Open({p});
  Tangents t;
  t.it = Vector(1.0f, -2.0f, 3.0f);
  EXPECT_EQ(p->GetTangents(&t.it, &t.ot, &t.inNormal, &t.outNormal, 1), 0);
  ExpectVector(t.it, 1, -2, 3);
  ExpectVector(t.ot, 1, -2, 3);
  ExpectVector(t.inNormal, kUnwritten);
  ExpectVector(t.outNormal, kUnwritten);
}

TEST_F(GetTangentsTest, NormalSidesOnALeftBend) {
  // Counter-clockwise seen from +z in the direction of travel (next toward
  // prev): the spline runs first to last clockwise.
  SegmentCP* cps[4] = {P(0, 2, 0, S), P(1, 1.75f, 0, S), P(1.75f, 1, 0, S), P(2, 0, 0, S)};
  fig.Open({cps[0], cps[1], cps[2], cps[3]});
  EXPECT_LT(Compute(cps[1]).inNormal.z, 0.0f);  // smooth interior
  EXPECT_LT(Compute(cps[0]).inNormal.z, 0.0f);  // smooth, no prev
  EXPECT_GT(Compute(cps[3]).inNormal.z, 0.0f);  // smooth, no next
  cps[1]->OffSmooth();
  EXPECT_GT(Compute(cps[1]).inNormal.z, 0.0f);  // peaked
}

TEST_F(GetTangentsTest, AnyNonzeroScreenReadsScreenPositions) {
  // The screen doubles x; screen = 0 reads the model positions.
  fig.SetScreen(test::MakeMatrix({2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}),
                test::MakeMatrix({0.5f, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}));
  SegmentCP* p = P(0, 0, 0, S);
  fig.Open({P(1, 1, 0), p, P(-1, 1, 0)});
  for (int screen : {1, 5, -1}) {
    SCOPED_TRACE(screen);
    const Tangents t = Compute(p, screen);
    ExpectVector(t.it, 2, 0, 0);
    ExpectVector(t.inNormal, 0, 0, -0x1.c9f25cp-2f);  // -(1/sqrt 5)
    ExpectVector(t.outNormal, 0, 0, -0x1.c9f25cp-2f);
  }
  const Tangents model = Compute(p, 0);
  ExpectVector(model.it, 1, 0, 0);
  ExpectVector(model.inNormal, 0, 0, -kHalfRoot2);
  ExpectVector(model.outNormal, 0, 0, -kHalfRoot2);
}

TEST_F(GetTangentsTest, NeighbourInAStackUsesTheHeadPosition) {
  SegmentCP* head = P(-3, 0, 0);
  SegmentCP* member = P(100, 100, 100);
  TestFigure::Stack({head, member});
  SegmentCP* p = P(0, 0, 0, S);
  fig.Open({P(1, 0, 0), p, member});
  fig.Open({head});
  for (int screen : {1, 0}) {
    const Tangents t = Compute(p, screen);
    ExpectVector(t.it, 3, 0, 0);
    ExpectVector(t.ot, 1, 0, 0);
  }
}

}  // namespace
}  // namespace splinecore
