// A Figure whose points tests name "spline:index", by spline name.
#ifndef SPLINECORE_TESTS_NAMED_FIGURE_H
#define SPLINECORE_TESTS_NAMED_FIGURE_H

#include <string>
#include <vector>

#include "splinecore/figure.h"
#include "splinecore/figure_file.h"

namespace splinecore::test {

struct NamedFigure {
  explicit NamedFigure(const std::string& text) : f(ReadFigureFile(text)) {}
  explicit NamedFigure(const FigureDescription& d) : f(d) {}
  std::string Name(PointId p) const { return f.SplineName(p.spline) + ":" + std::to_string(p.index); }
  SegmentCP* operator[](const std::string& ref) {
    const std::size_t colon = ref.find(':');
    return f.ControlPoint(PointId{f.FindSpline(ref.substr(0, colon)), std::stoi(ref.substr(colon + 1))});
  }
  // Every point's name, spline by spline; and the name of c (empty: none).
  std::vector<std::string> Names() const {
    std::vector<std::string> out;
    for (int s = 0; s < f.SplineCount(); ++s)
      for (int i = 0; i < f.PointCount(s); ++i) out.push_back(Name(PointId{s, i}));
    return out;
  }
  std::string Name(const SegmentCP* c) {
    for (int s = 0; s < f.SplineCount(); ++s)
      for (int i = 0; i < f.PointCount(s); ++i)
        if (f.ControlPoint(PointId{s, i}) == c) return Name(PointId{s, i});
    return {};
  }
  Figure f;
};

}  // namespace splinecore::test

#endif
