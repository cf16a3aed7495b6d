// SPDX-License-Identifier: MIT
#include "figure/reach.h"

#include <algorithm>

#include "controlpoint/walks.h"

namespace splinecore::detail {

namespace {

// The carrier whose segment ends at x (x's prev, when it carries hooks).
SegmentCP* CarrierEndingAt(SegmentCP* x) {
  SegmentCP* c = x->prev;
  return c != nullptr && c->next == x && c->IsHasHooks() ? c : nullptr;
}

}  // namespace

void Reach::PositionChanged(SegmentCP* m) {
  if (moved_.insert(m).second) work_.push_back(Work{Kind::kPosition, m});
}

void Reach::TangentChanged(SegmentCP* y) {
  if (turned_.insert(y).second) work_.push_back(Work{Kind::kTangent, y});
}

void Reach::Drop(SegmentCP* gone) {
  moved_.erase(gone);
  turned_.erase(gone);
  work_.erase(std::remove_if(work_.begin(), work_.end(), [&](const auto& w) { return w.at == gone; }),
              work_.end());
}

// Who reads y's position or tangents besides its spline neighbours: the
// placement of the runs on the segments that end at y, and the hooks whose
// partners sit in y's stack (partners come from the carrier's stack and
// from the stack of the carrier's next).
void Reach::Readers(SegmentCP* y) {
  if (y->IsHasHooks())
    for (SegmentCP* h : HookRun(y)) PositionChanged(h);
  if (SegmentCP* c = CarrierEndingAt(y))
    for (SegmentCP* h : HookRun(c)) PositionChanged(h);
  for (SegmentCP* z : StackMembers(y)) {
    if (z->IsHook()) {
      TangentChanged(z);
    } else if (SegmentCP* c = CarrierEndingAt(z)) {
      for (SegmentCP* h : HookRun(c)) TangentChanged(h);
    }
  }
}

std::vector<SegmentCP*> Reach::Close() {
  while (!work_.empty()) {
    const auto [kind, x] = work_.back();
    work_.pop_back();
    if (kind == Kind::kPosition) {
      // The tangent rule reads positions up to two steps along the spline.
      TangentChanged(x);
      for (SegmentCP* n : {x->prev, x->next}) {
        if (n == nullptr) continue;
        TangentChanged(n);
      }
      if (x->prev != nullptr && x->prev->prev != nullptr) TangentChanged(x->prev->prev);
      if (x->next != nullptr && x->next->next != nullptr) TangentChanged(x->next->next);
    }
    Readers(x);
  }
  // Every moved point was turned too (its own tangents read its position).
  std::unordered_set<SegmentCP*> all(turned_.begin(), turned_.end());
  std::vector<SegmentCP*> out;
  for (SegmentCP* x : all) {
    if (!x->IsHook()) continue;
    if (SegmentCP* carrier = FindCarrier(x))
      for (SegmentCP* h : HookRun(carrier)) out.push_back(h);
  }
  all.insert(out.begin(), out.end());
  return std::vector<SegmentCP*>(all.begin(), all.end());
}

}  // namespace splinecore::detail
