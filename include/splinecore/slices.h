// SPDX-License-Identifier: MIT
/// @file
/// Slices: a host-kept list naming splines by their first control point.
///
/// Slice records come from AllocSeg and go back with FreeExt.
#ifndef SPLINECORE_SLICES_H
#define SPLINECORE_SLICES_H

#include "splinecore/export.h"

namespace splinecore {

class SegmentCP;
struct GroupNode;

/// One entry of a slice list.
struct Slice {
  SegmentCP* first;  ///< first control point of the spline; null: empty
  Slice* next;       ///< null ends the list
};

/// Appends a new slice (first and next null) and returns it; when AllocSeg
/// gives no memory, returns null and leaves the list unchanged.
SPLINECORE_API Slice* AddSlice(Slice** list);
/// Unlinks `slice` and frees it. A slice that is not in the list changes
/// nothing and frees nothing. The control points are not touched.
SPLINECORE_API void DeleteSlice(Slice** list, Slice* slice);
/// The first slice whose spline holds cp, or null.
SPLINECORE_API Slice* MatchSliceCP(Slice* list, SegmentCP* cp);
/// Marks every member of `group` grouped, then toggles the slice that holds
/// cp in the group, stack by stack: a stack with a grouped member leaves the
/// group, one without enters it through the slice's own control point.
/// `exempt` control points are skipped.
SPLINECORE_API void GroupSlice(Slice* list, SegmentCP* cp, GroupNode** group);
/// Reverses the slice's spline: links, loopEnd, deltas (exchanged, angles
/// negated), and hands every run of hooks, reversed and with s mirrored, to X,
/// its carrier's prev after the reversal (the new carrier of the same
/// segment), even when X is itself a hook: the run then hangs directly below
/// that hook and belongs to X's carrier. Every control point of the spline is
/// touched (mode 0); the hooks handed over are not (touch them, e.g.
/// GroupSlice + ConvertGroup). Exceptions, where the rule has no valid
/// answer: a carrier without a prev after the reversal, or whose X is one of
/// its own run's hooks (the run would hang below itself, a stack cycle),
/// keeps its run where it is, unreversed; on a closed spline, a run that
/// other runs' hand-overs have made hold its own X stays reversed under its
/// carrier. A carrier whose hasHooks is set without a hook below it is
/// skipped. A null slice or one without a first control point is left
/// unchanged.
SPLINECORE_API void ReverseSlice(Slice* slice);

}  // namespace splinecore

#endif
