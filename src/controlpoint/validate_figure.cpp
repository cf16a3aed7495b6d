// SPDX-License-Identifier: MIT
// ValidateFigure: the structural rules the getters rely on, checked without
// allocating and with every walk bounded. Cycles are found by letting a
// second cursor run at twice the speed: it meets the first one only when
// the walk goes round.
#include "splinecore/validate.h"

#include "controlpoint/walks.h"
#include "splinecore/segment_cp.h"

namespace splinecore {

namespace {

using Step = SegmentCP* (*)(SegmentCP*);

using detail::SplineStep;
SegmentCP* UpStep(SegmentCP* c) { return c->stackPrev; }
SegmentCP* DownStep(SegmentCP* c) { return c->stackNext; }

// A walk from `start` by `step` reaches null.
bool WalkEnds(SegmentCP* start, Step step) {
  SegmentCP* slow = start;
  SegmentCP* fast = start;
  for (;;) {
    if ((fast = step(fast)) == nullptr || (fast = step(fast)) == nullptr) return true;
    slow = step(slow);
    if (slow == fast) return false;
  }
}

class Validator {
 public:
  Validator(FigureViolationCallback report, void* context) : report_(report), context_(context) {}

  int found = 0;

  void Spline(SegmentCP* first) {
    if (!WalkEnds(first, SplineStep)) {
      Report(first, FigureRule::kWalkEnds, "the walk along next goes round without passing a loopEnd point");
      return;
    }
    SegmentCP* last = first;
    for (SegmentCP* c = first; c != nullptr; c = SplineStep(c)) {
      Point(c);
      last = c;
    }
    if (last->IsLoopEnd()) {
      if (last->next != first) Report(last, FigureRule::kLoopEnd, "a loopEnd point does not link back to the first");
    } else if (first->prev != nullptr) {
      Report(first, FigureRule::kLoopEnd, "the first point has a prev, but no loopEnd point closes the spline");
    }
  }

 private:
  FigureViolationCallback report_;
  void* context_;

  void Report(const SegmentCP* cp, FigureRule rule, const char* message) {
    ++found;
    if (report_ != nullptr) report_(FigureViolation{cp, rule, message}, context_);
  }

  void Point(SegmentCP* c) {
    if (c->next != nullptr && c->next->prev != c) Report(c, FigureRule::kSplineLinks, "next's prev is not it");
    if (c->prev != nullptr && c->prev->next != c) Report(c, FigureRule::kSplineLinks, "prev's next is not it");
    if (c->cache == nullptr) {
      Report(c, FigureRule::kCacheAndView, "cache is not set");
    } else if (c->cache->view == nullptr) {
      Report(c, FigureRule::kCacheAndView, "the cache has no view record");
    }
    if (Stack(c)) {
      Heads(c);
      if (c->IsHook()) Carrier(c);
    }
  }

  // The stack links at c; false when a stack walk from c does not end.
  bool Stack(SegmentCP* c) {
    if (!WalkEnds(c, UpStep) || !WalkEnds(c, DownStep)) {
      Report(c, FigureRule::kStackLinks, "a walk along the stack links does not end");
      return false;
    }
    if (c->stackNext != nullptr && c->stackNext->stackPrev != c) {
      Report(c, FigureRule::kStackLinks, "stackNext's stackPrev is not it");
    }
    if (c->stackPrev != nullptr && c->stackPrev->stackNext != c) {
      Report(c, FigureRule::kStackLinks, "stackPrev's stackNext is not it");
    }
    return true;
  }

  void Heads(SegmentCP* c) {
    const SegmentCP* below = c->stackNext;
    const bool belowIsHook = below != nullptr && below->IsHook();
    if (c->IsHook()) {
      if (c->head != c) Report(c, FigureRule::kHeads, "a hook's head is not itself");
      if (c->IsHasHooks()) Report(c, FigureRule::kHeads, "a hook carries hasHooks");
      if (c->IsLastHook() != (below != nullptr && !belowIsHook)) {
        Report(c, FigureRule::kHeads, "lastHook differs from what SetHead derives");
      }
      return;
    }
    if (c->head != detail::StackTop(c)) Report(c, FigureRule::kHeads, "head is not the top of the stack");
    if (c->IsLastHook()) Report(c, FigureRule::kHeads, "a non-hook carries lastHook");
    if (c->IsHasHooks() != belowIsHook) Report(c, FigureRule::kHeads, "hasHooks differs from what SetHead derives");
  }

  void Carrier(SegmentCP* hook) {
    SegmentCP* carrier = detail::FindCarrier(hook);
    if (carrier == nullptr) {
      Report(hook, FigureRule::kHookCarrier, "a hook has no carrier above it");
    } else if (carrier->next == nullptr) {
      Report(hook, FigureRule::kHookCarrier, "a hook's carrier has no next");
    }
  }
};

}  // namespace

int ValidateFigure(SegmentCP* const* firsts, int count, FigureViolationCallback report, void* context) {
  Validator validator(report, context);
  if (firsts == nullptr) return 0;
  for (int i = 0; i < count; ++i) {
    if (firsts[i] != nullptr) validator.Spline(firsts[i]);
  }
  return validator.found;
}

const char* FigureRuleName(FigureRule rule) {
  switch (rule) {
    case FigureRule::kWalkEnds: return "walk-ends";
    case FigureRule::kSplineLinks: return "spline-links";
    case FigureRule::kLoopEnd: return "loop-end";
    case FigureRule::kStackLinks: return "stack-links";
    case FigureRule::kHeads: return "heads";
    case FigureRule::kHookCarrier: return "hook-carrier";
    case FigureRule::kCacheAndView: return "cache-and-view";
  }
  return "unknown";
}

}  // namespace splinecore
