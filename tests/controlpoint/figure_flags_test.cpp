// The figure record's "in" flag is bit 0 of figureFlags; the host's other
// bits are never touched.
#include <gtest/gtest.h>

#include "splinecore/figure.h"
#include "splinecore/host.h"
#include "splinecore/segment_cp.h"

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

}  // namespace
}  // namespace splinecore
