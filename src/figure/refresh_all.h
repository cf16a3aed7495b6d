// SPDX-License-Identifier: MIT
// The whole-frame refresh (internal): every derived value of a figure
// recomputed in one ordered pass, with the bits of the getters' pass. The
// points no hook and no muscle data can reach are computed directly
// (RefreshPlainPoint), outside muscle mode the points only hooks reach as
// well once those hooks are placed, and with no muscle data the runs of
// hooks whose partners are plain points (RefreshPlacedRun); the others by
// the getters, in figure order.
#ifndef SPLINECORE_SRC_FIGURE_REFRESH_ALL_H
#define SPLINECORE_SRC_FIGURE_REFRESH_ALL_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "convert/whole_refresh.h"
#include "splinecore/figure.h"
#include "splinecore/segment_cp.h"

namespace splinecore::detail {

// Points with their ids, spline by spline, along each spline.
using OrderedPoints = std::vector<std::pair<PointId, SegmentCP*>>;

// What the refresh reads of a figure and where it writes.
struct WholeFrame {
  const std::vector<SegmentCP*>& flat;  // every point, spline by spline
  const std::vector<PointId>& ids;      // their ids
  const std::vector<MuscleCPData*>& cpData;
  std::uint32_t idCount;  // every point's id is below it
  bool muscle;
  bool hostEffects;  // host effects answer by PointId through a shared index
  const ViewRecord& view;
  std::vector<std::vector<Vector>>& musclePositions;  // per spline, per point
  // The getters' pass over points in figure order, from their built state;
  // the heads the marks (by id) leave unmarked hold their values already.
  std::function<void(const OrderedPoints&, const std::vector<unsigned char>& marks)> pass;
};

// How a plan shares out a figure's points: computed directly, computed
// directly after the hooks they read were placed, left to the getters,
// hooks placed and converted directly (whole runs), and of the last three
// kinds the ones run after all the plain points; and the heads computed
// before the plain points (read by more than one part).
struct RefreshPlanCounts {
  std::size_t plain = 0, nearHooks = 0, lazy = 0, runHooks = 0, late = 0, shared = 0;
};

// The refresh's plan, kept while the structure, the mode and the number of
// parts stay (Forget after any change of structure).
class WholeRefresh {
 public:
  void Forget() { parts_ = 0; }
  // Every derived value of the frame's figure, on up to `threads` threads.
  void Run(WholeFrame& frame, int threads);
  RefreshPlanCounts Counts() const;
  // Per group, the points it computes and its points near hooks, and the
  // cache lines fetched before it runs: lines()[linesFrom()[g] ..
  // linesFrom()[g + 1]).
  const std::vector<OrderedPoints>& groups() const { return groups_; }
  const std::vector<std::vector<SegmentCP*>>& nearHooks() const { return nearHooks_; }
  const std::vector<const void*>& lines() const { return lines_; }
  const std::vector<std::size_t>& linesFrom() const { return linesFrom_; }

 private:
  void Make(const WholeFrame& frame, std::size_t parts);
  void MakeGroups(bool hostEffects);
  std::vector<SegmentCP*> DirectRuns(const OrderedPoints& group) const;
  void SplitRuns();
  void Schedule(const WholeFrame& frame, std::size_t parts);
  void ListLines();

  std::size_t parts_ = 0;  // none: no plan
  bool muscle_{};
  // The points computed whole, by their index in `flat`.
  std::vector<std::size_t> plain_;
  std::vector<PlainSlots> slots_;  // per plain point, into the heads
  // The heads read by plain points of more than one part come first
  // (`shared_` of them, computed before the plain points); each of the
  // others just before the first plain point that reads it: plain point k
  // computes the heads up to headsUntil_[k].
  std::vector<SegmentCP*> heads_;
  std::size_t shared_ = 0;
  std::vector<std::uint32_t> headsUntil_;
  std::vector<Vector> screenAt_;  // per head, its screen position ...
  std::vector<Vector> modelAt_;   // ... and its model position, each refresh
  // The points left to the getters, in figure order and marked by id.
  OrderedPoints lazy_;
  std::vector<unsigned char> lazyById_;
  // The lazy points in groups: the lazy points one's getters may reach (its
  // stack, its spline neighbours up to two steps and their stacks, a hook's
  // far end's stack, and theirs in turn), each in figure order. Groups share
  // no written state; with host effects there is one group. Of each group,
  // the points the getters compute, and the points near hooks computed
  // directly after them (outside muscle mode: a hook's muscle placement is
  // not its p).
  std::vector<unsigned char> nearHookById_;
  std::vector<OrderedPoints> groups_;
  std::vector<std::vector<SegmentCP*>> nearHooks_;
  // Per group, the carriers of the runs it is made of when RefreshPlacedRun
  // computes them instead of the getters (none: the getters).
  std::vector<std::vector<SegmentCP*>> runs_;
  // The groups run right after the last plain point they read, while it
  // is in cache: per part, (plain point, group) by plain point. The others
  // (reading plain points of more than one part, or none) run after the
  // plain points, whole groups to a thread: per part, the groups.
  std::vector<std::vector<std::pair<std::size_t, std::size_t>>> after_;
  std::vector<std::vector<std::size_t>> late_;
  // The cache lines of the points each group's getters read first (its
  // members, their seeds and those heads), fetched a few plain points
  // before the group runs: group g's are lines_[linesFrom_[g] ..
  // linesFrom_[g + 1]).
  std::vector<const void*> lines_;
  std::vector<std::size_t> linesFrom_;
};

// The plan of a figure's last RefreshAll, for the tests.
struct FigureAccess {
  static RefreshPlanCounts RefreshPlan(const Figure& f);
  static const WholeRefresh& Plan(const Figure& f);
};

}  // namespace splinecore::detail

#endif
