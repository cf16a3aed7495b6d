// The tangent cache: when the model, screen and muscle getters convert and
// when they serve the stored value, hooks with missing partners, and the
// muscle handle points in every order of calls.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

#include "marrow/marrow.h"
#include "test_figure.h"

namespace splinecore {
namespace {

using test::MakeMatrix;
using test::TestFigure;

const Vector kSentinel(-77, -77, -77);

// Moves the position by a fixed offset.
class MoveBy : public MuscleEffect {
 public:
  explicit MoveBy(Vector offset) : offset_(offset) {}
  std::int32_t ApplyToPosition(std::int32_t, SegmentCP*, Vector* position) override {
    *position += offset_;
    return 1;
  }
  std::int16_t ApplyToInDelta(std::int32_t, SegmentCP*, Delta*) override { return 0; }
  std::int16_t ApplyToOutDelta(std::int32_t, SegmentCP*, Delta*) override { return 0; }

 private:
  Vector offset_;
};

// Doubles the in-side magnitude.
class DoubleInMagnitude : public MuscleEffect {
 public:
  std::int32_t ApplyToPosition(std::int32_t, SegmentCP*, Vector*) override { return 0; }
  std::int16_t ApplyToInDelta(std::int32_t, SegmentCP*, Delta* d) override {
    d->magnitude = 2;
    return 4;
  }
  std::int16_t ApplyToOutDelta(std::int32_t, SegmentCP*, Delta*) override { return 0; }
};

class TangentCacheTest : public ::testing::Test {
 protected:
  void TearDown() override {
    figure_.reset();
    EXPECT_EQ(MarrowLiveBlocks(), live_);
  }
  TestFigure& F() { return *figure_; }
  // A peaked control point with deltas that neither turn nor scale.
  SegmentCP* CP(float x, float y, float z = 0) {
    SegmentCP* cp = F().NewCP(Vector(x, y, z));
    cp->indelta = Delta{0, 0, 1};
    cp->outdelta = Delta{0, 0, 1};
    return cp;
  }
  // Open spline a(0,0,0) - b(2,0,0) - c(6,0,0), travel from c to a: b's
  // half-chord tangents are it = (b - c)/2 = (-2,0,0), ot = (a - b)/2 = (-1,0,0).
  void Line() {
    a_ = CP(0, 0);
    b_ = CP(2, 0);
    c_ = CP(6, 0);
    F().Open({a_, b_, c_});
  }

  long live_ = MarrowLiveBlocks();
  std::unique_ptr<TestFigure> figure_ = std::make_unique<TestFigure>();
  SegmentCP* a_ = nullptr;
  SegmentCP* b_ = nullptr;
  SegmentCP* c_ = nullptr;
};

// --- Model tangents ---------------------------------------------------------------------

TEST_F(TangentCacheTest, SecondGetitReturnsTheStoredValue) {
  Line();
  EXPECT_EQ(b_->Getit() == Vector(-2, 0, 0), 1);
  EXPECT_TRUE(b_->IsConverted());
  b_->it = kSentinel;
  EXPECT_EQ(&b_->Getit(), &b_->it);
  EXPECT_EQ(b_->it == kSentinel, 1);
}

TEST_F(TangentCacheTest, GetotAfterGetitRevalidatesButDoesNotConvert) {
  Line();
  b_->Getit();
  b_->ot = kSentinel;
  c_->Touch(0);  // moves c's stamp: Getot's position refresh is visible there
  EXPECT_EQ(b_->Getot() == kSentinel, 1);
  EXPECT_EQ(c_->stamp, F().cache.generation);
}

TEST_F(TangentCacheTest, NewGenerationRevalidatesNeighboursWithoutConverting) {
  Line();
  b_->Getit();
  b_->it = kSentinel;
  ++F().cache.generation;
  EXPECT_EQ(b_->Getit() == kSentinel, 1);
  EXPECT_EQ(a_->stamp, F().cache.generation);
  EXPECT_EQ(c_->stamp, F().cache.generation);
}

TEST_F(TangentCacheTest, TouchConvertsAgain) {
  Line();
  b_->Getit();
  b_->it = kSentinel;
  b_->Touch(0);
  EXPECT_EQ(b_->Getit() == Vector(-2, 0, 0), 1);
}

TEST_F(TangentCacheTest, MovedNeighbourInMuscleModeAndLeavingItConvertAgain) {
  Line();
  F().AddMuscleTable(16);
  F().AddEffect<MoveBy>(F().AddMuscleData(c_), Vector(2, 0, 0));
  EXPECT_EQ(b_->Getit() == Vector(-2, 0, 0), 1);

  F().SetMuscleMode(true);
  ++F().cache.generation;
  ++F().cache.screenGeneration;
  // c now sits at (8,0,0): it = (2 - 8)/2.
  EXPECT_EQ(b_->Getit() == Vector(-3, 0, 0), 1);

  F().SetMuscleMode(false);
  ++F().cache.generation;
  ++F().cache.screenGeneration;
  EXPECT_EQ(b_->Getit() == Vector(-2, 0, 0), 1);
  EXPECT_FALSE(c_->IsMuscleMoved());
}

TEST_F(TangentCacheTest, MuscleDeltaChangeReconverts) {
  Line();
  F().AddMuscleTable(16);
  F().AddEffect<DoubleInMagnitude>(F().AddMuscleData(b_));
  b_->OnConverted();
  F().SetMuscleMode(true);
  b_->Getp();  // refreshes b's muscle deltas and unconverts it
  EXPECT_FALSE(b_->IsConverted());
  EXPECT_EQ(b_->Getit() == Vector(-4, 0, 0), 1);
  EXPECT_EQ(b_->Getot() == Vector(-1, 0, 0), 1);
}

// --- Screen handle points ---------------------------------------------------------------

TEST_F(TangentCacheTest, ScreenHandleIsTheTransformedHeadMinusAThird) {
  SegmentCP* cp = CP(1, 1, 1);
  F().Open({cp});
  cp->it = Vector(3, 0, 0);
  cp->flags |= cpflag::itCached | cpflag::converted;
  cp->stamp = F().cache.generation;
  EXPECT_EQ(cp->Getscreenit() == Vector(0, 1, 1), 1);
  EXPECT_EQ(cp->it == Vector(3, 0, 0), 1);

  // A new screen generation transforms the current tangent again.
  cp->it = Vector(6, 0, 0);
  EXPECT_EQ(cp->Getscreenit() == Vector(0, 1, 1), 1);
  ++F().cache.screenGeneration;
  F().SetScreen(MakeMatrix({0, -2, 0, 10, 2, 0, 0, 20, 0, 0, 2, 30}),
                MakeMatrix({0, 0.5f, 0, -10, -0.5f, 0, 0, 5, 0, 0, 0.5f, -15}));
  // Model handle (1,1,1) - (6,0,0)/3 = (-1,1,1); the matrix maps (x,y,z) to
  // (10 - 2y, 20 + 2x, 30 + 2z).
  EXPECT_EQ(cp->Getscreenit() == Vector(8, 18, 32), 1);
}

TEST_F(TangentCacheTest, ScreenOutHandleOfAStackMemberUsesTheHead) {
  SegmentCP* top = CP(1, 1, 1);
  SegmentCP* member = CP(9, 9, 9);
  F().Open({top});
  F().Open({member});
  TestFigure::Stack({top, member});
  member->ot = Vector(3, 0, 0);
  member->flags |= cpflag::otCached | cpflag::converted;
  member->stamp = F().cache.generation;
  EXPECT_EQ(member->Getscreenot() == Vector(2, 1, 1), 1);
}

// --- Hooks with missing partners ------------------------------------------------------------

TEST_F(TangentCacheTest, HookWithoutPartnersGivesZeroAndStaysUnconverted) {
  SegmentCP* carrier = CP(0, 0);
  SegmentCP* end = CP(3, 0);
  HookSegmentCP* hook = F().NewHook(0.5f);
  SegmentCP* hookPrev = CP(1.5f, 2);
  F().Open({carrier, end});
  F().Open({hookPrev, hook});
  TestFigure::Stack({carrier, hook});
  hook->it = kSentinel;
  hook->ot = kSentinel;
  EXPECT_EQ(hook->Getit() == Vector(0, 0, 0), 1);
  EXPECT_FALSE(hook->IsConverted());
  EXPECT_EQ(hook->ot == kSentinel, 1);  // not converted
  // The flag stays set: the zero stays.
  EXPECT_EQ(&hook->Getit(), &hook->it);
  EXPECT_EQ(hook->Getmit() == Vector(0, 0, 0), 1);
  EXPECT_FALSE(hook->IsMconverted());
}

TEST_F(TangentCacheTest, HookWhoseCarrierHasNoNextIsTreatedAsPartnerless) {
  SegmentCP* carrier = CP(0, 0);
  HookSegmentCP* hook = F().NewHook(0.5f);
  SegmentCP* hookPrev = CP(1, 2);
  SegmentCP* above = CP(0, 0);
  F().Open({carrier});
  F().Open({above});
  F().Open({hookPrev, hook});
  TestFigure::Stack({above, carrier, hook});
  hook->p = Vector(4, 5, 6);
  hook->ot = kSentinel;
  EXPECT_EQ(hook->Getot() == Vector(0, 0, 0), 1);
  EXPECT_EQ(hook->Getmot() == Vector(0, 0, 0), 1);
  hook->OffCachedscreenpitot();
  // Screen handle of a zero tangent: the transformed head position.
  EXPECT_EQ(hook->Getscreenot() == Vector(4, 5, 6), 1);
  EXPECT_FALSE(hook->IsConverted());
}

// --- Muscle handle points -------------------------------------------------------------------

TEST_F(TangentCacheTest, MuscleHandlesOfAPlainPointAndTheirCache) {
  // it = (P - next)/2 = (3,0,0); with no prev ot = it.
  SegmentCP* cp = CP(1, 1, 1);
  SegmentCP* next = CP(-5, 1, 1);
  F().Open({cp, next});
  EXPECT_EQ(cp->Getmit() == Vector(0, 1, 1), 1);
  // Getmit converted both members: Getmot does no work.
  cp->mot = kSentinel;
  EXPECT_EQ(cp->Getmot() == kSentinel, 1);
  EXPECT_EQ(&cp->Getmit(), &cp->mit);
  EXPECT_EQ(cp->mit == Vector(0, 1, 1), 1);

  // No generation check.
  ++F().cache.generation;
  cp->mit = kSentinel;
  EXPECT_EQ(cp->Getmit() == kSentinel, 1);
}

TEST_F(TangentCacheTest, MuscleHandlesSurviveOffCachedmitot) {
  SegmentCP* cp = CP(1, 1, 1);
  SegmentCP* next = CP(-5, 1, 1);
  F().Open({cp, next});
  cp->Getmit();
  for (int round = 0; round < 2; ++round) {
    cp->OffCachedmitot();
    EXPECT_EQ(cp->Getmot() == Vector(2, 1, 1), 1) << round;
    EXPECT_EQ(cp->Getmit() == Vector(0, 1, 1), 1) << round;
    EXPECT_EQ(cp->Getmot() == Vector(2, 1, 1), 1) << round;
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
    carrier = CP(0, 0);
    end = CP(3, 0);
    x = CP(0, 0);
    y = CP(3, 0);
    hook = F().NewHook(0.5f);
    hook->indelta = Delta{0, 0, 1};
    hook->outdelta = Delta{0, 0, 1};
    F().Open({carrier, end});
    F().Open({CP(0, 3), x});
    F().Open({CP(3, 6), y});
    F().Open({CP(1.5f, 2), hook});
    TestFigure::Stack({x, carrier, hook});
    TestFigure::Stack({y, end});
  }
  void ExpectHandles(const char* when) {
    for (int call = 0; call < 2; ++call) {
      EXPECT_EQ(hook->Getmit() == kIn, 1) << when << " call " << call;
      EXPECT_EQ(hook->Getmot() == kOut, 1) << when << " call " << call;
    }
  }
  const Vector kIn = Vector(1.5f, -0.25f, 0);
  const Vector kOut = Vector(1.5f, 0.25f, 0);
  SegmentCP* carrier = nullptr;
  SegmentCP* end = nullptr;
  SegmentCP* x = nullptr;
  SegmentCP* y = nullptr;
  HookSegmentCP* hook = nullptr;
};

TEST_F(MuscleHookTest, FirstGetmitPlacesTheRunAndGivesHandlePoints) {
  ExpectHandles("fresh");
  EXPECT_EQ(hook->p == Vector(1.5f, 0, 0), 1);
  EXPECT_TRUE(hook->IsMpCached());
  EXPECT_EQ(carrier->Getmit() == Vector(0.5f, 0, 0), 1);
  EXPECT_EQ(end->Getmot() == Vector(2.5f, 0, 0), 1);
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
  EXPECT_EQ(hook->p == Vector(1.5f, 0, 0), 1);
}

TEST_F(MuscleHookTest, TouchReplacesTheRunDuringTheFirstGetmit) {
  ExpectHandles("fresh");
  hook->p = kSentinel;
  hook->Touch(0);
  EXPECT_FALSE(hook->IsMpCached());
  ExpectHandles("after Touch");
  EXPECT_EQ(hook->p == Vector(1.5f, 0, 0), 1);
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
    EXPECT_EQ(hook->Getmit() == Vector(1.5f, -third, 0), 1) << call;
    EXPECT_EQ(hook->Getmot() == Vector(1.5f, third, 0), 1) << call;
  }
}

}  // namespace
}  // namespace splinecore
