// A large figure for benchmarks, built through Figure: a grid of crossing
// smooth splines stacked at every crossing (some closed), with a two-point
// hook spline riding on one row segment in ten, non-zero deltas on some
// points, and a screen transform that rotates, scales and translates. The
// kernel benchmarks take the raw control points (ControlPoint) and the
// figure's FigureCache and ViewRecord through them.
#ifndef SPLINECORE_BENCH_GRID_FIGURE_H
#define SPLINECORE_BENCH_GRID_FIGURE_H

#include <cmath>
#include <vector>

#include "splinecore/splinecore.h"

namespace splinecore::bench {

class GridFigure {
 public:
  explicit GridFigure(int n) {
    const Delta turnedIn{5.0f, 3.0f, 1.0f}, turnedOut{0.0f, -4.0f, 1.25f};
    auto at = [](int r, int c) {
      return Vector(static_cast<float>(c) + 0.1f * std::sin(0.7f * r), static_cast<float>(r), 0.05f * c);
    };
    for (int r = 0; r < n; ++r) {  // rows: splines 0 .. n-1
      SplineDesc row;
      row.closed = r % 10 == 9;
      for (int c = 0; c < n; ++c) {
        PointDesc p{at(r, c)};
        if ((r * n + c) % 7 == 0) {
          p.in = turnedIn;
          p.out = turnedOut;
        }
        row.points.push_back(p);
      }
      figure_.AddSpline(row);
    }
    for (int c = 0; c < n; ++c) {  // columns: splines n .. 2n-1
      SplineDesc column;
      column.closed = c % 10 == 9;
      for (int r = 0; r < n; ++r) column.points.push_back(PointDesc{at(r, c)});
      figure_.AddSpline(column);
    }
    for (int r = 0; r < n; ++r)
      for (int c = 0; c < n; ++c) {
        const PointId top{r, c};
        figure_.Stack({top, PointId{n + c, r}});
        if (c % 10 != 5 || !figure_.OwnsSegment(top)) continue;
        // A hook at s = 0.5 on the row's segment, on a two-point spline.
        SplineDesc hook;
        hook.points.push_back(PointDesc{at(r, c) + Vector(0.5f, 0.3f, 0.0f)});
        hook.points.push_back(PointDesc{});
        hook.points[1].hook = true;
        const int spline = figure_.AddSpline(hook);
        figure_.AddHook(PointId{spline, 1}, top);
      }
    const float angle = 0.3f, scale = 40.0f, cs = scale * std::cos(angle), sn = scale * std::sin(angle);
    const float ic = std::cos(angle) / scale, is = std::sin(angle) / scale;
    const Matrix screen{{{cs, -sn, 0, 300}, {sn, cs, 0, -200}, {0, 0, scale, 10}}};
    const Matrix inverse{{{ic, is, 0, -(ic * 300 + is * -200)},
                          {-is, ic, 0, -(-is * 300 + ic * -200)},
                          {0, 0, 1 / scale, -10 / scale}}};
    figure_.SetScreen(screen, inverse);
    figure_.SetView(screen, inverse);
    for (int s = 0; s < figure_.SplineCount(); ++s)
      for (int i = 0; i < figure_.PointCount(s); ++i) points_.push_back(figure_.ControlPoint(PointId{s, i}));
  }

  Figure& figure() { return figure_; }
  FigureCache& cache() { return *points_.front()->cache; }
  // Every control point, spline by spline.
  const std::vector<SegmentCP*>& points() const { return points_; }
  const ViewRecord& view() const { return *points_.front()->cache->view; }

 private:
  Figure figure_;
  std::vector<SegmentCP*> points_;
};

}  // namespace splinecore::bench

#endif
