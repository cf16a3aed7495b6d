// What the demo asks a Figure, gathered in screen space for drawing and in
// view space for the table.
#ifndef SPLINECORE_EXAMPLES_SCENE_H
#define SPLINECORE_EXAMPLES_SCENE_H

#include <string>
#include <string_view>
#include <vector>

#include "splinecore/figure.h"

namespace splinecore::demo {

struct PointView {
  Vector screen;        // screen position of the stack
  Vector in, out;       // screen handle points of the segments it owns and ends (screen where none)
  bool smooth = false;
  bool hook = false;
  bool stackHead = false;  // top of a stack with more than one member
  bool moved = false;      // carries a muscle effect
};

struct SplineView {
  std::string name;
  bool closed = false;
  int points = 0;
  int segments = 0;
  int hooks = 0;    // hook control points of this spline
  int carried = 0;  // hooks riding on this spline's segments
  float length = 0;
  std::vector<Bezier> curve;  // one per segment, in spline order
  std::string path;           // the same segments as an SVG path (Figure::SvgPath)
  std::vector<PointView> cps;
};

struct LengthMarker {
  float length;        // requested length from the spline's first point
  Vector view, dir;    // view-space point and direction as the library returns them
  Vector screen, screenDir;
};

struct Scene {
  bool muscle = false;
  std::vector<SplineView> splines;
  std::vector<Bezier> hookPieces;  // pieces of carrier segments cut at their hooks, in screen space
  std::string measured;            // the spline that carries the length markers
  std::vector<LengthMarker> markers;
};

// A figure and the spline the demo walks at equal length steps.
struct DemoFigure {
  Figure figure;
  int measured = 0;
};

// Reads a figure file (docs/figure-format.md); its "x-measure" names the
// measured spline (default: the first). Throws FigureFileError.
DemoFigure ReadDemoFigure(std::string_view text);

// The built-in figure (examples/figures/builtin.json): open and closed
// splines, stacks, runs of three hooks, deltas, a turned and scaled screen,
// a muscle effect; then the high rail reversed, its hooks passing to the
// new carrier.
DemoFigure BuiltinFigure();

// Queries every spline of the figure in its current mode, and `steps` equal
// length steps along spline `measured`.
Scene QueryScene(Figure& figure, int measured, int steps);

// Equal length steps the demo walks along the measured spline.
inline constexpr int kLengthSteps = 8;

struct DemoRun {
  Scene model;
  Scene muscle;
};

// Queries the figure in model mode, then in muscle mode (and leaves it there).
DemoRun RunDemo(DemoFigure& figure);

// The table the demo prints: per spline length, segments and hooks, then the
// points at the length steps.
std::string FormatTable(const Scene& scene);

}  // namespace splinecore::demo

#endif
