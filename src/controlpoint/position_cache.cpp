// SPDX-License-Identifier: MIT
// Cached positions: model, muscle-mode and screen, with the staleness rules
// that the tangent and conversion code share.
#include "controlpoint/checked.h"
#include "controlpoint/position_cache.h"

#include "splinecore/hooks.h"

namespace splinecore {

namespace {

// Clears `converted` on every stack member from `top` down and on each
// member's spline neighbours: their tangents depend on a moved position.
void UnconvertStackFrom(SegmentCP* top) {
  for (SegmentCP* m : detail::StackFrom(top)) {
    m->OffConverted();
    if (m->next != nullptr) m->next->OffConverted();
    if (m->prev != nullptr) m->prev->OffConverted();
  }
}

// One muscle-mode delta: the control point's own value turned by the
// effects' sums, its magnitude scaled only when an effect says so. Returns
// 1 when a stored field changed.
int StoreMuscleDelta(Delta& stored, const Delta& own, const Delta& sum, std::int16_t effectFlags) {
  const Delta old = stored;
  stored.pitch = static_cast<float>(static_cast<double>(own.pitch) + sum.pitch);
  stored.yaw = static_cast<float>(static_cast<double>(own.yaw) + sum.yaw);
  stored.magnitude = (effectFlags & 4) != 0
                         ? static_cast<float>(static_cast<double>(own.magnitude) * sum.magnitude)
                         : own.magnitude;
  return stored.pitch != old.pitch || stored.yaw != old.yaw || stored.magnitude != old.magnitude;
}

// Runs c's effects on its muscle-mode deltas and stores the results in ec.
void RefreshMuscleDeltas(SegmentCP* c, MuscleCPData* ec) {
  c->OnMuscleDeltaCached();
  Delta in{0.0f, 0.0f, 1.0f};
  Delta out{0.0f, 0.0f, 1.0f};
  std::int16_t inFlags = 0;
  std::int16_t outFlags = 0;
  for (MuscleEffect* f = ec->effects; f != nullptr; f = f->next) {
    inFlags = static_cast<std::int16_t>(inFlags | f->ApplyToInDelta(f->owner->word, c, &in));
    outFlags = static_cast<std::int16_t>(outFlags | f->ApplyToOutDelta(f->owner->word, c, &out));
  }
  if (inFlags != 0) c->OnMuscleMoved();
  if (StoreMuscleDelta(ec->indelta, c->indelta, in, inFlags)) c->OffConverted();
  if (outFlags != 0) c->OnMuscleMoved();
  if (StoreMuscleDelta(ec->outdelta, c->outdelta, out, outFlags)) c->OffConverted();
}

}  // namespace

Vector& SegmentCP::Getp() {
  detail::CheckGetter(this, detail::Needs::kModel);
  SegmentCP* h = head;
  detail::CheckModelGeneration(h);
  if (detail::IsMuscleMode(this)) {
    if (h->IsMuscle() || (this != h && IsMuscle())) return Getmusclep();
    return h->p;
  }
  // Leaving the muscle state: whatever muscle mode moved must be converted again.
  if (h->IsMuscleMoved() || h->IsMuscle() || IsMuscleMoved() || IsMuscle()) {
    h->OffMuscleMoved();
    UnconvertStackFrom(h);
  }
  return h->p;
}

Vector& SegmentCP::Getmusclep() {
  detail::CheckGetter(this, detail::Needs::kModel);
  SegmentCP* h = head;
  MuscleCPData* eh = h->GetMuscleCPData();
  MuscleCPData* ec = GetMuscleCPData();
  std::int32_t moved = 0;
  Vector old(0.0f, 0.0f, 0.0f);
  if (eh != nullptr) {
    if (h->IsMusclepCached()) return eh->position;
    h->OnMusclepCached();
    old = eh->position;
    eh->position = h->p;
    for (MuscleEffect* f = eh->effects; f != nullptr; f = f->next) {
      moved |= f->ApplyToPosition(f->owner->word, h, &eh->position);
    }
  }
  if (!IsMuscleDeltaCached() && ec != nullptr) RefreshMuscleDeltas(this, ec);
  if (moved == 0) return p;
  if (eh->position == old && h->IsMuscleMoved()) return eh->position;
  h->OnMuscleMoved();
  UnconvertStackFrom(h);
  return eh->position;
}

Vector& SegmentCP::Getnonmusclep() {
  detail::CheckGetter(this, detail::Needs::kModel);
  OffMuscleMoved();
  UnconvertStackFrom(this);
  return p;
}

Vector& SegmentCP::Getmp() {
  detail::CheckGetter(this, detail::Needs::kModel);
  detail::RefreshMuscleHookRun(this);
  return head->p;
}

Vector& SegmentCP::Getscreenp() {
  detail::CheckGetter(this, detail::Needs::kScreen);
  SegmentCP* h = head;
  detail::CheckScreenGeneration(h);
  if (h->IsScreenpCached()) return h->screenp;
  // Set first: the placement below asks for the screen position of every
  // hook of the run, this one included, and must find it in place.
  h->OnScreenpCached();
  if (IsHook()) {
    SegmentCP* carrier = detail::FindCarrier(this);
    if (carrier != nullptr) {
      HookRange(carrier);
      for (SegmentCP* k : detail::HookRun(carrier)) {
        k->OnScreenpCached();
        k->flags &= ~(cpflag::muscleDeltaCached | cpflag::musclepCached | cpflag::otCached | cpflag::itCached |
                      cpflag::screenotCached | cpflag::screenitCached);
      }
    }
  }
  h->screenp = TransformPoint(cache->view->screenMatrix, h->Getp());
  return h->screenp;
}

void SegmentCP::SetPrevp() {
  SegmentCP* h = head;
  MuscleTable* table = cache->muscleTable;
  if (table == nullptr || table->prevp == nullptr || h->id >= table->count) return;
  table->prevp[h->id] = h->screenp;
}

void SegmentCP::OffCacheditot() {
  flags &= ~(cpflag::muscleDeltaCached | cpflag::musclepCached | cpflag::otCached | cpflag::itCached);
}

void SegmentCP::OffCachedpitot() {
  flags &= ~(cpflag::muscleDeltaCached | cpflag::musclepCached | cpflag::pCached | cpflag::otCached |
             cpflag::itCached);
}

void SegmentCP::OffCachedmitot() { flags &= ~(cpflag::motCached | cpflag::mitCached); }

void SegmentCP::OffCachedmpitot() { flags &= ~(cpflag::mpCached | cpflag::motCached | cpflag::mitCached); }

void SegmentCP::OffCachedscreenitot() { flags &= ~(cpflag::screenotCached | cpflag::screenitCached); }

void SegmentCP::OffCachedscreenpitot() {
  flags &= ~(cpflag::screenotCached | cpflag::screenitCached | cpflag::screenpCached);
}

void detail::RefreshMuscleHookRun(SegmentCP* k) {
  if (!k->IsHook() || k->IsMpCached()) return;
  SegmentCP* carrier = detail::FindCarrier(k);
  if (carrier == nullptr) return;
  // Set first, as Getscreenp does: a segment that ends on a hook whose
  // placement leads back to this run asks for k again while it is placed.
  k->OnMpCached();
  MHookRange(carrier);
  for (SegmentCP* m : detail::HookRun(carrier)) {
    m->OnMpCached();
    m->flags &= ~(cpflag::motCached | cpflag::mitCached);
  }
}

}  // namespace splinecore
