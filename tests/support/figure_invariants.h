// Structural checks of a figure: splines and the stacks hanging off them.
#ifndef SPLINECORE_TESTS_FIGURE_INVARIANTS_H
#define SPLINECORE_TESTS_FIGURE_INVARIANTS_H

#include <initializer_list>
#include <string>
#include <vector>

#include "splinecore/segment_cp.h"

namespace splinecore::test {

// Checks the splines that start at `firsts` and every stack that one of
// their control points belongs to:
// - every walk along next ends (null next or after loopEnd) without
//   revisiting a control point; next and prev are mutual;
// - a spline whose first point has a prev is closed: its walk ends at the
//   only loopEnd point, which links back to the first; an open spline has
//   no loopEnd and a first point without prev;
// - stack links are mutual and every stack walk ends;
// - head, hasHooks and lastHook are what SetHead derives.
// Returns one message per violation (empty: all hold).
std::vector<std::string> FigureViolations(std::initializer_list<SegmentCP*> firsts);
std::vector<std::string> FigureViolations(const std::vector<SegmentCP*>& firsts);

// Reports every violation as a non-fatal gtest failure.
void ExpectFigureInvariants(std::initializer_list<SegmentCP*> firsts);
void ExpectFigureInvariants(const std::vector<SegmentCP*>& firsts);

}  // namespace splinecore::test

#endif
