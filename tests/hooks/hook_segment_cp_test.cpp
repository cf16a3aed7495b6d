// The hook record: construction from nothing, from a figure and from a
// control point, copying, the snapping of s and the piece accessors.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "figure_test.h"

namespace splinecore {
namespace {

using test::ExpectVector;
using test::TestFigure;

using HookSegmentCPTest = test::FigureTest;

TEST_F(HookSegmentCPTest, PlainAndFigureConstructors) {
  HookSegmentCP* plain = new HookSegmentCP();
  EXPECT_TRUE(plain->IsHook());
  EXPECT_EQ(plain->cache, nullptr);
  EXPECT_EQ(plain->stamp, 255);
  f.cache.nextId = 12;
  HookSegmentCP* numbered = new HookSegmentCP(&f.cache);
  EXPECT_FALSE(numbered->IsHook());  // the host sets the flag
  EXPECT_EQ(numbered->id, 12u);
  EXPECT_EQ(f.cache.nextId, 13u);
  EXPECT_EQ(numbered->cache, nullptr);
  delete plain;
  delete numbered;
}

TEST_F(HookSegmentCPTest, MadeFromAControlPoint) {
  SegmentCP* top = f.NewCP(Vector(9, 9, 9));
  SegmentCP* cp = f.NewCP(Vector(1, 2, 3));
  SegmentCP* before = f.Open({f.NewCP(Vector(0, 0, 0)), cp, f.NewCP(Vector(5, 0, 0))});
  SegmentCP* after = cp->next;
  f.Open({top});
  TestFigure::Stack({top, cp});
  cp->tag = 0x1234;
  cp->indelta = Delta{1, 2, 3};
  cp->outdelta = Delta{4, 5, 6};
  cp->stamp = 7;
  cp->screenStamp = 8;
  const std::uint32_t kept = cpflag::smooth | cpflag::converted | cpflag::mconverted | cpflag::mpCached |
                             cpflag::mitCached | cpflag::motCached;
  const std::uint32_t cleared = cpflag::muscleDeltaCached | cpflag::musclepCached | cpflag::pCached |
                                cpflag::otCached | cpflag::itCached | cpflag::screenotCached |
                                cpflag::screenitCached | cpflag::screenpCached;
  cp->flags = kept | cleared;

  HookSegmentCP* h = new HookSegmentCP(cp, 0.3f);
  EXPECT_EQ(h->s, 0.3f);  // unsnapped until read
  EXPECT_EQ(h->flags, kept | cpflag::hook);
  ExpectVector(h->p, Vector(1, 2, 3));  // its own p, not the head's
  EXPECT_EQ(h->tag, 0x1234u);
  EXPECT_EQ(h->indelta.magnitude, 3.0f);
  EXPECT_EQ(h->outdelta.pitch, 4.0f);
  EXPECT_EQ(h->prev, before);
  EXPECT_EQ(h->next, after);
  EXPECT_EQ(h->stackPrev, top);
  EXPECT_EQ(h->stackNext, nullptr);
  EXPECT_EQ(h->head, h);
  EXPECT_EQ(h->cache, nullptr);
  EXPECT_EQ(h->id, cp->id);
  EXPECT_EQ(h->stamp, 7);
  EXPECT_EQ(h->screenStamp, 8);
  EXPECT_EQ(cp->head, top);  // cp untouched
  EXPECT_EQ(top->stackNext, cp);
  EXPECT_EQ(h->GetS(), 0.25f);
  EXPECT_EQ(h->s, 0.25f);
  delete h;
}

TEST_F(HookSegmentCPTest, GetSSnapsToQuartersAndStores) {
  struct Case {
    float in, out;
  };
  // Negative infinity is below 0.375 by bit pattern, NaN snaps to the half,
  // positive infinity is above 0.625.
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN(), kInf = std::numeric_limits<float>::infinity();
  const Case cases[] = {
      {0.9f, 0.75f},  {0.375f, 0.25f}, {0.625f, 0.5f}, {std::nextafter(0.625f, 1.0f), 0.75f},
      {-0.0f, 0.25f}, {1.5f, 0.75f},   {-1.0f, 0.25f}, {std::nextafter(0.375f, 1.0f), 0.5f},
      {kNaN, 0.5f},   {-kNaN, 0.25f},  {-kInf, 0.25f}, {kInf, 0.75f},
  };
  HookSegmentCP* h = f.NewHook(0);
  f.Open({h});
  for (const Case& c : cases) {
    h->SetS(c.in);
    EXPECT_EQ(h->GetS(), c.out) << c.in;
    EXPECT_EQ(h->s, c.out) << c.in;
  }
}

TEST_F(HookSegmentCPTest, CopyKeepsEveryMemberIncludingTheHead) {
  HookSegmentCP* h = f.NewHook(0.5f);
  f.Open({h});
  h->hit = Vector(1, 0, 0);
  h->pot = Vector(4, 0, 0);
  h->mpot = Vector(8, 0, 0);
  h->tempv = Vector(9, 0, 0);
  HookSegmentCP copy(*h);
  EXPECT_EQ(copy.s, 0.5f);
  EXPECT_EQ(copy.head, h);
  EXPECT_EQ(copy.cache, &f.cache);
  ExpectVector(copy.hit, Vector(1, 0, 0));
  ExpectVector(copy.pot, Vector(4, 0, 0));
  ExpectVector(copy.mpot, Vector(8, 0, 0));
  ExpectVector(copy.tempv, Vector(9, 0, 0));
  HookSegmentCP assigned;
  assigned = *h;
  ExpectVector(assigned.mpot, Vector(8, 0, 0));
  EXPECT_EQ(assigned.flags, h->flags);
  // Both would release id's muscle data: detach before they go.
  copy.cache = nullptr;
  assigned.cache = nullptr;
}

TEST_F(HookSegmentCPTest, MuscleAccessorsDoNotPlace) {
  SegmentCP* carrier = f.NewCP(Vector(0, 0, 0));
  HookSegmentCP* h = f.NewHook(0.5f);
  f.Open({carrier, f.NewCP(Vector(3, 0, 0))});
  f.Open({h});
  TestFigure::Stack({carrier, h});
  h->mhit = Vector(1, 1, 1);
  h->p = Vector(7, 7, 7);
  EXPECT_FALSE(h->IsMpCached());
  ExpectVector(*h->Getmhit(), Vector(1, 1, 1));
  EXPECT_EQ(h->Getmpot(), &h->mpot);
  ExpectVector(h->p, Vector(7, 7, 7));
  EXPECT_EQ(&h->Gettempv(), &h->Gettempv());
  // The screen accessors place.
  h->Getpit();
  EXPECT_EQ(h->p == Vector(7, 7, 7), 0);
}

}  // namespace
}  // namespace splinecore
