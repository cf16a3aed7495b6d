// The position cache: model, muscle-mode and screen positions, the
// generation checks, the invalidators and the muscle hook run refresh.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>

#include "controlpoint/position_cache.h"
#include "figure_test.h"

namespace splinecore {
namespace {

using test::ExpectDelta;
using test::ExpectVector;
using test::FixedEffect;
using test::MakeMatrix;
using test::TestFigure;

class PositionCacheTest : public test::FigureTest {
 protected:
  // Open spline (0,0,0) - (1,0,0) - (2,0,0).
  std::array<SegmentCP*, 3> Three(std::uint32_t flags) {
    std::array<SegmentCP*, 3> cps;
    for (int i = 0; i < 3; ++i) cps[i] = f.NewCP(Vector(static_cast<float>(i), 0, 0), flags);
    f.Open({cps[0], cps[1], cps[2]});
    return cps;
  }
  // top over member, each a spline of its own.
  void StackOfTwo(Vector topP, Vector memberP) {
    f.Open({top = f.NewCP(topP)});
    f.Open({member = f.NewCP(memberP)});
    TestFigure::Stack({top, member});
  }
  SegmentCP *top = nullptr, *member = nullptr;
};

// --- Model position ----------------------------------------------------------

TEST_F(PositionCacheTest, GetpOutsideMuscleModeOnlyChecksTheGeneration) {
  SegmentCP* a = f.NewCP(Vector(1, 2, 3), cpflag::converted | cpflag::itCached | cpflag::screenpCached);
  SegmentCP* b = f.NewCP(Vector(4, 5, 6), cpflag::converted);
  f.Open({a, b});
  f.cache.generation = 9;
  Vector& p = a->Getp();
  EXPECT_EQ(&p, &a->p);
  EXPECT_EQ(a->stamp, 9);
  // Model caches cleared by the mismatch; nothing else touched.
  EXPECT_EQ(a->flags, cpflag::converted | cpflag::screenpCached);
  EXPECT_EQ(b->flags, cpflag::converted);
}

TEST_F(PositionCacheTest, StackMemberGetsHeadPositionButNonMuscleGivesItsOwn) {
  StackOfTwo(Vector(1, 1, 1), Vector(7, 7, 7));
  EXPECT_EQ(&member->Getp(), &top->p);
  EXPECT_EQ(&member->Getnonmusclep(), &member->p);
}

TEST_F(PositionCacheTest, GetnonmusclepUnconvertsFromTheCallerDown) {
  SegmentCP* top = f.NewCP(Vector(0, 0, 0), cpflag::converted);
  SegmentCP* member = f.NewCP(Vector(0, 0, 0), cpflag::converted | cpflag::muscleMoved);
  SegmentCP* bottom = f.NewCP(Vector(0, 0, 0), cpflag::converted);
  SegmentCP* bottomNext = f.NewCP(Vector(1, 0, 0), cpflag::converted);
  SegmentCP* memberPrev = f.NewCP(Vector(2, 0, 0), cpflag::converted);
  f.Open({top});
  f.Open({memberPrev, member});
  f.Open({bottom, bottomNext});
  TestFigure::Stack({top, member, bottom});
  member->Getnonmusclep();
  EXPECT_FALSE(member->IsMuscleMoved());
  EXPECT_TRUE(top->IsConverted());  // above the caller
  for (SegmentCP* cp : {member, bottom, bottomNext, memberPrev}) EXPECT_FALSE(cp->IsConverted());
}

TEST_F(PositionCacheTest, OutsideMuscleModeMuscleDataUnconvertsOnEveryCall) {
  auto [a, b, c] = Three(0);
  f.AddMuscleTable(8);
  f.AddMuscleData(b);
  for (int call = 0; call < 2; ++call) {
    for (SegmentCP* cp : {a, b, c}) cp->OnConverted();
    b->OnMuscleMoved();
    EXPECT_EQ(&b->Getp(), &b->p);
    EXPECT_FALSE(b->IsMuscleMoved());
    for (SegmentCP* cp : {a, b, c}) EXPECT_FALSE(cp->IsConverted()) << "call " << call;
  }
}

// --- Muscle-mode position --------------------------------------------------------

TEST_F(PositionCacheTest, MovingEffectGivesMovedPositionOncePerGeneration) {
  auto [a, b, c] = Three(cpflag::converted);
  f.AddMuscleTable(8);
  MuscleCPData* data = f.AddMuscleData(b);
  FixedEffect* move = f.AddEffect<FixedEffect>(data, Vector(0, 0.5f, 0));
  f.SetMuscleMode(true);
  Vector& moved = b->Getp();
  EXPECT_EQ(&moved, &data->position);
  ExpectVector(moved, Vector(1, 0.5f, 0));
  EXPECT_TRUE(b->IsMuscleMoved());
  for (SegmentCP* cp : {a, b, c}) EXPECT_FALSE(cp->IsConverted());

  // Cached: no effect runs again, nothing is unconverted.
  for (SegmentCP* cp : {a, b, c}) cp->OnConverted();
  EXPECT_EQ(&b->Getp(), &data->position);
  EXPECT_EQ(move->positionCalls, 1);
  EXPECT_TRUE(a->IsConverted());

  // A new generation recomputes; the same place with muscleMoved already
  // set unconverts nothing.
  ++f.cache.generation;
  ExpectVector(b->Getp(), Vector(1, 0.5f, 0));
  EXPECT_EQ(move->positionCalls, 2);
  for (SegmentCP* cp : {a, b, c}) EXPECT_TRUE(cp->IsConverted());
}

TEST_F(PositionCacheTest, EffectsThatDoNotMoveGiveTheCallersOwnPosition) {
  StackOfTwo(Vector(1, 1, 1), Vector(5, 5, 5));
  f.AddMuscleTable(8);
  MuscleCPData* data = f.AddMuscleData(top);
  data->position = Vector(9, 9, 9);
  f.AddEffect<FixedEffect>(data);
  f.SetMuscleMode(true);
  EXPECT_EQ(&member->Getp(), &member->p);
  ExpectVector(data->position, top->p);  // written although unused
  EXPECT_FALSE(top->IsMuscleMoved());
}

TEST_F(PositionCacheTest, MuscleDeltasAddAnglesAndScaleMagnitudeOnlyOnBitFour) {
  SegmentCP* scaled = f.NewCP(Vector(0, 0, 0), cpflag::converted);
  SegmentCP* kept = f.NewCP(Vector(1, 0, 0), cpflag::converted);
  for (SegmentCP* cp : {scaled, kept}) f.Open({cp});
  for (SegmentCP* cp : {scaled, kept}) {
    cp->indelta = Delta{10, 20, 2};
    cp->outdelta = Delta{-1, 0, 3};
  }
  f.AddMuscleTable(8);
  MuscleCPData* scaledData = f.AddMuscleData(scaled);
  MuscleCPData* keptData = f.AddMuscleData(kept);
  f.AddEffect<FixedEffect>(scaledData, Delta{5, -20, 0.5f}, std::int16_t{4}, Delta{0, 0, 1}, std::int16_t{0});
  f.AddEffect<FixedEffect>(keptData, Delta{5, -20, 0.5f}, std::int16_t{1}, Delta{1, 0, 1}, std::int16_t{2});
  f.SetMuscleMode(true);
  scaled->Getmusclep();
  ExpectDelta(scaledData->indelta, 15.0f, 0.0f, 1.0f);  // magnitude 2 * 0.5
  EXPECT_EQ(scaledData->outdelta.pitch, -1.0f);
  EXPECT_EQ(scaledData->outdelta.magnitude, 3.0f);
  EXPECT_TRUE(scaled->IsMuscleMoved());
  EXPECT_FALSE(scaled->IsConverted());

  kept->Getmusclep();
  EXPECT_EQ(keptData->indelta.magnitude, 2.0f);  // no bit 4: own magnitude
  EXPECT_EQ(keptData->outdelta.pitch, 0.0f);
  EXPECT_TRUE(kept->IsMuscleMoved());

  // Cached until the generation moves: no effect call, no unconverting.
  kept->OnConverted();
  kept->Getmusclep();
  EXPECT_TRUE(kept->IsConverted());
  ++f.cache.generation;
  kept->Getp();  // same deltas again: still converted
  EXPECT_TRUE(kept->IsConverted());
}

TEST_F(PositionCacheTest, CachedHeadPositionSkipsTheDeltas) {
  SegmentCP* cp = f.NewCP(Vector(0, 0, 0));
  f.Open({cp});
  cp->indelta = Delta{1, 1, 1};
  f.AddMuscleTable(8);
  MuscleCPData* data = f.AddMuscleData(cp);
  FixedEffect* effect =
      f.AddEffect<FixedEffect>(data, Delta{1, 0, 1}, std::int16_t{1}, Delta{0, 0, 1}, std::int16_t{0});
  f.SetMuscleMode(true);
  cp->Getmusclep();
  EXPECT_EQ(effect->inDeltaCalls, 1);
  cp->OffMuscleDeltaCached();
  cp->Getmusclep();  // musclepCached still set: returns before the deltas
  EXPECT_EQ(effect->inDeltaCalls, 1);
}

TEST_F(PositionCacheTest, WithoutHeadDataInMuscleModeTheHeadPositionServes) {
  StackOfTwo(Vector(1, 1, 1), Vector(5, 5, 5));
  f.AddMuscleTable(8);
  f.SetMuscleMode(true);
  EXPECT_EQ(&member->Getp(), &top->p);
  // Member data without head data: Getmusclep, no move, the member's own p.
  f.AddMuscleData(member);
  EXPECT_EQ(&member->Getp(), &member->p);
}

// --- Screen position --------------------------------------------------------------

TEST_F(PositionCacheTest, ScreenPositionIsTheHeadsAndFollowsScreenGeneration) {
  StackOfTwo(Vector(1, 2, 3), Vector(1, 2, 3));
  f.SetScreen(MakeMatrix({2, 0, 0, 1, 0, 2, 0, 0, 0, 0, 2, 0}), MakeMatrix({0.5f, 0, 0, -0.5f, 0, 0.5f, 0,
                                                                              0, 0, 0, 0.5f, 0}));
  Vector& s = member->Getscreenp();
  EXPECT_EQ(&s, &top->screenp);
  ExpectVector(s, Vector(3, 4, 6));
  EXPECT_EQ(&top->Getscreenp(), &s);

  // Cached: a moved p is not seen until the screen generation changes.
  top->p = Vector(0, 0, 0);
  ExpectVector(top->Getscreenp(), Vector(3, 4, 6));
  ++f.cache.screenGeneration;
  ExpectVector(member->Getscreenp(), Vector(1, 0, 0));

  top->OffCachedscreenitot();
  EXPECT_TRUE(top->IsScreenpCached());
}

TEST_F(PositionCacheTest, SetPrevpStoresTheStaleHeadScreenPosition) {
  StackOfTwo(Vector(1, 2, 3), Vector(1, 2, 3));
  member->SetPrevp();  // no muscle table: nothing happens
  top->screenp = Vector(4, 5, 6);  // not brought up to date by SetPrevp
  MuscleTable* table = f.AddMuscleTable(static_cast<std::uint16_t>(top->id + 1));
  member->SetPrevp();
  ExpectVector(table->prevp[top->id], Vector(4, 5, 6));
  EXPECT_FALSE(top->IsScreenpCached());

  table->prevp[top->id] = Vector(0, 0, 0);
  table->count = static_cast<std::uint16_t>(top->id);  // too short
  member->SetPrevp();
  ExpectVector(table->prevp[top->id], Vector(0, 0, 0));
}

// --- Invalidators -------------------------------------------------------------------

TEST_F(PositionCacheTest, EachOffCachedClearsExactlyItsFlags) {
  using Op = void (SegmentCP::*)();
  struct Case {
    Op op;
    std::uint32_t cleared;
  };
  const Case cases[] = {
      {&SegmentCP::OffCacheditot, 0x8000000u | 0x800u | 0x8000u | 0x4000u},
      {&SegmentCP::OffCachedpitot, 0x8000000u | 0x800u | 0x4000000u | 0x8000u | 0x4000u},
      {&SegmentCP::OffCachedmitot, 0x40000000u | 0x20000000u},
      {&SegmentCP::OffCachedmpitot, 0x10000000u | 0x40000000u | 0x20000000u},
      {&SegmentCP::OffCachedscreenitot, 0x100000u | 0x80000u},
      {&SegmentCP::OffCachedscreenpitot, 0x100000u | 0x80000u | 0x200000u},
  };
  SegmentCP* cp = f.NewCP(Vector(0, 0, 0));
  f.Open({cp});
  for (const Case& c : cases) {
    cp->flags = 0xFFFFFFFFu;
    (cp->*c.op)();
    EXPECT_EQ(cp->flags, ~c.cleared);
  }
}

// --- Muscle placement of hooks ------------------------------------------------------

TEST_F(PositionCacheTest, GetmpOfAHookPlacesAndMarksItsRun) {
  SegmentCP* carrier = f.NewCP(Vector(0, 0, 0));
  SegmentCP* end = f.NewCP(Vector(3, 0, 0));
  // Doubled half-chord tangents put the handle points at x = 1 and x = 2.
  carrier->indelta = Delta{0, 0, 2};
  carrier->outdelta = Delta{0, 0, 1};
  end->indelta = Delta{0, 0, 1};
  end->outdelta = Delta{0, 0, 2};
  HookSegmentCP* h1 = f.NewHook(0.25f, cpflag::mitCached | cpflag::motCached);
  HookSegmentCP* h2 = f.NewHook(0.75f, cpflag::mitCached | cpflag::motCached);
  SegmentCP* below = f.NewCP(Vector(0, 0, 0), cpflag::mitCached);
  f.Open({carrier, end});
  for (SegmentCP* cp : {static_cast<SegmentCP*>(h1), static_cast<SegmentCP*>(h2), below}) f.Open({cp});
  TestFigure::Stack({carrier, h1, h2, below});
  // Evenly spaced straight segment from (3,0,0) to the carrier: s lies at x = 3s.
  ExpectVector(h2->Getmp(), Vector(2.25f, 0, 0));
  ExpectVector(h1->p, Vector(0.75f, 0, 0));
  for (SegmentCP* h : {static_cast<SegmentCP*>(h1), static_cast<SegmentCP*>(h2)}) {
    EXPECT_TRUE(h->IsMpCached());
    EXPECT_FALSE(h->IsMitCached());
    EXPECT_FALSE(h->IsMotCached());
  }
  EXPECT_TRUE(below->IsMitCached());  // not part of the run

  // Placed: a second query does not place again.
  h1->p = Vector(-1, -1, -1);
  ExpectVector(h1->Getmp(), Vector(-1, -1, -1));
  EXPECT_EQ(&carrier->Getmp(), &carrier->p);
}

TEST_F(PositionCacheTest, HookWithoutCarrierKeepsItsPosition) {
  HookSegmentCP* lone = f.NewHook(0.5f);
  f.Open({lone});
  lone->p = Vector(1, 2, 3);
  EXPECT_EQ(&lone->Getmp(), &lone->p);
  ExpectVector(lone->p, Vector(1, 2, 3));
  EXPECT_FALSE(lone->IsMpCached());
  ExpectVector(lone->Getscreenp(), Vector(1, 2, 3));
}

}  // namespace
}  // namespace splinecore
