// Reads a figure description (JSON) into a HostFigure.
//
// The format (every key but "splines" optional):
//   {
//     "view":   {"rotate": 10, "scale": 50, "translate": [100, 400]},
//     "splines": [
//       {"name": "rail", "closed": false, "points": [
//         {"at": [0, 0]},                                    // smooth by default
//         {"at": [2, 0, 0], "smooth": false,
//          "in": [pitch, yaw, magnitude], "out": [0, 15, 1.2]},
//         {"hook": 0.5}                                      // rides on its carrier's segment
//       ]}
//     ],
//     "stacks": [["left:1", "rail:1", "cross:0"]],           // "spline:index", top to bottom
//     "muscle": [{"point": "rail:2", "move": [0, 1]}],         // an OffsetEffect each
//     "measure": "rail"                                      // walked at length steps
//   }
// A hook hangs in a stack below its carrier; non-hook stack members must sit
// at their head's position. After building, the figure is checked with
// ValidateFigure; a violation is reported at the offending point's line.
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
