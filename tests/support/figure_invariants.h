// Structural checks of a figure for tests: a thin layer over ValidateFigure
// that turns its findings into messages and gtest failures.
#ifndef SPLINECORE_TESTS_FIGURE_INVARIANTS_H
#define SPLINECORE_TESTS_FIGURE_INVARIANTS_H

#include <initializer_list>
#include <string>
#include <vector>

#include "splinecore/segment_cp.h"

namespace splinecore::test {

// Every violation ValidateFigure finds on the splines that start at
// `firsts` (and their stacks), as "<rule> at <address>: <message>"; empty
// when every rule holds.
std::vector<std::string> FigureViolations(std::initializer_list<SegmentCP*> firsts);
std::vector<std::string> FigureViolations(const std::vector<SegmentCP*>& firsts);

// Reports every violation as a non-fatal gtest failure.
void ExpectFigureInvariants(std::initializer_list<SegmentCP*> firsts);
void ExpectFigureInvariants(const std::vector<SegmentCP*>& firsts);

}  // namespace splinecore::test

#endif
