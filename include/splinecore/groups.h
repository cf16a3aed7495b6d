// SPDX-License-Identifier: MIT
/// @file
/// Group lists of control points and the edits made on them.
///
/// A list is a pointer to its first GroupNode (null: empty); list order is
/// visiting order. Nodes come from AllocExt and go back with FreeExt.
/// Invalidation is always done with SegmentCP::Touch.
#ifndef SPLINECORE_GROUPS_H
#define SPLINECORE_GROUPS_H

#include <cstdint>

#include "splinecore/export.h"
#include "splinecore/geometry.h"

namespace splinecore {

class SegmentCP;

/// One node of a group list.
struct GroupNode {
  SegmentCP* cp;    ///< the listed control point
  GroupNode* next;  ///< null ends the list
};

/// Gives every node back and sets `*list` to null; `grouped` flags stay.
SPLINECORE_API void FreeGroup(GroupNode** list);

/// Moves every listed stack once by `displacement` (a view-space vector,
/// carried into model space by the linear part of inverseViewMatrix of the
/// first listed point's figure, whose cache and view must be set) and touches
/// what the move affects. Hooks and points below a grouped stack member are
/// skipped.
SPLINECORE_API void MoveGroup(GroupNode* list, Vector displacement);
/// Clears `smooth` on every listed point; touches nothing.
SPLINECORE_API void PeakGroup(GroupNode* list);
/// Sets `smooth` and copies outdelta into indelta on every listed point;
/// touches nothing.
SPLINECORE_API void SmoothGroup(GroupNode* list);
/// Touches (mode 0) every member of cp's stack and their spline neighbours
/// up to two steps away (the second step along next only when it ends an
/// open spline).
SPLINECORE_API void ConvertCP(SegmentCP* cp);
/// Touches, with `mode` (passed on to Touch, which reads its bits 0 and 1),
/// everything an edit of the listed points affects: their stacks, spline
/// neighbours and the hook runs on neighbouring segments.
SPLINECORE_API void ConvertGroup(GroupNode* list, long mode);

}  // namespace splinecore

#endif
