#include "figure_file.h"

#include <map>
#include <new>
#include <vector>

#include <nlohmann/json.hpp>

#include "splinecore/figure_file.h"

namespace splinecore::demo {

namespace {

// The HostFigure of a checked description: its points, stacks with each
// carrier's hooks hung below it, transforms and muscle offsets.
std::unique_ptr<HostFigure> Build(const FigureDescription& d) {
  auto figure = std::make_unique<HostFigure>();
  std::vector<std::vector<SegmentCP*>> points;
  for (const SplineDesc& s : d.splines) {
    std::vector<SegmentCP*> cps;
    for (const PointDesc& p : s.points) {
      SegmentCP* cp = p.hook ? figure->NewHook(p.s, p.in, p.out) : figure->NewPoint(p.at, p.smooth, p.in, p.out);
      if (p.hook) cp->SetSmooth(p.smooth ? 1 : 0);
      cps.push_back(cp);
    }
    points.push_back(cps);
    figure->AddSpline(s.name, std::move(cps), s.closed);
  }
  auto at = [&](PointId id) { return points[static_cast<std::size_t>(id.spline)][static_cast<std::size_t>(id.index)]; };
  std::map<SegmentCP*, std::vector<SegmentCP*>> runs;
  for (const HookDesc& h : d.hooks) runs[at(h.carrier)].push_back(at(h.hook));
  auto withRuns = [&](const std::vector<SegmentCP*>& members) {
    std::vector<SegmentCP*> out;
    for (SegmentCP* m : members) {
      out.push_back(m);
      const auto run = runs.find(m);
      if (run == runs.end()) continue;
      out.insert(out.end(), run->second.begin(), run->second.end());
      runs.erase(run);
    }
    return out;
  };
  for (const std::vector<PointId>& stack : d.stacks) {
    std::vector<SegmentCP*> members;
    for (PointId id : stack) members.push_back(at(id));
    HostFigure::Stack(withRuns(members));
  }
  while (!runs.empty()) HostFigure::Stack(withRuns({runs.begin()->first}));
  figure->view.viewMatrix = d.view;
  figure->view.inverseViewMatrix = d.inverseView;
  figure->view.screenMatrix = d.screen;
  figure->view.inverseScreenMatrix = d.inverseScreen;
  for (const MuscleEffectDesc& m : d.muscleEffects) figure->AddMuscleOffset(at(m.point), m.offset);
  figure->Invalidate();
  return figure;
}

}  // namespace

FigureFileResult ReadFigureFile(std::string_view text) {
  FigureFileResult result;
  try {
    const FigureDescription d = splinecore::ReadFigureFile(text);
    result.figure = Build(d);
    const nlohmann::json doc = nlohmann::json::parse(text.begin(), text.end());
    if (doc.contains("x-measure") && doc["x-measure"].is_string()) {
      for (std::size_t i = 0; i < d.splines.size(); ++i)
        if (d.splines[i].name == doc["x-measure"].get<std::string>()) result.figure->measured = i;
    }
  } catch (const splinecore::FigureFileError& e) {
    result.figure.reset();
    result.error = {e.line(), e.reason()};
  } catch (const std::bad_alloc&) {
    result.figure.reset();
    result.error = {0, "out of memory"};
  }
  return result;
}

std::string FormatFigureFileError(const FigureFileError& error) {
  if (error.line == 0) return error.reason;
  return "line " + std::to_string(error.line) + ": " + error.reason;
}

}  // namespace splinecore::demo
