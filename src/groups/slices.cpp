// SPDX-License-Identifier: MIT
// Slice lists: keeping, searching, grouping and reversing splines.
#include "splinecore/slices.h"

#include "controlpoint/walks.h"
#include "groups/reverse_hook_run.h"
#include "hooks/snap.h"
#include "marrow/marrow.h"
#include "splinecore/groups.h"
#include "splinecore/hooks.h"

namespace splinecore {
namespace {

using detail::HookRun;
using detail::SplinePoints;

bool SliceHolds(const Slice* slice, const SegmentCP* cp) {
  for (SegmentCP* c : SplinePoints(slice->first)) {
    if (c == cp) return true;
  }
  return false;
}

// Takes c out of the group when a member of its stack is grouped (removing
// every grouped member), else puts c in.
void ToggleStack(SegmentCP* c, GroupNode** group) {
  bool anyGrouped = false;
  for (SegmentCP* m : detail::StackMembers(c)) {
    if (!m->IsGrouped()) continue;
    anyGrouped = true;
    m->DeleteFromGroup(group);
  }
  if (!anyGrouped) c->AddToGroup(group, 1);
}

// Exchanges prev and next and the two deltas, negating both angles.
void ReverseOne(SegmentCP* c) {
  SegmentCP* link = c->prev;
  c->prev = c->next;
  c->next = link;
  const Delta in = c->indelta;
  c->indelta = {-c->outdelta.pitch, -c->outdelta.yaw, c->outdelta.magnitude};
  c->outdelta = {-in.pitch, -in.yaw, in.magnitude};
}

bool CarriesRun(const SegmentCP* c) {
  return c->IsHasHooks() && c->stackNext != nullptr && c->stackNext->IsHook();
}

// Whether x is one of the hooks hanging directly below carrier c.
bool InRunOf(SegmentCP* c, const SegmentCP* x) {
  for (const SegmentCP* h : HookRun(c)) {
    if (h == x) return true;
  }
  return false;
}

// A run stays with its carrier when the carrier has no new prev X, or when
// X is one of the run's own hooks (hanging the run below X would link the
// stack into a cycle).
bool KeepsRun(SegmentCP* c) { return c->prev == nullptr || InRunOf(c, c->prev); }

// Reverses carrier c's run where it hangs: c -> H ... R -> B, s mirrored.
void ReverseRunInPlace(SegmentCP* c) {
  SegmentCP* r = c->stackNext;
  SegmentCP* below = detail::FirstNonHookBelow(r);
  SegmentCP* h = detail::ReverseHookRun(r);
  c->stackNext = h;
  h->stackPrev = c;
  r->stackNext = below;
  if (below != nullptr) below->stackPrev = r;
}

struct Run {
  SegmentCP* top;
  SegmentCP* bottom;
};

// Takes c's run (every hook below c, however it got there) from c and
// closes the gap.
Run DetachRun(SegmentCP* c) {
  const Run run{c->stackNext, detail::RunBottom(c->stackNext)};
  SegmentCP* below = run.bottom->stackNext;
  c->stackNext = below;
  if (below != nullptr) below->stackPrev = c;
  c->OffHasHooks();  // the rest of the stack keeps its heads and flags
  return run;
}

// Hangs a detached run directly under x, above x's former stackNext.
void HangRun(const Run& run, SegmentCP* x) {
  run.bottom->stackNext = x->stackNext;
  if (x->stackNext != nullptr) x->stackNext->stackPrev = run.bottom;
  x->stackNext = run.top;
  run.top->stackPrev = x;
  x->SetHead();
}

bool RunHolds(const Run& run, const SegmentCP* x) {
  for (const SegmentCP* h = run.top;; h = h->stackNext) {
    if (h == x) return true;
    if (h == run.bottom) return false;
  }
}

// Hands every run of hooks, reversed, to X, its carrier's new prev (the
// former next). On an open spline one walk in the new order reverses and
// moves each run: X comes before its carrier and has already given its own
// run away. On a closed spline every run is reversed before any moves; the
// first point gives its run away first and hangs it last, under the last
// point. A run handed to a hook of a run not yet moved moves with that hook.
void MoveHookRuns(SegmentCP* first, bool closed) {
  if (!closed) {
    for (SegmentCP* c : SplinePoints(first)) {
      if (!CarriesRun(c) || KeepsRun(c)) continue;
      ReverseRunInPlace(c);
      HangRun(DetachRun(c), c->prev);
    }
    return;
  }
  for (SegmentCP* c : SplinePoints(first)) {
    if (CarriesRun(c) && !KeepsRun(c)) ReverseRunInPlace(c);
  }
  const bool firstMoves = CarriesRun(first) && !KeepsRun(first);
  const Run firstRun = firstMoves ? DetachRun(first) : Run{nullptr, nullptr};
  for (SegmentCP* c : SplinePoints(detail::SplineStep(first))) {
    if (CarriesRun(c) && !KeepsRun(c)) HangRun(DetachRun(c), c->prev);
  }
  if (!firstMoves) return;
  // Runs handed to hooks of the first point's run may have brought its X
  // into it: then it goes back under the first point.
  HangRun(firstRun, RunHolds(firstRun, first->prev) ? first : first->prev);
}

}  // namespace

Slice* AddSlice(Slice** list) {
  Slice** link = list;
  while (*link != nullptr) link = &(*link)->next;
  auto* slice = static_cast<Slice*>(AllocSeg(sizeof(Slice)));
  if (slice == nullptr) return nullptr;
  slice->first = nullptr;
  slice->next = nullptr;
  *link = slice;
  return slice;
}

void DeleteSlice(Slice** list, Slice* slice) {
  for (Slice** link = list; *link != nullptr; link = &(*link)->next) {
    if (*link != slice) continue;
    *link = slice->next;
    FreeExt(slice);
    return;
  }
}

Slice* MatchSliceCP(Slice* list, SegmentCP* cp) {
  for (Slice* slice = list; slice != nullptr; slice = slice->next) {
    if (SliceHolds(slice, cp)) return slice;
  }
  return nullptr;
}

void GroupSlice(Slice* list, SegmentCP* cp, GroupNode** group) {
  GroupNode* marks = nullptr;
  for (GroupNode* node = *group; node != nullptr; node = node->next) node->cp->AddToGroup(&marks, 1);
  if (Slice* slice = MatchSliceCP(list, cp)) {
    for (SegmentCP* c : SplinePoints(slice->first)) {
      if (!c->IsExempt()) ToggleStack(c, group);
    }
  }
  FreeGroup(&marks);
}

void ReverseSlice(Slice* slice) {
  if (slice == nullptr || slice->first == nullptr) return;
  SegmentCP* const formerFirst = slice->first;
  const bool closed = formerFirst->prev != nullptr;
  if (closed) {
    SegmentCP* last = formerFirst->prev;
    last->OffLoopEnd();
    last->next = nullptr;
    formerFirst->prev = nullptr;
  }
  for (SegmentCP* c = formerFirst; c != nullptr;) {
    SegmentCP* following = c->next;
    c->Touch(0);
    ReverseOne(c);
    slice->first = c;
    c = following;
  }
  if (closed) {
    slice->first->prev = formerFirst;
    formerFirst->OnLoopEnd();
    formerFirst->next = slice->first;
  }
  MoveHookRuns(slice->first, closed);
}

}  // namespace splinecore
