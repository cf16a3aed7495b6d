// The figure record's "in" flag is bit 0 of figureFlags; the host's other
// bits are never touched. Each OffCached call clears its caches' flags and
// no other bit; Touch moves both stamps one down. A muscle position that
// comes out as before leaves its neighbours' conversions in place.
#include <memory>

#include <gtest/gtest.h>

#include "splinecore/figure.h"
#include "splinecore/host.h"
#include "splinecore/segment_cp.h"
#include "test_figure.h"

namespace splinecore {
namespace {

TEST(FigureFlags, InIsBitZeroAndLeavesTheOtherBits) {
  Figure figure;
  SplineDesc spline;
  spline.points.push_back(PointDesc{});
  SegmentCP* c = figure.ControlPoint(PointId{figure.AddSpline(spline), 0});
  std::uint32_t& flags = c->cache->figure->figureFlags;
  flags = 0xF0u;
  c->SetIn(3);  // only bit 0 of the argument counts
  EXPECT_EQ(flags, 0xF1u);
  EXPECT_TRUE(c->IsIn());
  c->SetIn(2);
  EXPECT_EQ(flags, 0xF0u);
  EXPECT_FALSE(c->IsIn());
}

TEST(CacheFlags, EachOffCachedClearsItsFlagsAndNoOther) {
  using namespace cpflag;
  const std::uint32_t model = muscleDeltaCached | musclepCached | otCached | itCached;
  const std::uint32_t muscle = motCached | mitCached;
  const std::uint32_t screen = screenotCached | screenitCached;
  const struct {
    void (SegmentCP::*off)();
    std::uint32_t cleared;
  } cases[] = {
      {&SegmentCP::OffCacheditot, model},           {&SegmentCP::OffCachedpitot, model | pCached},
      {&SegmentCP::OffCachedmitot, muscle},         {&SegmentCP::OffCachedmpitot, muscle | mpCached},
      {&SegmentCP::OffCachedscreenitot, screen},    {&SegmentCP::OffCachedscreenpitot, screen | screenpCached},
  };
  for (const auto& k : cases) {
    const std::unique_ptr<SegmentCP> c(new SegmentCP());  // a zero-filled block
    c->flags = 0xFFFFFFFFu;
    ((*c).*k.off)();
    EXPECT_EQ(c->flags, ~k.cleared);
  }
  const std::unique_ptr<SegmentCP> t(new SegmentCP());  // stamp 255
  t->screenStamp = 7;
  t->Touch(0);  // moves both stamps one down
  EXPECT_TRUE(t->stamp == 254 && t->screenStamp == 6);
}

struct Lift final : MuscleEffect {
  std::int32_t ApplyToPosition(std::int32_t, SegmentCP*, Vector* p) override { return p->y += 1, 1; }
  std::int16_t ApplyToInDelta(std::int32_t, SegmentCP*, Delta*) override { return 0; }
  std::int16_t ApplyToOutDelta(std::int32_t, SegmentCP*, Delta*) override { return 0; }
};

TEST(MuscleMoved, AnUnchangedMusclePositionKeepsTheNeighboursConverted) {
  test::TestFigure f;
  f.AddMuscleTable(4);
  f.SetMuscleMode(true);
  SegmentCP *a = f.NewCP(Vector(0, 0, 0), cpflag::smooth), *b = f.NewCP(Vector(2, 0, 0), cpflag::smooth);
  f.Open({a, b});
  f.AddEffect<Lift>(f.AddMuscleData(b));
  EXPECT_EQ(b->Getp(), Vector(2, 1, 0));  // moved: a converts again
  a->Getscreenit();
  b->OffCachedpitot();
  EXPECT_EQ(b->Getp(), Vector(2, 1, 0));
  EXPECT_NE(a->IsConverted(), 0);
}

}  // namespace
}  // namespace splinecore
