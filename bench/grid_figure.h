// A large figure for benchmarks and the whole-figure tests: a grid of
// crossing smooth splines stacked at every crossing (some closed), with a two-point
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

// The grid of n x n points described: rows are splines 0 .. n-1, columns
// n .. 2n-1, then the hook splines.
inline FigureDescription GridDescription(int n) {
  FigureDescription d;
  const Delta turnedIn{5.0f, 3.0f, 1.0f}, turnedOut{0.0f, -4.0f, 1.25f};
  auto at = [](int r, int c) {
    return Vector(static_cast<float>(c) + 0.1f * std::sin(0.7f * r), static_cast<float>(r), 0.05f * c);
  };
  for (int line = 0; line < 2 * n; ++line) {
    SplineDesc s;
    s.closed = line % 10 == 9;
    for (int i = 0; i < n; ++i) {
      PointDesc p{line < n ? at(line, i) : at(i, line - n)};
      if (line < n && (line * n + i) % 7 == 0) {
        p.in = turnedIn;
        p.out = turnedOut;
      }
      s.points.push_back(p);
    }
    d.splines.push_back(s);
  }
  for (int r = 0; r < n; ++r)
    for (int c = 0; c < n; ++c) {
      d.stacks.push_back({PointId{r, c}, PointId{n + c, r}});
      if (c % 10 != 5 || (c + 1 == n && r % 10 != 9)) continue;
      // A hook at s = 0.5 on the row's segment, on a two-point spline.
      SplineDesc hook;
      hook.points.push_back(PointDesc{at(r, c) + Vector(0.5f, 0.3f, 0.0f)});
      hook.points.push_back(PointDesc{});  // not a list assignment: GCC 12 -O3 warns falsely
      hook.points[1].hook = true;
      d.hooks.push_back(HookDesc{PointId{static_cast<int>(d.splines.size()), 1}, PointId{r, c}});
      d.splines.push_back(hook);
    }
  const float angle = 0.3f, scale = 40.0f, cs = scale * std::cos(angle), sn = scale * std::sin(angle);
  const float ic = std::cos(angle) / scale, is = std::sin(angle) / scale;
  d.screen = d.view = Matrix{{{cs, -sn, 0, 300}, {sn, cs, 0, -200}, {0, 0, scale, 10}}};
  d.inverseScreen = d.inverseView = Matrix{{{ic, is, 0, -(ic * 300 + is * -200)},
                                            {-is, ic, 0, -(-is * 300 + ic * -200)},
                                            {0, 0, 1 / scale, -10 / scale}}};
  return d;
}

class GridFigure {
 public:
  explicit GridFigure(int n) : figure_(GridDescription(n)) {
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
