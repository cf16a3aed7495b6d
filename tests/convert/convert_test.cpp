// Convert: ordinary control points through a non-identity view, the turning
// and scaling paths, and hooks (partners, offsets, snapping, interpolation).
#include "convert_figure.h"

namespace splinecore {
namespace {

using test::ExpectVector;
using test::TestFigure;
using test::kSentinel;
using ConvertTest = test::ConvertFigure;

// --- Ordinary control points ---------------------------------------------------------------

// Peaked point at the origin, next (-2,0,0), prev (0,2,0): half chords
// it = (1,0,0), ot = (0,1,0), normal it x ot = (0,0,1).
TEST_F(ConvertTest, PitchTurnsAndMagnitudeScalesInScreenSpaceBackToModelSpace) {
  TurnedView();
  SegmentCP* turned = CP(0, 0);
  SegmentCP* scaled = CP(0, 0);
  f.Open({CP(0, 2), turned, CP(-2, 0)});
  f.Open({CP(0, 2), scaled, CP(-2, 0)});
  turned->indelta = Delta{90, 0, 1};  // onto the normal
  scaled->indelta = Delta{0, -0.0f, 2};
  turned->Convert();
  scaled->Convert();
  ExpectVector(turned->it, 0, 0, 1);
  ExpectVector(turned->ot, 0, 1, 0);
  ExpectVector(scaled->it, 2, 0, 0);
  ExpectVector(scaled->ot, 0, 1, 0);
}

TEST_F(ConvertTest, NoNormalMeansNeitherTurnNorScale) {
  // Only a next: GetTangents gives it = ot = (P - next)/2 and returns 0.
  SegmentCP* cp = CP(0, 0);
  f.Open({cp, CP(-2, 0)});
  cp->indelta = Delta{0, 0, 2};
  cp->outdelta = Delta{0, 5, 1};
  cp->Convert();
  ExpectVector(cp->it, 1, 0, 0);
  ExpectVector(cp->ot, 1, 0, 0);
}

// --- Hooks ------------------------------------------------------------------------------------

TEST_F(ConvertTest, HookInterpolatesThePartnersOffsetsAtSAndReversesWithoutPrev) {
  TurnedView();
  Build(0.5f, true);
  hook->Convert();
  ExpectVector(hook->it, 1.5f, 1.5f, 0);
  ExpectVector(hook->ot, 1.5f, 1.5f, 0);
  HookSegmentCP* withPrev = hook;
  Build(0.5f, false);  // a second, separate figure in the same TestFigure
  hook->Convert();
  ExpectVector(hook->it, -1.5f, -1.5f, 0);
  ExpectVector(hook->ot, -1.5f, -1.5f, 0);
  ExpectVector(withPrev->it, 1.5f, 1.5f, 0);
}

TEST_F(ConvertTest, HookInOffsetPointingAwayFromTheNeighbourIsReversed) {
  // Give X a prev at (0,18,0): its out-offset becomes (0,3,0) while its
  // in-offset stays (3,0,0); the hook's neighbour lies toward -x.
  Build(0.5f, true, Vector(-10, 10, 0));
  SegmentCP* xPrev = CP(0, 18);
  xPrev->next = x;
  x->prev = xPrev;
  f.Register(xPrev);
  f.Unregister(x);
  hook->Convert();
  // T1 = -B = (-3,0,0), T2 = (0,3,0): T = (-1.5,1.5,0).
  ExpectVector(hook->it, -1.5f, 1.5f, 0);
}

TEST_F(ConvertTest, HookSnapsAndStoresS) {
  Build(0.7f);
  hook->Convert();
  EXPECT_EQ(hook->s, 0.75f);
  ExpectVector(hook->it, 0.75f, 2.25f, 0);  // (3,0,0) + (-3,3,0) * 0.75
  hook->SetS(0.6f);
  hook->Convert();
  EXPECT_EQ(hook->s, 0.5f);
  ExpectVector(hook->it, 1.5f, 1.5f, 0);
}

TEST_F(ConvertTest, HookWithoutPartnersIsNotWritten) {
  BuildPartnerless(Vector(5, 5, 0));
  hook->it = hook->ot = kSentinel;
  hook->Convert();
  ExpectVector(hook->it, kSentinel);
  ExpectVector(hook->ot, kSentinel);
  // A partner on the carrier's side only: the second is missing.
  SegmentCP* above = CP(0, 0);
  f.Open({above, CP(-18, 0)});
  TestFigure::Stack({above, carrier, hook});
  hook->Convert();
  ExpectVector(hook->it, kSentinel);
}

TEST_F(ConvertTest, HookWithoutNeighbourOrCarrierNextIsLeftAlone) {
  SegmentCP* carrier = CP(0, 0);
  SegmentCP* x = CP(0, 0);
  HookSegmentCP* hook = Hook(0.5f);
  for (SegmentCP* c : {carrier, x, static_cast<SegmentCP*>(hook)}) f.Open({c});
  TestFigure::Stack({x, carrier, hook});
  hook->it = kSentinel;
  hook->Convert();  // no spline neighbour
  ExpectVector(hook->it, kSentinel);
  f.Unregister(hook);
  f.Open({CP(1, 1), hook});
  hook->Convert();  // carrier without next
  ExpectVector(hook->it, kSentinel);
}

TEST_F(ConvertTest, HookFindsItsFirstPartnerBelowTheRunWhenTheCarrierTopsItsStack) {
  Build(0.5f);
  HookSegmentCP* other = Hook(0.25f);
  f.Open({other});
  TestFigure::Stack({carrier, hook, other, x});  // X below the run
  hook->Convert();
  ExpectVector(hook->it, 1.5f, 1.5f, 0);
}

TEST_F(ConvertTest, HookSecondPartnerSkipsHooksAboveTheCarriersNext) {
  Build(0.5f);
  // A hook of Y between Y and N: the conversion passes over it to Y, while
  // the getters take it as it is (and so convert it).
  HookSegmentCP* between = Hook(0.5f);
  f.Open({between});
  TestFigure::Stack({y, between, end});
  hook->Getit();
  ExpectVector(hook->it, 1.5f, 1.5f, 0);
  EXPECT_TRUE(between->IsConverted());
}

TEST_F(ConvertTest, HookFirstPartnerIsTheCarriersStackPrevEvenAHook) {
  Build(0.5f);
  // Z above C with its own hook HZ between them: HZ is C's stackPrev and so
  // the first partner. HZ has no neighbour and its carrier no next, so its
  // tangents and offsets are zero: T = (0,0,0) + (0,3,0) * 0.5.
  SegmentCP* z = CP(0, 0);
  HookSegmentCP* hz = Hook(0.5f);
  f.Open({z});
  f.Open({hz});
  hz->it = hz->ot = Vector(0, 0, 0);
  TestFigure::Stack({z, hz, carrier, hook, x});
  hook->Getit();
  EXPECT_TRUE(hz->IsConverted());
  ExpectVector(hook->it, 0, 1.5f, 0);
}

TEST_F(ConvertTest, HookInterpolationRoundsEachOfItsThreeSteps) {
  BuildRoundingFigure();
  hook->Convert();
  ExpectVector(hook->it, 0, kThreeRoundings, 0);
}

}  // namespace
}  // namespace splinecore
