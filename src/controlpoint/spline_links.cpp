// SPDX-License-Identifier: MIT
// Splines (prev/next) and attached stacks (stackPrev/stackNext): link
// accessors, head derivation, deletion and invalidation.
#include "controlpoint/walks.h"
#include "marrow/marrow.h"
#include "splinecore/segment_cp.h"

namespace splinecore {

SegmentCP* SegmentCP::GetNext() { return next; }
void SegmentCP::SetNext(SegmentCP* n) { next = n; }
SegmentCP* SegmentCP::GetPrev() { return prev; }
void SegmentCP::SetPrev(SegmentCP* p) { prev = p; }
SegmentCP** SegmentCP::GetNextUplink() { return &next; }
SegmentCP** SegmentCP::GetPrevUplink() { return &prev; }

void SegmentCP::SetHead() {
  SegmentCP* top = detail::StackTop(this);
  for (SegmentCP* m : detail::StackFrom(top)) {
    m->OffHasHooks();
    m->OffLastHook();
    const SegmentCP* below = m->stackNext;
    if (m->IsHook()) {
      m->head = m;
      if (below != nullptr && !below->IsHook()) m->OnLastHook();
    } else {
      m->head = top;
      if (below != nullptr && below->IsHook()) m->OnHasHooks();
    }
  }
}

void SegmentCP::Touch(std::int32_t mode) {
  flags &= ~(cpflag::converted | cpflag::mconverted | cpflag::mpCached | cpflag::motCached | cpflag::mitCached);
  stamp = static_cast<std::uint8_t>(stamp - 1);
  screenStamp = static_cast<std::uint8_t>(screenStamp - 1);
  if (mode & 1)
    OnTouched();
  else if (mode & 2)
    OffTouched();
}

namespace {

// Takes c out of its stack: the member above (if any) takes over c's
// stackNext, the member below (if any) c's stackPrev; heads are re-derived.
void UnlinkFromStack(SegmentCP* c) {
  SegmentCP* above = c->stackPrev;
  SegmentCP* below = c->stackNext;
  if (above != nullptr) {
    above->stackNext = below;
    if (below != nullptr) below->stackPrev = above;
    above->SetHead();
  } else if (below != nullptr) {
    below->stackPrev = nullptr;
    below->SetHead();
  }
}

void DestroyAndFree(SegmentCP* c) {
  c->~SegmentCP();
  FreeSeg(c);
}

// The link (the first-point pointer or a predecessor's next) through which
// c is reached from *first, walking no further than the loopEnd point; null
// when c is not reached.
SegmentCP** FindLink(SegmentCP** first, SegmentCP* c) {
  SegmentCP** link = first;
  while (*link != c) {
    SegmentCP* x = *link;
    if (x == nullptr || x->IsLoopEnd()) return nullptr;
    link = &x->next;
  }
  return link;
}

}  // namespace

void DeleteCP(SegmentCP** first, SegmentCP* c) {
  if (first == nullptr || *first == nullptr || c == nullptr) return;
  SegmentCP** link = FindLink(first, c);
  if (link == nullptr) return;

  if (c->stackPrev == nullptr)  // the head goes: the stack keeps its position
    for (SegmentCP* m = c->stackNext; m != nullptr; m = m->stackNext) m->p = c->p;

  SegmentCP* n = c->next;
  SegmentCP* p = c->prev;
  if (n == c) {  // the only point of a closed spline
    *link = nullptr;
  } else {
    if (n != nullptr) {
      if (p != nullptr && c->IsLoopEnd()) p->OnLoopEnd();
      n->prev = p;
    }
    *link = n;
    if (p != nullptr) p->next = n;
  }

  UnlinkFromStack(c);
  DestroyAndFree(c);
}

void DeleteAllCP(SegmentCP* first) {
  for (SegmentCP* c = first; c != nullptr;) {
    UnlinkFromStack(c);
    SegmentCP* next = detail::SplineStep(c);
    DestroyAndFree(c);
    c = next;
  }
}

}  // namespace splinecore
