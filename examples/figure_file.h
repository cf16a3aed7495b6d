// Reads a figure file (the library's format, docs/figure-format.md) into
// the demo's HostFigure. The demo's own annotation "x-measure" names the
// spline it walks at equal length steps (default: the first).
// examples/figures/patch.json is a complete example.
#ifndef SPLINECORE_EXAMPLES_FIGURE_FILE_H
#define SPLINECORE_EXAMPLES_FIGURE_FILE_H

#include <memory>
#include <string>
#include <string_view>

#include "host_figure.h"

namespace splinecore::demo {

struct FigureFileError {
  int line = 0;        // 1-based line of the offending text; 0 when none applies
  std::string reason;  // one sentence, no line prefix
};

struct FigureFileResult {
  std::unique_ptr<HostFigure> figure;  // null on error
  FigureFileError error;               // meaningful only when figure is null
};

// Parses `text` and builds the figure it describes. Never throws; on any
// error nothing is kept (every control point built so far is freed).
FigureFileResult ReadFigureFile(std::string_view text);

// "line N: reason", or the reason alone when line is 0.
std::string FormatFigureFileError(const FigureFileError& error);

}  // namespace splinecore::demo

#endif
