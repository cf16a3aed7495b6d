// Slice lists: keeping, searching, grouping and reversing splines.
#include "splinecore/slices.h"

#include "groups/reverse_hook_run.h"
#include "hooks/snap.h"
#include "marrow/marrow.h"
#include "splinecore/groups.h"
#include "splinecore/hooks.h"

namespace splinecore {
namespace {

// Walks the spline from `first`: ends after the loopEnd point or at a null next.
SegmentCP* WalkNext(SegmentCP* c) { return c->IsLoopEnd() ? nullptr : c->next; }

bool SliceHolds(const Slice* slice, const SegmentCP* cp) {
  for (SegmentCP* c = slice->first; c != nullptr; c = WalkNext(c)) {
    if (c == cp) return true;
  }
  return false;
}

// Takes c out of the group when a member of its stack is grouped (removing
// every grouped member), else puts c in.
void ToggleStack(SegmentCP* c, GroupNode** group) {
  SegmentCP* top = c;
  while (top->stackPrev != nullptr) top = top->stackPrev;
  bool anyGrouped = false;
  for (SegmentCP* m = top; m != nullptr; m = m->stackNext) {
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

struct DetachedRun {
  SegmentCP* first;  // R: the former first hook, now the lowest
  SegmentCP* last;   // H: the former last hook, now the highest
};

// Reverses carrier c's run and closes the gap under c.
DetachedRun DetachRun(SegmentCP* c) {
  SegmentCP* r = c->stackNext;
  SegmentCP* below = r;
  while (below != nullptr && below->IsHook()) below = below->stackNext;
  SegmentCP* h = ReverseHookRun(r);
  c->stackNext = below;
  if (below != nullptr) below->stackPrev = c;
  c->OffHasHooks();
  c->SetHead();
  return {r, h};
}

// Hangs a detached run directly under x, above x's former stackNext.
void HangRun(const DetachedRun& run, SegmentCP* x) {
  run.first->stackNext = x->stackNext;
  if (x->stackNext != nullptr) x->stackNext->stackPrev = run.first;
  x->stackNext = run.last;
  run.last->stackPrev = x;
  x->OnHasHooks();
  x->SetHead();
}

// Hands every run of hooks to its carrier's new prev (the former next). The
// walk visits each new carrier before the carrier that gives it a run, so a
// run never moves twice; on a closed spline only the first point's new
// carrier (the last point) comes later, so that run is hung at the end.
void MoveHookRuns(SegmentCP* first, bool closed) {
  DetachedRun deferred{nullptr, nullptr};
  for (SegmentCP* c = first; c != nullptr; c = WalkNext(c)) {
    // A run stays where it is when its new carrier would be missing or a
    // hook: hooks carry no runs.
    if (!c->IsHasHooks() || c->prev == nullptr || c->prev->IsHook()) continue;
    if (c->stackNext == nullptr || !c->stackNext->IsHook()) continue;
    const DetachedRun run = DetachRun(c);
    if (closed && c == first) {
      deferred = run;
    } else {
      HangRun(run, c->prev);
    }
  }
  if (deferred.first != nullptr) HangRun(deferred, first->prev);
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
    for (SegmentCP* c = slice->first; c != nullptr; c = WalkNext(c)) {
      if (!c->IsExempt()) ToggleStack(c, group);
    }
  }
  FreeGroup(&marks);
}

SegmentCP* ReverseHookRun(SegmentCP* r) {
  SegmentCP* h = r;
  while (h->stackNext != nullptr && h->stackNext->IsHook()) h = h->stackNext;
  h->OffLastHook();
  r->OnLastHook();
  for (SegmentCP* hook = r;;) {
    SegmentCP* lower = hook->stackNext;
    hook->stackNext = hook->stackPrev;
    hook->stackPrev = lower;
    auto* hs = static_cast<HookSegmentCP*>(hook);
    hs->s = static_cast<float>(1.0 - SnapS(hs->s));
    if (hook == h) break;
    hook = lower;
  }
  return h;
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
