// SPDX-License-Identifier: MIT
/// @file
/// Figure files: a FigureDescription as JSON text, both ways. The format is
/// described in docs/figure-format.md; examples/figures/patch.json is a
/// complete example.
#ifndef SPLINECORE_FIGURE_FILE_H
#define SPLINECORE_FIGURE_FILE_H

#include <string>
#include <string_view>

#include "splinecore/export.h"
#include "splinecore/figure.h"

namespace splinecore {

/// A figure file that cannot be read: what() is "line N: reason", or the
/// reason alone when no line applies (line() == 0).
class SPLINECORE_API FigureFileError : public FigureError {
 public:
  FigureFileError(int line, const std::string& reason);  ///< line 0: no line applies
  int line() const { return line_; }                      ///< 1-based line, or 0
  const std::string& reason() const { return reason_; }   ///< the reason without the line

 private:
  int line_;
  std::string reason_;
};

/// Parses `text` and checks the figure it describes by building it, so that
/// Figure(result) succeeds. Throws FigureFileError at the first problem:
/// malformed JSON, an unknown key, a value of the wrong type or out of range
/// (coordinates within +-1e6), a bad point reference, or a figure rule the
/// built figure breaks, reported at the line of the offending point.
SPLINECORE_API FigureDescription ReadFigureFile(std::string_view text);

/// The figure file of `description`: every float written so that it reads
/// back to the same bits, transforms as matrices with their inverses.
/// Throws FigureError when the description holds a host muscle effect
/// (CustomMuscleEffect), which a file cannot carry.
SPLINECORE_API std::string WriteFigureFile(const FigureDescription& description);

}  // namespace splinecore

#endif
