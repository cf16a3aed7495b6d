// SPDX-License-Identifier: MIT
// The eager steps of the whole-figure refresh (internal): the values the
// lazy getters leave in a point that no hook and no muscle data can reach,
// written directly. Such a point's values depend only on model positions,
// its own deltas and the screen transforms, and asking for them changes no
// other point, so the order in which the getters would have asked does not
// show. Each step writes only the point it is given, except a run of hooks
// outside muscle mode, placed and converted whole (RefreshPlacedRun).
#ifndef SPLINECORE_SRC_CONVERT_WHOLE_REFRESH_H
#define SPLINECORE_SRC_CONVERT_WHOLE_REFRESH_H

#include <initializer_list>

#include "controlpoint/walks.h"
#include "convert/apply_delta.h"
#include "splinecore/hooks.h"
#include "splinecore/host.h"
#include "tangents/hook_partners.h"
#include "tangents/tangent_rule.h"

namespace splinecore::detail {

// Flags that record derived state: a freshly built point has none of them.
inline constexpr std::uint32_t kDerivedFlags = cpflag::modelCaches | cpflag::screenCaches | cpflag::mpCached |
                                               cpflag::mitCached | cpflag::motCached | cpflag::converted |
                                               cpflag::mconverted | cpflag::muscleMoved;

inline constexpr float kHandleInThird = -0.3333333432674408f;
inline constexpr float kHandleOutThird = 0.3333333432674408f;

// Puts c's derived values back to their freshly built state (a hook's
// placement too): the getters recompute whatever is asked next.
inline void ZeroDerived(SegmentCP* c) {
  c->flags &= ~kDerivedFlags;
  // One store each: a chain (a = b = zero) reads each member back.
  for (Vector* v : {&c->it, &c->ot, &c->screenp, &c->screenit, &c->screenot, &c->mit, &c->mot}) *v = kZeroVector;
  if (c->IsHook()) {
    auto* h = static_cast<HookSegmentCP*>(c);
    for (Vector* v : {&h->hit, &h->hot, &h->pit, &h->pot, &h->mhit, &h->mhot, &h->mpit, &h->mpot, &h->p})
      *v = kZeroVector;
  }
}

// The second neighbour an open end's tangent rule may read (null for a
// point with both neighbours or neither).
inline SegmentCP* OpenEndSecond(const SegmentCP* c) {
  if (c->prev == nullptr && c->next != nullptr) return c->next->next;
  if (c->next == nullptr && c->prev != nullptr) return c->prev->prev;
  return nullptr;
}

// The screen image of a handle point: position plus tangent * third (each
// rounded), as the screen handle getters form it.
inline Vector ScreenHandlePoint(const Matrix& screen, const Vector& tangent, float third, const Vector& at) {
  Vector handle = tangent * third;
  handle += at;
  return TransformPoint(screen, handle);
}

// Where RefreshPlainPoint reads positions: per point, the slots of the
// heads of c, prev, next and the second neighbour an open end reads (slot
// order as TangentRule's roles), in the arrays of the heads' screen and
// model positions.
struct PlainSlots {
  std::uint32_t head[4];
};

// Every derived member of a non-hook c whose neighbours and second
// neighbours are no hooks and whose stacks, and theirs, hold no muscle data,
// from the screen and model positions of its head and theirs in `screenAt`
// and `modelAt` at the slots: a head's screen position, the
// model tangents found in screen space (Convert), the screen handles and,
// in muscle mode, the muscle handles (MConvert, then the handle points),
// with the flags and stamps the getters leave.
// Flattened: the rule's tangents stay in registers instead of reaching the
// point through stack copies that stall store forwarding.
[[gnu::flatten]] inline void RefreshPlainPoint(SegmentCP* c, const PlainSlots& slots, const Vector* screenAt,
                                               const Vector* modelAt, const Matrix& screen, const Matrix& inverse,
                                               bool muscle) {
  const bool isHead = c->head == c;
  Vector it = kZeroVector;
  Vector ot = kZeroVector;
  TurnedTangents(c->indelta, c->outdelta, it, ot, [&](Vector* t1, Vector* t2, Vector* n1, Vector* n2) {
    return TangentRule(c, [&](SegmentCP*, int role) { return screenAt[slots.head[role]]; }, t1, t2, n1, n2);
  });
  TransformDirection(inverse, ot);
  TransformDirection(inverse, it);
  const Vector at = modelAt[slots.head[0]];
  c->it = it;
  c->ot = ot;
  c->screenit = ScreenHandlePoint(screen, it, kHandleInThird, at);
  c->screenot = ScreenHandlePoint(screen, ot, kHandleOutThird, at);
  std::uint32_t flags = (c->flags & ~kDerivedFlags) | cpflag::itCached | cpflag::otCached | cpflag::converted |
                        cpflag::screenitCached | cpflag::screenotCached;
  if (isHead) flags |= cpflag::screenpCached;
  c->screenp = isHead ? screenAt[slots.head[0]] : kZeroVector;
  Vector mit = kZeroVector;
  Vector mot = kZeroVector;
  if (muscle) {
    TurnedTangents(c->indelta, c->outdelta, mit, mot, [&](Vector* t1, Vector* t2, Vector* n1, Vector* n2) {
      return TangentRule(c, [&](SegmentCP*, int role) { return modelAt[slots.head[role]]; }, t1, t2, n1, n2);
    });
    mit = mit * kHandleInThird + at;
    mot = mot * kHandleOutThird + at;
    flags |= cpflag::mconverted | cpflag::mitCached | cpflag::motCached;
  }
  c->mit = mit;
  c->mot = mot;
  c->flags = flags;
  c->stamp = c->cache->generation;
  c->screenStamp = c->cache->screenGeneration;
}

// Whether RefreshPlacedRun may compute carrier's run: the carrier has a
// next, each hook has both partners (its getters find a tangent for it) and
// carries no run of its own, and `holds` says of the carrier, its next and
// the partners (each with its head) that they hold their values.
template <class Holds>
bool PlacedRunReady(SegmentCP* carrier, Holds holds) {
  auto ready = [&holds](SegmentCP* x) { return x != nullptr && holds(x); };
  if (!ready(carrier) || !ready(carrier->next) || !ready(SecondHookPartnerForGetters(carrier))) return false;
  SegmentCP* second = SecondHookPartnerForConvert(carrier);
  if (second != nullptr && !ready(second)) return false;
  for (SegmentCP* k : HookRun(carrier))
    if (k->IsHasHooks() || !ready(FirstHookPartner(k, carrier))) return false;
  return true;
}

// Every derived member of the hooks of carrier's run, outside muscle mode,
// with the bits and flags the getters leave (a hook's placement, screen
// position, tangents from its partners and screen handles) when the figure
// holds no muscle data, no hook of another run and no point left to the
// getters is read (the hooks' spline neighbours and their heads are no
// hooks), and the carrier, its next, their heads and the run's partners hold
// their values already. The hooks' spline neighbours get their screen
// positions, as from the getters; nothing else is written.
void RefreshPlacedRun(SegmentCP* carrier);

}  // namespace splinecore::detail

#endif
