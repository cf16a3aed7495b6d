#include "scene.h"

#include <cstdio>
#include <set>
#include <utility>

#include <nlohmann/json.hpp>

#include "builtin_figure.inc"
#include "splinecore/figure_file.h"

namespace splinecore::demo {

namespace {

// View space -> screen space: back to model space, then the screen transform.
Vector ViewToScreen(const FigureDescription& d, const Vector& v) {
  return TransformPoint(d.screen, TransformPoint(d.inverseView, v));
}

Vector ViewDirToScreen(const FigureDescription& d, Vector v) {
  TransformDirection(d.inverseView, v);
  TransformDirection(d.screen, v);
  return v;
}

}  // namespace

DemoFigure ReadDemoFigure(std::string_view text) {
  DemoFigure out{Figure(ReadFigureFile(text)), 0};
  const nlohmann::json doc = nlohmann::json::parse(text.begin(), text.end());
  if (doc.contains("x-measure") && doc["x-measure"].is_string())
    out.measured = std::max(0, out.figure.FindSpline(doc["x-measure"].get<std::string>()));
  return out;
}

DemoFigure BuiltinFigure() {
  DemoFigure f = ReadDemoFigure(kBuiltinFigureJson);
  f.figure.Reverse(f.figure.FindSpline("high"));
  return f;
}

Scene QueryScene(Figure& figure, int measured, int steps) {
  const FigureDescription d = figure.Describe();
  // Heads of stacks with more than one member: the tops of the listed
  // stacks, and carriers whose run hangs below them alone.
  std::set<std::pair<int, int>> heads, stacked, moved;
  for (const std::vector<PointId>& stack : d.stacks) {
    heads.insert({stack.front().spline, stack.front().index});
    for (PointId m : stack) stacked.insert({m.spline, m.index});
  }
  for (const HookDesc& h : d.hooks)
    if (stacked.count({h.carrier.spline, h.carrier.index}) == 0) heads.insert({h.carrier.spline, h.carrier.index});
  for (const MuscleEffectDesc& m : d.muscleEffects) moved.insert({m.point.spline, m.point.index});
  std::vector<int> carried(d.splines.size(), 0);
  for (const HookDesc& h : d.hooks) ++carried[static_cast<std::size_t>(h.carrier.spline)];

  Scene scene;
  scene.muscle = figure.MuscleMode();
  for (int s = 0; s < figure.SplineCount(); ++s) {
    const SplineDesc& spline = d.splines[static_cast<std::size_t>(s)];
    SplineView v;
    v.name = spline.name;
    v.closed = spline.closed;
    v.points = static_cast<int>(spline.points.size());
    v.carried = carried[static_cast<std::size_t>(s)];
    for (int i = 0; i < v.points; ++i) {
      const PointId id{s, i};
      const PointDesc& p = spline.points[static_cast<std::size_t>(i)];
      PointView c;
      c.screen = c.in = c.out = figure.Position(id, Space::kScreen);
      c.smooth = p.smooth;
      c.hook = p.hook;
      c.stackHead = heads.count({s, i}) != 0;
      c.moved = moved.count({s, i}) != 0;
      v.hooks += p.hook ? 1 : 0;
      v.cps.push_back(c);
    }
    // A point's in-handle starts the segment it owns; its out-handle is in
    // the segment of its prev, which ends at it.
    for (int i = 0; i < v.points; ++i) {
      if (!figure.OwnsSegment(PointId{s, i})) continue;
      const Bezier b = figure.Segment(PointId{s, i}, Space::kScreen);
      v.curve.push_back(b);
      ++v.segments;
      v.cps[static_cast<std::size_t>(i)].in = b.h1;
      v.cps[static_cast<std::size_t>((i + 1) % v.points)].out = b.h0;
      for (const Bezier& piece : figure.HookPieces(PointId{s, i}, Space::kScreen)) scene.hookPieces.push_back(piece);
    }
    v.path = figure.SvgPath(s, Space::kScreen);
    v.length = figure.SplineLength(s);
    scene.splines.push_back(std::move(v));
  }
  if (measured >= 0 && measured < figure.SplineCount() && steps > 0) {
    scene.measured = d.splines[static_cast<std::size_t>(measured)].name;
    const float total = scene.splines[static_cast<std::size_t>(measured)].length;
    std::vector<float> lengths;
    for (int k = 0; k <= steps; ++k) lengths.push_back(static_cast<float>(static_cast<double>(total) * k / steps));
    const std::vector<PointOnSpline> at = figure.PointsAtLengths(measured, lengths);
    for (std::size_t k = 0; k < at.size(); ++k) {
      const LengthMarker m{lengths[k], at[k].position, at[k].direction, ViewToScreen(d, at[k].position),
                           ViewDirToScreen(d, at[k].direction)};
      scene.markers.push_back(m);
    }
  }
  return scene;
}

DemoRun RunDemo(DemoFigure& f) {
  DemoRun run;
  f.figure.SetMuscleMode(false);
  run.model = QueryScene(f.figure, f.measured, kLengthSteps);
  f.figure.SetMuscleMode(true);
  run.muscle = QueryScene(f.figure, f.measured, kLengthSteps);
  return run;
}
std::string FormatTable(const Scene& scene) {
  std::string out;
  char line[160];
  auto add = [&](const char* text) { out += text; };
  std::snprintf(line, sizeof line, "%s mode\n", scene.muscle ? "muscle" : "model");
  add(line);
  add("spline  kind    points  segments  hooks  carried      length\n");
  for (const SplineView& s : scene.splines) {
    std::snprintf(line, sizeof line, "%-7s %-6s  %6d  %8d  %5d  %7d  %10.6f\n", s.name.c_str(),
                  s.closed ? "closed" : "open", s.points, s.segments, s.hooks, s.carried, s.length);
    add(line);
  }
  if (!scene.markers.empty()) {
    std::snprintf(line, sizeof line, "\npoints at %zu equal length steps along %s (view space)\n",
                  scene.markers.size() - 1, scene.measured.c_str());
    add(line);
    add("step     length           x           y       dir x       dir y\n");
    int k = 0;
    for (const LengthMarker& m : scene.markers) {
      std::snprintf(line, sizeof line, "%4d  %9.6f  %10.6f  %10.6f  %10.6f  %10.6f\n", k++, m.length, m.view.x,
                    m.view.y, m.dir.x, m.dir.y);
      add(line);
    }
  }
  return out;
}

}  // namespace splinecore::demo
