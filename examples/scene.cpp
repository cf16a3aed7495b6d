#include "scene.h"

#include <cstdio>

namespace splinecore::demo {

namespace {

Vector At(float x, float y) { return Vector(x, y, 0); }

// View space -> screen space: back to model space, then the screen transform.
Vector ViewToScreen(const ViewRecord& view, const Vector& v) {
  return TransformPoint(view.screenMatrix, TransformPoint(view.inverseViewMatrix, v));
}

Vector ViewDirToScreen(const ViewRecord& view, Vector d) {
  TransformDirection(view.inverseViewMatrix, d);
  TransformDirection(view.screenMatrix, d);
  return d;
}

bool HasMuscleData(SegmentCP* cp) {
  MuscleTable* table = cp->cache->muscleTable;
  return table != nullptr && cp->id < table->count && table->cpData[cp->id] != nullptr;
}

PointView QueryPoint(SegmentCP* cp) {
  PointView v;
  v.screen = cp->Getscreenp();
  v.in = cp->Getscreenit();
  v.out = cp->Getscreenot();
  v.smooth = cp->IsSmooth();
  v.hook = cp->IsHook();
  v.stackHead = cp->head == cp && !cp->IsHook() && cp->stackNext != nullptr;
  v.moved = HasMuscleData(cp);
  return v;
}

// The segment that c owns runs from c's next (parameter 0) to c.
Bezier QuerySegment(SegmentCP* c) {
  SegmentCP* n = c->next;
  return Bezier{n->Getscreenp(), n->Getscreenot(), c->Getscreenit(), c->Getscreenp()};
}

// The pieces of a carrier's segment: carrier -> hook 1 -> ... -> last hook ->
// carrier's next. Each hook holds the inner points of the piece ending at it.
void QueryHookPieces(SegmentCP* carrier, const Matrix& screen, std::vector<Bezier>& pieces) {
  Vector from = carrier->Getp();
  for (SegmentCP* m = carrier->stackNext; m != nullptr && m->IsHook(); m = m->stackNext) {
    auto* hook = static_cast<HookSegmentCP*>(m);
    const Vector hit = *hook->Gethit(), hot = *hook->Gethot();
    const Vector at = hook->Getp();
    pieces.push_back(Bezier{TransformPoint(screen, from), TransformPoint(screen, hit),
                            TransformPoint(screen, hot), TransformPoint(screen, at)});
    from = at;
    // The run ends at a non-hook member or at the bottom of the stack (where
    // lastHook is not set).
    if (m->stackNext == nullptr || !m->stackNext->IsHook()) {
      pieces.push_back(Bezier{TransformPoint(screen, at), TransformPoint(screen, *hook->Getpit()),
                              TransformPoint(screen, *hook->Getpot()),
                              TransformPoint(screen, carrier->next->Getp())});
    }
  }
}

int CarriedHooks(SegmentCP* carrier) {
  int count = 0;
  for (SegmentCP* m = carrier->stackNext; m != nullptr && m->IsHook(); m = m->stackNext) ++count;
  return count;
}

}  // namespace

std::unique_ptr<HostFigure> BuildBuiltinFigure() {
  auto figure = std::make_unique<HostFigure>();
  HostFigure& f = *figure;
  auto smooth = [&](float x, float y) { return f.NewPoint(At(x, y), true); };
  auto peak = [&](float x, float y) { return f.NewPoint(At(x, y), false); };

  // Two rails crossed by two posts; three hook splines run between the posts,
  // riding on the rails' middle segments at a quarter, the half and three quarters.
  const auto low = f.AddSpline("low", {peak(0, 0), smooth(2, 0), smooth(6, 0), smooth(8, 1)}, false).points;
  const auto high = f.AddSpline("high", {peak(0, 4), smooth(2, 4),
                                    f.NewPoint(At(6, 4), true, kNoDelta, Delta{0, 10, 1.2f}), smooth(8, 4.5f)},
                           false).points;
  const auto left = f.AddSpline("left", {peak(2, -1.5f), smooth(2, 0), smooth(2, 4), peak(2, 5.5f)}, false).points;
  const auto right = f.AddSpline("right", {peak(6, -1.5f), smooth(6, 0), smooth(6, 4), peak(6, 5.5f)}, false).points;
  std::vector<SegmentCP*> lowRun, highRun;
  for (float s : {0.25f, 0.5f, 0.75f}) {
    const float x = 2 + 4 * s;
    HookSegmentCP* onLow = f.NewHook(s);
    HookSegmentCP* onHigh = f.NewHook(s);
    char name[8];
    std::snprintf(name, sizeof name, "h%02d", static_cast<int>(s * 100));
    f.AddSpline(name, {peak(x, -1.5f), onLow, onHigh, peak(x, 5.5f)}, false);
    lowRun.push_back(onLow);
    highRun.push_back(onHigh);
  }
  // A closed loop joined to both rails' ends; a turned and lengthened smooth
  // point and a peak with a pitched, shortened in-tangent.
  const auto loop = f.AddSpline("loop", {smooth(8, 1), smooth(11.5f, 0.2f),
                                    f.NewPoint(At(13, 2.5f), true, Delta{0, 20, 1.3f}, Delta{0, 20, 1.3f}),
                                    f.NewPoint(At(11, 5.5f), false, Delta{25, 0, 0.8f}, Delta{0, -15, 1}),
                                    smooth(8, 4.5f)},
                           true).points;
  // A straight stroke: its length is the chord, 5.
  f.AddSpline("stroke", {peak(9, -3), peak(13, 0)}, false);

  // Stacks, top to bottom: the posts head the rail crossings; each run of
  // hooks hangs below its carrier, between the partners at both segment ends.
  std::vector<SegmentCP*> lowStack{left[1], low[1]};
  lowStack.insert(lowStack.end(), lowRun.begin(), lowRun.end());
  std::vector<SegmentCP*> highStack{left[2], high[1]};
  highStack.insert(highStack.end(), highRun.begin(), highRun.end());
  HostFigure::Stack(lowStack);
  HostFigure::Stack(highStack);
  HostFigure::Stack({right[1], low[2]});
  HostFigure::Stack({right[2], high[2]});
  HostFigure::Stack({low[3], loop[0]});
  HostFigure::Stack({high[3], loop[4]});

  // Screen: turned by 10 degrees, 64 pixels to the unit, y up, shifted.
  f.SetScreen(10, 64, 120, 520);
  // Muscle mode lifts the right post's upper crossing, and the high rail's
  // hooks with it.
  f.AddMuscleOffset(right[2], Vector(0.75f, 1.0f, 0));
  // The high rail runs the other way: its run of hooks passes to the new carrier.
  f.ReverseSpline(1);
  f.measured = 7;  // the loop
  return figure;
}

Scene QueryScene(HostFigure& figure, std::size_t measured, int steps) {
  Scene scene;
  scene.muscle = (figure.cache.mode & kMuscleMode) != 0;
  for (const HostFigure::Spline& spline : figure.splines) {
    SplineView v;
    v.name = spline.name;
    v.closed = spline.closed;
    v.points = static_cast<int>(spline.points.size());
    for (SegmentCP* cp : spline.points) {
      v.cps.push_back(QueryPoint(cp));
      if (cp->IsHook()) ++v.hooks;
      if (cp->next == nullptr) continue;
      v.curve.push_back(QuerySegment(cp));
      ++v.segments;
      if (!cp->IsHook() && cp->IsHasHooks()) {
        v.carried += CarriedHooks(cp);
        QueryHookPieces(cp, figure.view.screenMatrix, scene.hookPieces);
      }
    }
    v.length = GetTotalLength(spline.points.front());
    scene.splines.push_back(std::move(v));
  }
  if (measured < figure.splines.size() && steps > 0) {
    SegmentCP* first = figure.splines[measured].points.front();
    scene.measured = figure.splines[measured].name;
    const float total = scene.splines[measured].length;
    for (int k = 0; k <= steps; ++k) {
      LengthMarker m{};
      m.length = static_cast<float>(static_cast<double>(total) * k / steps);
      m.dir = Vector(0, 0, 0);
      PositionDirectionFromSubLength(first, m.length, &m.view, &m.dir);
      m.screen = ViewToScreen(figure.view, m.view);
      m.screenDir = ViewDirToScreen(figure.view, m.dir);
      scene.markers.push_back(m);
    }
  }
  return scene;
}

DemoRun RunDemo(HostFigure& figure) {
  DemoRun run;
  figure.SetMuscleMode(false);
  run.model = QueryScene(figure, figure.measured, kLengthSteps);
  figure.SetMuscleMode(true);
  run.muscle = QueryScene(figure, figure.measured, kLengthSteps);
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
