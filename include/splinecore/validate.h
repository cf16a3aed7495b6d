// SPDX-License-Identifier: MIT
/// @file
/// Structural validation of a figure.
///
/// The getters leave the structural preconditions unchecked (their cost
/// would fall on every redraw); ValidateFigure is how a host finds a figure
/// that breaks them. It reads the splines reachable from the given first
/// control points and their stacks, reports each violation through the
/// callback, and returns the number found. It allocates nothing and writes
/// nothing; every walk is bounded, so a corrupt figure cannot make it loop.
#ifndef SPLINECORE_VALIDATE_H
#define SPLINECORE_VALIDATE_H

#include "splinecore/export.h"

namespace splinecore {

class SegmentCP;

/// The structural rules ValidateFigure checks.
enum class FigureRule {
  kWalkEnds,          ///< a walk along next ends (null, or after loopEnd) without cycling
  kSplineLinks,       ///< next/prev are mutual
  kLoopEnd,           ///< one loopEnd on a closed spline, none on an open one
  kStackLinks,        ///< stackNext/stackPrev are mutual and acyclic
  kHeads,             ///< head, hasHooks and lastHook are what SetHead derives
  kHookCarrier,       ///< a hook has a non-hook carrier above it, and that carrier has a next
  kCacheAndView,      ///< cache, and the cache's view record, are set
};

/// One violation found by ValidateFigure.
struct FigureViolation {
  const SegmentCP* cp;  ///< the control point at fault
  FigureRule rule;      ///< the rule it breaks
  const char* message;  ///< a short static description
};

/// Called once per violation; `context` is the pointer given to ValidateFigure.
using FigureViolationCallback = void (*)(const FigureViolation& violation, void* context);

/// Checks the splines that start at firsts[0..count-1]. `report` may be null
/// (only the count is wanted). Returns the number of violations.
SPLINECORE_API int ValidateFigure(SegmentCP* const* firsts, int count, FigureViolationCallback report,
                                  void* context);

/// A short name of the rule ("walk-ends", "spline-links", ...).
SPLINECORE_API const char* FigureRuleName(FigureRule rule);

}  // namespace splinecore

#endif
