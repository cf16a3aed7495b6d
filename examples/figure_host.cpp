// The README's host example: one open spline of three smooth points, its
// first segment's screen Bezier points, a point on it and the spline's length,
// through Figure (the library owns the records and keeps them coherent).
#include <cstdio>

#include "splinecore/figure.h"
#include "splinecore/measure.h"

int main() {
  using namespace splinecore;
  Figure figure;  // identity transforms; every point smooth, no turn, by default
  SplineDesc spline;
  for (Vector at : {Vector(0, 0, 0), Vector(2, 1, 0), Vector(4, 0, 0)}) spline.points.push_back(PointDesc{at});
  const int s = figure.AddSpline(spline);

  // Point 0's segment runs from its next (parameter 0) to point 0 (parameter 1).
  Bezier b = figure.Segment(PointId{s, 0}, Space::kScreen);
  Vector mid;
  CalcPoint(b.p0, b.h0, b.h1, b.p1, 0.5f, mid);
  std::printf("length %.6f, first segment's middle (%.6f, %.6f)\n", figure.SplineLength(s), mid.x, mid.y);

  figure.Move(PointId{s, 1}, Vector(2, 2, 0));  // edits need no invalidation by hand
  std::printf("after the move: length %.6f\n", figure.SplineLength(s));
  try {
    figure.Move(PointId{s, 7}, Vector(0, 0, 0));
  } catch (const FigureError& e) {
    std::printf("refused: %s\n", e.what());
  }
}
