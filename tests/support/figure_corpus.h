// The shared figures: every figure file of examples/figures, tests/figures
// and the figure-file fuzz corpus that reads.
#ifndef SPLINECORE_TESTS_FIGURE_CORPUS_H
#define SPLINECORE_TESTS_FIGURE_CORPUS_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "figure_members.h"
#include "splinecore/figure.h"
#include "splinecore/figure_file.h"
#include "splinecore/hooks.h"
#include "splinecore/segment_cp.h"

namespace splinecore::test {

// The files of `dir` (relative to the source tree), in name order.
inline std::vector<std::filesystem::path> FigureFiles(const char* dir) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(SPLINECORE_SOURCE_DIR) / dir))
    files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

inline FigureDescription LoadFigure(const std::filesystem::path& file) {
  std::ifstream in(file);
  return ReadFigureFile(std::string(std::istreambuf_iterator<char>(in), {}));
}

// tests/figures/<name>.json.
inline FigureDescription SharedFigure(const std::string& name) {
  return LoadFigure(std::filesystem::path(SPLINECORE_SOURCE_DIR) / "tests/figures" / (name + ".json"));
}

inline std::vector<FigureDescription> SharedFigures() {
  std::vector<FigureDescription> figures;
  for (const char* dir : {"examples/figures", "tests/figures", "fuzz/corpus/figure_file"}) {
    for (const std::filesystem::path& file : FigureFiles(dir)) {
      try {
        figures.push_back(LoadFigure(file));
      } catch (const FigureFileError&) {
        // The fuzz corpus holds broken files on purpose.
      }
    }
  }
  return figures;
}

// The spaces a figure answers in.
inline std::vector<Space> Spaces(const Figure& f) {
  if (f.MuscleMode()) return {Space::kModel, Space::kScreen, Space::kMuscle};
  return {Space::kModel, Space::kScreen};
}

// Every answer the figure gives, as bits, and (when asked) its SVG paths.
inline std::vector<std::uint32_t> Answers(Figure& f, std::string* svg = nullptr) {
  std::vector<float> out;
  auto put = [&out](const Vector& v) { out.insert(out.end(), {v.x, v.y, v.z}); };
  for (int s = 0; s < f.SplineCount(); ++s) {
    out.push_back(f.SplineLength(s));
    for (const PointOnSpline& p : f.PointsAtLengths(s, {0.0f, 0.7f, 2.5f, 1e4f})) {
      put(p.position);
      put(p.direction);
    }
    for (const Vector& v : f.Sample(s, 3)) put(v);
    if (svg != nullptr)
      for (Space space : Spaces(f)) *svg += f.SvgPath(s, space) + "\n";
    for (int i = 0; i < f.PointCount(s); ++i) {
      const PointId p{s, i};
      for (Space space : Spaces(f)) {
        put(f.Position(p, space));
        if (!f.OwnsSegment(p)) continue;
        const Bezier b = f.Segment(p, space);
        for (const Vector& v : {b.p0, b.h0, b.h1, b.p1}) put(v);
        for (const Bezier& piece : f.HookPieces(p, space))
          for (const Vector& v : {piece.p0, piece.h0, piece.h1, piece.p1}) put(v);
      }
      if (f.OwnsSegment(p)) out.push_back(f.SegmentLength(p));
    }
  }
  std::vector<std::uint32_t> bits(out.size());
  std::memcpy(bits.data(), out.data(), out.size() * sizeof(float));
  return bits;
}

}  // namespace splinecore::test

#endif
