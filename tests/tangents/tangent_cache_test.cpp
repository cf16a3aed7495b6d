// The tangent cache: when the model, screen and muscle getters convert and
// when they serve the stored value, hooks with missing partners, and the
// muscle handle points in every order of calls.
#include <gtest/gtest.h>

#include "figure_test.h"

namespace splinecore {
namespace {

using test::ExpectVector;
using test::FixedEffect;
using test::kSentinel;
using test::MakeMatrix;
using test::TestFigure;

class TangentCacheTest : public test::FigureTest {
 protected:
  // A peaked control point with deltas that neither turn nor scale.
  SegmentCP* CP(float x, float y, float z = 0) { return test::Neutral(f.NewCP(Vector(x, y, z))); }
  // Open spline a(0,0,0) - b(2,0,0) - c(6,0,0), travel from c to a: b's
  // half-chord tangents are it = (b - c)/2 = (-2,0,0), ot = (a - b)/2 = (-1,0,0).
  void Line() { f.Open({a_ = CP(0, 0), b_ = CP(2, 0), c_ = CP(6, 0)}); }

  SegmentCP *a_ = nullptr, *b_ = nullptr, *c_ = nullptr;
};

// --- Model tangents ---------------------------------------------------------------------

TEST_F(TangentCacheTest, ModelTangentsConvertOnceUntilTouched) {
  Line();
  ExpectVector(b_->Getit(), Vector(-2, 0, 0));
  EXPECT_TRUE(b_->IsConverted());
  // A second query returns the stored value.
  b_->it = kSentinel;
  EXPECT_EQ(&b_->Getit(), &b_->it);
  ExpectVector(b_->it, kSentinel);
  // Getot after Getit revalidates positions (seen in c's stamp) but does not convert.
  b_->ot = kSentinel;
  c_->Touch(0);
  ExpectVector(b_->Getot(), kSentinel);
  EXPECT_EQ(c_->stamp, f.cache.generation);
  // A new generation revalidates the neighbours without converting.
  ++f.cache.generation;
  ExpectVector(b_->Getit(), kSentinel);
  EXPECT_EQ(a_->stamp, f.cache.generation);
  EXPECT_EQ(c_->stamp, f.cache.generation);
  // Touch converts again.
  b_->Touch(0);
  ExpectVector(b_->Getit(), Vector(-2, 0, 0));
}

TEST_F(TangentCacheTest, MovedNeighbourInMuscleModeAndLeavingItConvertAgain) {
  Line();
  f.AddMuscleTable(16);
  f.AddEffect<FixedEffect>(f.AddMuscleData(c_), Vector(2, 0, 0));
  ExpectVector(b_->Getit(), Vector(-2, 0, 0));
  f.SetMuscleMode(true);
  ++f.cache.generation;
  ++f.cache.screenGeneration;
  // c now sits at (8,0,0): it = (2 - 8)/2.
  ExpectVector(b_->Getit(), Vector(-3, 0, 0));
  f.SetMuscleMode(false);
  ++f.cache.generation;
  ++f.cache.screenGeneration;
  ExpectVector(b_->Getit(), Vector(-2, 0, 0));
  EXPECT_FALSE(c_->IsMuscleMoved());
}

TEST_F(TangentCacheTest, MuscleDeltaChangeReconverts) {
  Line();
  f.AddMuscleTable(16);
  // Doubles the in-side magnitude (bit 4: the magnitude is a factor).
  f.AddEffect<FixedEffect>(f.AddMuscleData(b_), Delta{0, 0, 2}, std::int16_t{4}, test::kNoTurn, std::int16_t{0});
  b_->OnConverted();
  f.SetMuscleMode(true);
  b_->Getp();  // refreshes b's muscle deltas and unconverts it
  EXPECT_FALSE(b_->IsConverted());
  ExpectVector(b_->Getit(), Vector(-4, 0, 0));
  ExpectVector(b_->Getot(), Vector(-1, 0, 0));
}

// --- Screen handle points ---------------------------------------------------------------

TEST_F(TangentCacheTest, ScreenHandleIsTheTransformedHeadMinusAThird) {
  SegmentCP* cp = CP(1, 1, 1);
  f.Open({cp});
  cp->it = Vector(3, 0, 0);
  cp->flags |= cpflag::itCached | cpflag::converted;
  cp->stamp = f.cache.generation;
  ExpectVector(cp->Getscreenit(), Vector(0, 1, 1));
  ExpectVector(cp->it, Vector(3, 0, 0));

  // A new screen generation transforms the current tangent again.
  cp->it = Vector(6, 0, 0);
  ExpectVector(cp->Getscreenit(), Vector(0, 1, 1));
  ++f.cache.screenGeneration;
  f.SetScreen(MakeMatrix({0, -2, 0, 10, 2, 0, 0, 20, 0, 0, 2, 30}),
                MakeMatrix({0, 0.5f, 0, -10, -0.5f, 0, 0, 5, 0, 0, 0.5f, -15}));
  // Model handle (1,1,1) - (6,0,0)/3 = (-1,1,1); the matrix maps (x,y,z) to
  // (10 - 2y, 20 + 2x, 30 + 2z).
  ExpectVector(cp->Getscreenit(), Vector(8, 18, 32));
}

TEST_F(TangentCacheTest, ScreenOutHandleOfAStackMemberUsesTheHead) {
  SegmentCP* top = CP(1, 1, 1);
  SegmentCP* member = CP(9, 9, 9);
  for (SegmentCP* c : {top, member}) f.Open({c});
  TestFigure::Stack({top, member});
  member->ot = Vector(3, 0, 0);
  member->flags |= cpflag::otCached | cpflag::converted;
  member->stamp = f.cache.generation;
  ExpectVector(member->Getscreenot(), Vector(2, 1, 1));
}

// --- Hooks with missing partners ------------------------------------------------------------

TEST_F(TangentCacheTest, HookWithoutPartnersGivesZeroAndStaysUnconverted) {
  SegmentCP* carrier = CP(0, 0);
  HookSegmentCP* hook = f.NewHook(0.5f);
  f.Open({carrier, CP(3, 0)});
  f.Open({CP(1.5f, 2), hook});
  TestFigure::Stack({carrier, hook});
  hook->it = hook->ot = kSentinel;
  ExpectVector(hook->Getit(), Vector(0, 0, 0));
  EXPECT_FALSE(hook->IsConverted());
  ExpectVector(hook->ot, kSentinel);  // not converted
  // The flag stays set: the zero stays.
  EXPECT_EQ(&hook->Getit(), &hook->it);
  ExpectVector(hook->Getmit(), Vector(0, 0, 0));
  EXPECT_FALSE(hook->IsMconverted());
}

TEST_F(TangentCacheTest, HookWhoseCarrierHasNoNextIsTreatedAsPartnerless) {
  SegmentCP* carrier = CP(0, 0);
  HookSegmentCP* hook = f.NewHook(0.5f);
  SegmentCP* above = CP(0, 0);
  f.Open({carrier});
  f.Open({above});
  f.Open({CP(1, 2), hook});
  TestFigure::Stack({above, carrier, hook});
  hook->p = Vector(4, 5, 6);
  hook->ot = kSentinel;
  ExpectVector(hook->Getot(), Vector(0, 0, 0));
  ExpectVector(hook->Getmot(), Vector(0, 0, 0));
  hook->OffCachedscreenpitot();
  // Screen handle of a zero tangent: the transformed head position.
  ExpectVector(hook->Getscreenot(), Vector(4, 5, 6));
  EXPECT_FALSE(hook->IsConverted());
}

// --- Muscle handle points -------------------------------------------------------------------

TEST_F(TangentCacheTest, MuscleHandlesOfAPlainPointAndTheirCache) {
  // it = (P - next)/2 = (3,0,0); with no prev ot = it.
  SegmentCP* cp = CP(1, 1, 1);
  f.Open({cp, CP(-5, 1, 1)});
  ExpectVector(cp->Getmit(), Vector(0, 1, 1));
  EXPECT_EQ(&cp->Getmit(), &cp->mit);
  // No generation check.
  ++f.cache.generation;
  cp->mit = kSentinel;
  ExpectVector(cp->Getmit(), kSentinel);
}

// Smooth a(0,0,0) -> c(2,1,0) -> b(4,0,0): equal chords, so c's muscle
// tangents are both (a - b)/2 = (-2,0,0).
class MuscleSidesTest : public TangentCacheTest {
 protected:
  void SetUp() override {
    f.SetMuscleMode(true);
    f.Open({a = Smooth(0, 0), c = Smooth(2, 1), b = Smooth(4, 0)});
  }
  SegmentCP* Smooth(float x, float y) { return test::Neutral(f.NewCP(Vector(x, y, 0), cpflag::smooth)); }
  SegmentCP *a = nullptr, *c = nullptr, *b = nullptr;
};

TEST_F(MuscleSidesTest, FirstGetterConvertsOnlyItsOwnSide) {
  ExpectVector(c->Getmit(), Vector(2.6666667f, 1, 0));
  EXPECT_EQ(c->flags & cpflag::motCached, 0u);
  ExpectVector(c->mot, Vector(-2, 0, 0));  // still the tangent
  // The other side converts its tangent from the head's position now.
  c->p.x += 1;
  ExpectVector(c->Getmot(), Vector(2.3333333f, 1, 0));
  ExpectVector(c->Getmit(), Vector(2.6666667f, 1, 0));  // served from the cache
}

TEST_F(MuscleSidesTest, OffCachedmitotNeverConvertsAHandleTwice) {
  // After one side's getter, after both, and after OffCachedmitot between
  // them: every answer is position -/+ tangent/3, never a handle converted
  // again, and a set flag never guards a tangent.
  for (int order = 0; order < 3; ++order) {
    SCOPED_TRACE(order);
    c->Touch(0);
    if (order >= 1) c->Getmit();
    if (order >= 2) c->Getmot();
    c->OffCachedmitot();
    ExpectVector(c->Getmot(), Vector(1.3333333f, 1, 0));
    ExpectVector(c->Getmit(), Vector(2.6666667f, 1, 0));
    c->OffCachedmitot();
    ExpectVector(c->Getmit(), Vector(2.6666667f, 1, 0));
    ExpectVector(c->Getmot(), Vector(1.3333333f, 1, 0));
  }
}

TEST_F(MuscleSidesTest, SecondGetterPlacesATouchedHookOnNext) {
  // c's next is a hook k at s 0.5 on carrier D(0,0,0) -> E(4,0,0) (straight,
  // so k sits at the midpoint (2,0,0)).
  TestFigure g;
  g.SetMuscleMode(true);
  SegmentCP* d = test::Neutral(g.NewCP(Vector(0, 0, 0)));
  SegmentCP* e = test::Neutral(g.NewCP(Vector(4, 0, 0)));
  HookSegmentCP* k = g.NewHook(0.5f);
  test::Neutral(k);
  SegmentCP* start = test::Neutral(g.NewCP(Vector(2, 1, 0)));
  g.Open({d, e});
  g.Open({start, k});
  TestFigure::Stack({d, k});
  start->Getmit();
  k->Touch(0);
  k->p = kSentinel;
  start->Getmot();
  EXPECT_TRUE(k->IsMpCached());
  ExpectVector(k->p, Vector(2, 0, 0));
}

TEST_F(TangentCacheTest, MuscleHandlesSurviveOffCachedmitot) {
  SegmentCP* cp = CP(1, 1, 1);
  f.Open({cp, CP(-5, 1, 1)});
  cp->Getmit();
  for (int round = 0; round < 2; ++round) {
    SCOPED_TRACE(round);
    cp->OffCachedmitot();
    ExpectVector(cp->Getmot(), Vector(2, 1, 1));
    ExpectVector(cp->Getmit(), Vector(0, 1, 1));
    ExpectVector(cp->Getmot(), Vector(2, 1, 1));
  }
}

// A hook H at s = 0.5 on the segment from carrier C (0,0,0) to N (3,0,0),
// with partner X stacked above C and partner Y above N, and H's prev at
// (1.5,2,0).
//   C: only next, it = ot = (-1.5,0,0): muscle in-handle (0.5,0,0).
//   N: only prev, ot = (-1.5,0,0): muscle out-handle (2.5,0,0).
//   H placed at the segment's midpoint: (3 + 3*2.5 + 3*0.5 + 0)/8 = 1.5.
//   X at the origin with prev (0,3,0): ot = it = (0,1.5,0), offsets
//   A = B = (0,0.5,0) (0.5 is the float nearest 1.5 * 0.33333334).
//   Y at (3,0,0) with prev (3,6,0): offsets (0,1,0).
//   D = (0,2,0) points the same way as both in-offsets: T1 = (0,0.5,0),
//   T2 = (0,1,0), T = T1 + (T2 - T1)/2 = (0,0.75,0).
//   Handles: (1.5,0,0) -/+ T/3 = (1.5,-0.25,0) and (1.5,0.25,0)
//   (0.75 * 0.33333334 rounds to 0.25).
class MuscleHookTest : public TangentCacheTest {
 protected:
  void SetUp() override {
    hook = f.NewHook(0.5f);
    test::Neutral(hook);
    f.Open({carrier = CP(0, 0), end = CP(3, 0)});
    f.Open({CP(0, 3), x = CP(0, 0)});
    f.Open({CP(3, 6), y = CP(3, 0)});
    f.Open({CP(1.5f, 2), hook});
    TestFigure::Stack({x, carrier, hook});
    TestFigure::Stack({y, end});
  }
  void ExpectHandles(const char* when) {
    SCOPED_TRACE(when);
    for (int call = 0; call < 2; ++call) {
      SCOPED_TRACE(call);
      ExpectVector(hook->Getmit(), kIn);
      ExpectVector(hook->Getmot(), kOut);
    }
  }
  const Vector kIn = Vector(1.5f, -0.25f, 0);
  const Vector kOut = Vector(1.5f, 0.25f, 0);
  SegmentCP *carrier = nullptr, *end = nullptr, *x = nullptr, *y = nullptr;
  HookSegmentCP* hook = nullptr;
};

TEST_F(MuscleHookTest, FirstGetmitPlacesTheRunAndGivesHandlePoints) {
  ExpectHandles("fresh");
  ExpectVector(hook->p, Vector(1.5f, 0, 0));
  EXPECT_TRUE(hook->IsMpCached());
  ExpectVector(carrier->Getmit(), Vector(0.5f, 0, 0));
  ExpectVector(end->Getmot(), Vector(2.5f, 0, 0));
}

TEST_F(MuscleHookTest, OffCachedmitotKeepsTheHandles) {
  ExpectHandles("fresh");
  hook->OffCachedmitot();
  ExpectHandles("after OffCachedmitot");
}

TEST_F(MuscleHookTest, OffCachedmpitotReplacesAndKeepsTheHandles) {
  ExpectHandles("fresh");
  hook->p = kSentinel;
  hook->OffCachedmpitot();
  ExpectHandles("after OffCachedmpitot");
  ExpectVector(hook->p, Vector(1.5f, 0, 0));
}

TEST_F(MuscleHookTest, TouchReplacesTheRunDuringTheFirstGetmit) {
  ExpectHandles("fresh");
  hook->p = kSentinel;
  hook->Touch(0);
  EXPECT_FALSE(hook->IsMpCached());
  ExpectHandles("after Touch");
  ExpectVector(hook->p, Vector(1.5f, 0, 0));
}

TEST_F(MuscleHookTest, TouchAfterAPartnerMovedGivesTheNewHandles) {
  ExpectHandles("fresh");
  // Y's prev moves to (3,12,0): Y's offsets become (0,2,0), T = (0,1.25,0).
  y->prev->p = Vector(3, 12, 0);
  for (SegmentCP* cp : {y, static_cast<SegmentCP*>(hook)}) cp->Touch(0);
  // 1.25 * 0.3333333432674408 = 0.41666667908 rounds to 0x1.aaaaacp-2
  // (python3: struct.unpack('f', struct.pack('f', 1.25 * 0.3333333432674408))).
  const float third = 0x1.aaaaacp-2f;
  for (int call = 0; call < 2; ++call) {
    SCOPED_TRACE(call);
    ExpectVector(hook->Getmit(), Vector(1.5f, -third, 0));
    ExpectVector(hook->Getmot(), Vector(1.5f, third, 0));
  }
}

}  // namespace
}  // namespace splinecore
