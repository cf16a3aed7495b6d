// SPDX-License-Identifier: MIT
// The walks of a figure, each with what ends it: along a spline, down a
// stack, along a carrier's hook run, up to a hook's carrier (internal).
//
//   for (SegmentCP* c : SplinePoints(first))  // stops after the loopEnd point
//   for (SegmentCP* m : StackMembers(x))      // the whole stack of x, top first
//   for (SegmentCP* k : HookRun(carrier))     // the hooks directly below it
#ifndef SPLINECORE_SRC_CONTROLPOINT_WALKS_H
#define SPLINECORE_SRC_CONTROLPOINT_WALKS_H

#include "splinecore/segment_cp.h"

namespace splinecore::detail {

// The point after c along its spline; null after an open spline's last point
// and after a closed spline's loopEnd point, so a loop is visited once.
inline SegmentCP* SplineStep(SegmentCP* c) { return c->IsLoopEnd() ? nullptr : c->next; }

inline SegmentCP* StackTop(SegmentCP* c) {
  while (c->stackPrev != nullptr) c = c->stackPrev;
  return c;
}

// The nearest non-hook above (below) x in its stack, x excluded; null when
// there is none.
inline SegmentCP* FirstNonHookAbove(SegmentCP* x) {
  SegmentCP* m = x->stackPrev;
  while (m != nullptr && m->IsHook()) m = m->stackPrev;
  return m;
}
inline SegmentCP* FirstNonHookBelow(SegmentCP* x) {
  SegmentCP* m = x->stackNext;
  while (m != nullptr && m->IsHook()) m = m->stackNext;
  return m;
}

// The carrier of hook h: the first non-hook above it, or null.
inline SegmentCP* FindCarrier(SegmentCP* h) { return FirstNonHookAbove(h); }

// The hook below k in the same run, or null where the run ends.
inline SegmentCP* RunStep(SegmentCP* k) {
  SegmentCP* n = k->stackNext;
  return n != nullptr && n->IsHook() ? n : nullptr;
}

// The last hook of the run k belongs to (k itself when the run ends there);
// from a carrier, the bottom of its run, or the carrier when it has none.
inline SegmentCP* RunBottom(SegmentCP* k) {
  while (SegmentCP* n = RunStep(k)) k = n;
  return k;
}

inline SegmentCP* StackStep(SegmentCP* m) { return m->stackNext; }

// A walk from `first` by Step until Step gives null, as a range.
template <SegmentCP* (*Step)(SegmentCP*)>
class Walk {
 public:
  class iterator {
   public:
    explicit iterator(SegmentCP* at) : at_(at) {}
    SegmentCP* operator*() const { return at_; }
    iterator& operator++() {
      at_ = Step(at_);
      return *this;
    }
    bool operator!=(const iterator& other) const { return at_ != other.at_; }

   private:
    SegmentCP* at_;
  };
  explicit Walk(SegmentCP* first) : first_(first) {}
  iterator begin() const { return iterator(first_); }
  iterator end() const { return iterator(nullptr); }

 private:
  SegmentCP* first_;
};

// The points of the spline from `first` (null: none).
inline Walk<SplineStep> SplinePoints(SegmentCP* first) { return Walk<SplineStep>(first); }
// Every member of x's stack, top first.
inline Walk<StackStep> StackMembers(SegmentCP* x) { return Walk<StackStep>(StackTop(x)); }
// The members of a stack from m down.
inline Walk<StackStep> StackFrom(SegmentCP* m) { return Walk<StackStep>(m); }
// The hooks of a run from k down (none when k is null or not a hook).
inline Walk<RunStep> RunFrom(SegmentCP* k) { return Walk<RunStep>(k != nullptr && k->IsHook() ? k : nullptr); }
// The hooks of carrier's run, top to bottom (none when it carries none).
inline Walk<RunStep> HookRun(SegmentCP* carrier) { return RunFrom(carrier->stackNext); }

}  // namespace splinecore::detail

#endif
