// SPDX-License-Identifier: MIT
// The reach of a local edit: every control point whose derived values the
// edit can change, closed under "reads": a point that reads a value of the
// reach (a position, a tangent, a hook placement) is in it too, so that
// recomputing the reach in the figure's fixed order gives the bits of a
// recomputation of the whole figure (internal).
#ifndef SPLINECORE_SRC_FIGURE_REACH_H
#define SPLINECORE_SRC_FIGURE_REACH_H

#include <unordered_set>
#include <vector>

#include "splinecore/segment_cp.h"

namespace splinecore::detail {

class Reach {
 public:
  // m's position changed: its tangents, those of the points up to two steps
  // along its spline, and whatever reads m's position or tangents.
  void PositionChanged(SegmentCP* m);
  // y's tangents (and handles) changed: the hook runs placed on a segment
  // that ends at y and the hooks that take y as a partner.
  void TangentChanged(SegmentCP* y);
  // Forgets a point about to be destroyed (its neighbours must be added in
  // its place).
  void Drop(SegmentCP* gone);
  // Closes the reach and returns it, whole hook runs included (placing one
  // hook re-places its run). Each point once, in no particular order.
  std::vector<SegmentCP*> Close();

 private:
  enum class Kind { kPosition, kTangent };
  void Readers(SegmentCP* y);
  std::unordered_set<SegmentCP*> moved_, turned_;
  struct Work {
    Kind kind;
    SegmentCP* at;
  };
  std::vector<Work> work_;
};

}  // namespace splinecore::detail

#endif
