// Convert: ordinary control points through a non-identity view, the turning
// and scaling paths, and hooks (partners, offsets, snapping, interpolation).
#include <gtest/gtest.h>

#include <memory>

#include "marrow/marrow.h"
#include "test_figure.h"

namespace splinecore {
namespace {

using test::MakeMatrix;
using test::TestFigure;

const Vector kSentinel(-77, -77, -77);

class ConvertTest : public ::testing::Test {
 protected:
  void TearDown() override {
    figure_.reset();
    EXPECT_EQ(MarrowLiveBlocks(), live_);
  }
  TestFigure& F() { return *figure_; }
  SegmentCP* CP(float x, float y, float z = 0) {
    SegmentCP* cp = F().NewCP(Vector(x, y, z));
    cp->indelta = Delta{0, 0, 1};
    cp->outdelta = Delta{0, 0, 1};
    return cp;
  }
  HookSegmentCP* Hook(float s) {
    HookSegmentCP* h = F().NewHook(s);
    h->indelta = Delta{0, 0, 1};
    h->outdelta = Delta{0, 0, 1};
    return h;
  }
  // Screen space turned a quarter about z, scaled by 2 and moved:
  // (x,y,z) -> (10 - 2y, 20 + 2x, 30 + 2z), with its exact inverse. Every
  // value below is dyadic, so screen-space arithmetic is exact and the
  // results equal the model-space ones.
  void TurnedView() {
    F().SetScreen(MakeMatrix({0, -2, 0, 10, 2, 0, 0, 20, 0, 0, 2, 30}),
                  MakeMatrix({0, 0.5f, 0, -10, -0.5f, 0, 0, 5, 0, 0, 0.5f, -15}));
  }

  long live_ = MarrowLiveBlocks();
  std::unique_ptr<TestFigure> figure_ = std::make_unique<TestFigure>();
};

// --- Ordinary control points ---------------------------------------------------------------

// Peaked point at the origin, next (-2,0,0), prev (0,2,0): half chords
// it = (1,0,0), ot = (0,1,0), normal it x ot = (0,0,1).
TEST_F(ConvertTest, PitchTurnsInScreenSpaceAndComesBackToModelSpace) {
  TurnedView();
  SegmentCP* prev = CP(0, 2);
  SegmentCP* cp = CP(0, 0);
  F().Open({prev, cp, CP(-2, 0)});
  cp->indelta = Delta{90, 0, 1};  // turned onto the normal
  cp->Convert();
  EXPECT_EQ(cp->it == Vector(0, 0, 1), 1);
  EXPECT_EQ(cp->ot == Vector(0, 1, 0), 1);
}

TEST_F(ConvertTest, MagnitudesAloneScaleWithoutTurning) {
  TurnedView();
  SegmentCP* cp = CP(0, 0);
  F().Open({CP(0, 2), cp, CP(-2, 0)});
  cp->indelta = Delta{0, -0.0f, 2};
  cp->Convert();
  EXPECT_EQ(cp->it == Vector(2, 0, 0), 1);
  EXPECT_EQ(cp->ot == Vector(0, 1, 0), 1);
}

TEST_F(ConvertTest, NoNormalMeansNeitherTurnNorScale) {
  // Only a next: GetTangents gives it = ot = (P - next)/2 and returns 0.
  SegmentCP* cp = CP(0, 0);
  F().Open({cp, CP(-2, 0)});
  cp->indelta = Delta{0, 0, 2};
  cp->outdelta = Delta{0, 5, 1};
  cp->Convert();
  EXPECT_EQ(cp->it == Vector(1, 0, 0), 1);
  EXPECT_EQ(cp->ot == Vector(1, 0, 0), 1);
}

// --- Hooks ------------------------------------------------------------------------------------

// A hook at s on the segment from carrier C (0,0,0) to N (3,0,0). Partner X
// sits on C (top of C's stack) with screen handle offsets A = B = (3,0,0)
// (its only neighbour is next at (-18,0,0): it = ot = (9,0,0)); partner Y
// sits on N with offsets (0,3,0) (next at (3,-18,0)).
class HookConvertTest : public ConvertTest {
 protected:
  void Build(float s, bool withPrev, Vector neighbour = Vector(10, 10, 0)) {
    carrier = CP(0, 0);
    end = CP(3, 0);
    x = CP(0, 0);
    y = CP(3, 0);
    hook = Hook(s);
    F().Open({carrier, end});
    F().Open({x, CP(-18, 0)});
    F().Open({y, CP(3, -18)});
    SegmentCP* n = CP(neighbour.x, neighbour.y, neighbour.z);
    if (withPrev) {
      F().Open({n, hook});
    } else {
      F().Open({hook, n});
    }
    TestFigure::Stack({x, carrier, hook});
    TestFigure::Stack({y, end});
  }
  SegmentCP* carrier = nullptr;
  SegmentCP* end = nullptr;
  SegmentCP* x = nullptr;
  SegmentCP* y = nullptr;
  HookSegmentCP* hook = nullptr;
};

TEST_F(HookConvertTest, InterpolatesThePartnersOffsetsAtS) {
  TurnedView();
  Build(0.5f, true);
  hook->Convert();
  EXPECT_EQ(hook->it == Vector(1.5f, 1.5f, 0), 1);
  EXPECT_EQ(hook->ot == Vector(1.5f, 1.5f, 0), 1);
}

TEST_F(HookConvertTest, WithoutPrevTheTangentIsReversed) {
  TurnedView();
  Build(0.5f, false);
  hook->Convert();
  EXPECT_EQ(hook->it == Vector(-1.5f, -1.5f, 0), 1);
  EXPECT_EQ(hook->ot == Vector(-1.5f, -1.5f, 0), 1);
}

TEST_F(HookConvertTest, InOffsetPointingAwayFromTheNeighbourIsReversed) {
  // Give X a prev at (0,18,0): its out-offset becomes (0,3,0) while its
  // in-offset stays (3,0,0); the hook's neighbour lies toward -x.
  Build(0.5f, true, Vector(-10, 10, 0));
  SegmentCP* xPrev = CP(0, 18);
  xPrev->next = x;
  x->prev = xPrev;
  F().Register(xPrev);
  F().Unregister(x);
  hook->Convert();
  // T1 = -B = (-3,0,0), T2 = (0,3,0): T = (-1.5,1.5,0).
  EXPECT_EQ(hook->it == Vector(-1.5f, 1.5f, 0), 1);
}

TEST_F(HookConvertTest, SnapsAndStoresS) {
  Build(0.7f, true);
  hook->Convert();
  EXPECT_EQ(hook->s, 0.75f);
  // (3,0,0) + (-3,3,0) * 0.75
  EXPECT_EQ(hook->it == Vector(0.75f, 2.25f, 0), 1);
  hook->SetS(0.6f);
  hook->Convert();
  EXPECT_EQ(hook->s, 0.5f);
  EXPECT_EQ(hook->it == Vector(1.5f, 1.5f, 0), 1);
}

TEST_F(HookConvertTest, WithoutPartnersNothingIsWritten) {
  carrier = CP(0, 0);
  end = CP(3, 0);
  hook = Hook(0.5f);
  F().Open({carrier, end});
  F().Open({CP(5, 5), hook});
  TestFigure::Stack({carrier, hook});
  hook->it = kSentinel;
  hook->ot = kSentinel;
  hook->Convert();
  EXPECT_EQ(hook->it == kSentinel, 1);
  EXPECT_EQ(hook->ot == kSentinel, 1);
  // A partner on the carrier's side only: the second is missing.
  SegmentCP* above = CP(0, 0);
  F().Open({above, CP(-18, 0)});
  TestFigure::Stack({above, carrier, hook});
  hook->Convert();
  EXPECT_EQ(hook->it == kSentinel, 1);
}

TEST_F(HookConvertTest, HookWithoutNeighbourOrCarrierNextIsLeftAlone) {
  carrier = CP(0, 0);
  x = CP(0, 0);
  hook = Hook(0.5f);
  F().Open({carrier});
  F().Open({x});
  F().Open({hook});
  TestFigure::Stack({x, carrier, hook});
  hook->it = kSentinel;
  hook->Convert();  // no spline neighbour
  EXPECT_EQ(hook->it == kSentinel, 1);
  SegmentCP* n = CP(1, 1);
  F().Unregister(hook);
  F().Open({n, hook});
  hook->Convert();  // carrier without next
  EXPECT_EQ(hook->it == kSentinel, 1);
}

TEST_F(HookConvertTest, FirstPartnerBelowTheRunWhenTheCarrierTopsItsStack) {
  carrier = CP(0, 0);
  end = CP(3, 0);
  x = CP(0, 0);
  y = CP(3, 0);
  hook = Hook(0.5f);
  HookSegmentCP* other = Hook(0.25f);
  F().Open({carrier, end});
  F().Open({x, CP(-18, 0)});
  F().Open({y, CP(3, -18)});
  F().Open({CP(10, 10), hook});
  F().Open({other});
  TestFigure::Stack({carrier, hook, other, x});  // X below the run
  TestFigure::Stack({y, end});
  hook->Convert();
  EXPECT_EQ(hook->it == Vector(1.5f, 1.5f, 0), 1);
}

TEST_F(HookConvertTest, SecondPartnerSkipsHooksAboveTheCarriersNext) {
  Build(0.5f, true);
  // A hook of Y between Y and N: the conversion passes over it to Y, while
  // the getters take it as it is (and so convert it).
  HookSegmentCP* between = Hook(0.5f);
  F().Open({between});
  TestFigure::Stack({y, between, end});
  hook->Getit();
  EXPECT_EQ(hook->it == Vector(1.5f, 1.5f, 0), 1);
  EXPECT_TRUE(between->IsConverted());
}

TEST_F(HookConvertTest, FirstPartnerIsTheCarriersStackPrevEvenAHook) {
  Build(0.5f, true);
  // Z above C with its own hook HZ between them: HZ is C's stackPrev and so
  // the first partner. HZ has no neighbour and its carrier no next, so its
  // tangents and offsets are zero: T = (0,0,0) + (0,3,0) * 0.5.
  SegmentCP* z = CP(0, 0);
  HookSegmentCP* hz = Hook(0.5f);
  F().Open({z});
  F().Open({hz});
  hz->it = Vector(0, 0, 0);
  hz->ot = Vector(0, 0, 0);
  TestFigure::Stack({z, hz, carrier, hook, x});
  hook->Getit();
  EXPECT_TRUE(hz->IsConverted());
  EXPECT_EQ(hook->it == Vector(0, 1.5f, 0), 1);
}

TEST_F(HookConvertTest, InterpolationRoundsEachOfItsThreeSteps) {
  // Partner tangents chosen so that the offsets are u = float(69.3125 * k)
  // = 0x1.71aaacp+4 and v = float(1.1875 * k) = 0x1.955556p-2 (k the float
  // third), along y. At s = 0.75, float(u + float(float(v - u) * 0.75)) =
  // 0x1.84aab0p+2, while one rounding of u + (v - u) * 0.75 gives
  // 0x1.84aaacp+2 (python3 with struct float32 rounding).
  carrier = CP(0, 0);
  end = CP(3, 0);
  x = CP(0, 0);
  y = CP(3, 0);
  hook = Hook(0.75f);
  F().Open({carrier, end});
  F().Open({x, CP(0, -138.625f)});  // it = (0, 69.3125, 0)
  F().Open({y, CP(3, -2.375f)});    // it = (0, 1.1875, 0)
  F().Open({CP(1.5f, 100), hook});
  TestFigure::Stack({x, carrier, hook});
  TestFigure::Stack({y, end});
  hook->Convert();
  EXPECT_EQ(hook->it == Vector(0, 0x1.84aab0p+2f, 0), 1) << hook->it.y;
}

}  // namespace
}  // namespace splinecore
