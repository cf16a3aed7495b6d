// SPDX-License-Identifier: MIT
// Group edits: moving, smoothing, peaking and invalidating the control
// points of a group list. Invalidation goes through SegmentCP::Touch only.
#include "groups/group_edit.h"

#include "controlpoint/walks.h"
#include "splinecore/groups.h"

namespace splinecore {
namespace {

using detail::StackMembers;

// Some member above c, the top included, carries `grouped`.
bool GroupedAbove(const SegmentCP* c) {
  for (const SegmentCP* up = c->stackPrev; up != nullptr; up = up->stackPrev) {
    if (up->IsGrouped()) return true;
  }
  return false;
}

// Some member above c, up to but excluding the top, carries `grouped`.
bool GroupedAboveBelowTop(const SegmentCP* c) {
  for (const SegmentCP* up = c->stackPrev; up != nullptr && up->stackPrev != nullptr; up = up->stackPrev) {
    if (up->IsGrouped()) return true;
  }
  return false;
}

// Touches n's next when that one ends an open spline (has no next).
void TouchOpenEndAfter(SegmentCP* n, long mode) {
  SegmentCP* after = n->next;
  if (after != nullptr && after->next == nullptr) after->Touch(mode);
}

// Touches the hook run that x carries, if any.
void TouchRunOf(SegmentCP* x, long mode) {
  if (x != nullptr && x->IsHasHooks()) detail::TouchHookRun(x->stackNext, mode);
}

void TouchUnlessExempt(SegmentCP* c, long mode) {
  if (!c->IsExempt()) c->Touch(mode);
}

// The hook runs of k, of k's lower stack neighbour and of that one's prev.
void TouchRunsBelow(SegmentCP* k, long mode) {
  TouchRunOf(k, mode);
  TouchRunOf(k->stackNext, mode);
  if (k->stackNext != nullptr) TouchRunOf(k->stackNext->prev, mode);
}

// n is the next of an edited member: n itself, the open end after it, and
// the hook runs on the segments that meet n's stack.
void TouchNextSide(SegmentCP* n, long mode) {
  n->Touch(mode);
  TouchOpenEndAfter(n, 0);
  TouchRunsBelow(n, mode);
  SegmentCP* above = n->stackPrev;
  if (above == nullptr) return;
  if (above->IsHook()) {
    SegmentCP* y = detail::FirstNonHookAbove(n);
    if (y != nullptr) detail::TouchHookRun(y->stackNext, mode);
  }
  TouchRunOf(above->prev, mode);
}

// p is the prev of an edited member: p, the hook runs on the segments that
// meet p's stack, then p's prev and its run.
void TouchPrevSide(SegmentCP* p, long mode) {
  p->Touch(mode);
  TouchRunsBelow(p, mode);
  SegmentCP* above = p->stackPrev;
  if (above != nullptr) {
    SegmentCP* y = detail::FirstNonHookAbove(p);
    if (y != nullptr) detail::TouchHookRun(y->stackNext, mode);
    TouchRunOf(above->prev, mode);
  }
  if (SegmentCP* q = p->prev) {
    q->Touch(mode);
    TouchRunOf(q, mode);
  }
}

}  // namespace

void detail::TouchHookRun(SegmentCP* h, long mode) {
  for (SegmentCP* k : detail::RunFrom(h)) {
    k->Touch(mode);
    if (SegmentCP* n = k->next) {
      TouchUnlessExempt(n, mode);
      if (n->next != nullptr) TouchUnlessExempt(n->next, mode);
    } else if (SegmentCP* p = k->prev) {
      TouchUnlessExempt(p, mode);
      if (p->prev != nullptr) TouchUnlessExempt(p->prev, mode);
    }
  }
}

void PeakGroup(GroupNode* list) {
  for (GroupNode* node = list; node != nullptr; node = node->next) node->cp->OffSmooth();
}

void SmoothGroup(GroupNode* list) {
  for (GroupNode* node = list; node != nullptr; node = node->next) {
    node->cp->OnSmooth();
    node->cp->indelta = node->cp->outdelta;
  }
}

void MoveGroup(GroupNode* list, Vector displacement) {
  if (list == nullptr) return;
  Vector w = displacement;
  TransformDirection(list->cp->cache->view->inverseViewMatrix, w);
  for (GroupNode* node = list; node != nullptr; node = node->next) {
    SegmentCP* c = node->cp;
    if (c->IsHook() || GroupedAbove(c)) continue;
    SegmentCP* top = detail::StackTop(c);
    top->p += w;
    ConvertCP(top);
  }
}

void ConvertCP(SegmentCP* cp) {
  for (SegmentCP* m : StackMembers(cp)) {
    m->Touch(0);
    if (SegmentCP* n = m->next) {
      n->Touch(0);
      TouchOpenEndAfter(n, 0);
    }
    if (SegmentCP* p = m->prev) {
      p->Touch(0);
      if (p->prev != nullptr) p->prev->Touch(0);
    }
  }
}

void ConvertGroup(GroupNode* list, long mode) {
  for (GroupNode* node = list; node != nullptr; node = node->next) {
    SegmentCP* c = node->cp;
    if (GroupedAboveBelowTop(c)) continue;
    for (SegmentCP* m : StackMembers(c)) {
      m->Touch(mode);
      if (m->next != nullptr) TouchNextSide(m->next, mode);
      if (m->prev != nullptr) TouchPrevSide(m->prev, mode);
    }
  }
}

}  // namespace splinecore
