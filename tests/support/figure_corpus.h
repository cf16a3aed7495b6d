// The shared figures: every figure file of examples/figures, tests/figures
// (when present) and the figure-file fuzz corpus that reads.
#ifndef SPLINECORE_TESTS_FIGURE_CORPUS_H
#define SPLINECORE_TESTS_FIGURE_CORPUS_H

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "splinecore/figure_file.h"

namespace splinecore::test {

inline std::vector<FigureDescription> SharedFigures() {
  std::vector<FigureDescription> figures;
  for (const char* dir : {"examples/figures", "tests/figures", "fuzz/corpus/figure_file"}) {
    const std::filesystem::path path = std::filesystem::path(SPLINECORE_SOURCE_DIR) / dir;
    if (!std::filesystem::is_directory(path)) continue;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
      std::ifstream in(entry.path());
      std::ostringstream text;
      text << in.rdbuf();
      try {
        figures.push_back(ReadFigureFile(text.str()));
      } catch (const FigureFileError&) {
        // The fuzz corpus holds broken files on purpose.
      }
    }
  }
  return figures;
}

}  // namespace splinecore::test

#endif
