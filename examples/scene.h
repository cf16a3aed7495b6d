// What the demo asks the library about a figure, gathered in screen space
// for drawing and in view space for the table.
#ifndef SPLINECORE_EXAMPLES_SCENE_H
#define SPLINECORE_EXAMPLES_SCENE_H

#include <memory>
#include <string>
#include <vector>

#include "host_figure.h"

namespace splinecore::demo {

// Four screen-space Bezier points of one segment or hook piece.
struct Bezier {
  Vector p0, h0, h1, p1;
};

struct PointView {
  Vector screen;        // screen position of the stack
  Vector in, out;       // screen handle points (equal to screen for a hook without partners)
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
  std::vector<Bezier> hookPieces;  // pieces of carrier segments cut at their hooks
  std::string measured;            // the spline that carries the length markers
  std::vector<LengthMarker> markers;
};

// The built-in figure: open and closed splines, stacks, a run of three hooks,
// deltas, a turned and scaled view, a muscle effect and a reversed slice.
std::unique_ptr<HostFigure> BuildBuiltinFigure();

// Queries every spline of the figure in its current mode, and `steps` equal
// length steps along splines[measured].
Scene QueryScene(HostFigure& figure, std::size_t measured, int steps);

// Equal length steps the demo walks along the measured spline.
inline constexpr int kLengthSteps = 8;

struct DemoRun {
  Scene model;
  Scene muscle;
};

// Queries the figure in model mode, then in muscle mode (and leaves it there).
DemoRun RunDemo(HostFigure& figure);

// The table the demo prints: per spline length, segments and hooks, then the
// points at the length steps.
std::string FormatTable(const Scene& scene);

}  // namespace splinecore::demo

#endif
