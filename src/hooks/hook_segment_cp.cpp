// SPDX-License-Identifier: MIT
// HookSegmentCP: construction, the parameter s and the piece accessors.
#include "hooks/snap.h"
#include "splinecore/hooks.h"

namespace splinecore {

HookSegmentCP::HookSegmentCP() : SegmentCP() { OnHook(); }

HookSegmentCP::HookSegmentCP(FigureCache* figureCache) : SegmentCP(figureCache) {}

HookSegmentCP::HookSegmentCP(SegmentCP* cp, float param) : SegmentCP() {
  s = param;
  flags = cp->flags | cpflag::hook;
  p = cp->p;
  tag = cp->tag;
  indelta = cp->indelta;
  outdelta = cp->outdelta;
  stackNext = cp->stackNext;
  stackPrev = cp->stackPrev;
  prev = cp->prev;
  next = cp->next;
  id = cp->id;
  stamp = cp->stamp;
  screenStamp = cp->screenStamp;
  head = this;
  // Model and screen caches start stale; the muscle and conversion flags
  // stay as copied until Touch clears them.
  flags &= ~(cpflag::muscleDeltaCached | cpflag::musclepCached | cpflag::pCached | cpflag::otCached |
             cpflag::itCached | cpflag::screenotCached | cpflag::screenitCached | cpflag::screenpCached);
}

HookSegmentCP::HookSegmentCP(const HookSegmentCP& other) = default;

HookSegmentCP& HookSegmentCP::operator=(const HookSegmentCP& other) = default;

HookSegmentCP::~HookSegmentCP() = default;

float HookSegmentCP::GetS() {
  s = detail::SnapS(s);
  return s;
}

void HookSegmentCP::SetS(float value) { s = value; }

Vector& HookSegmentCP::Gettempv() { return tempv; }

// The screen placement's pieces are written when the run is placed, which
// the hook's screen position brings up to date.
namespace {

Vector* Placed(HookSegmentCP* h, Vector* piece) {
  h->Getscreenp();
  return piece;
}

}  // namespace

Vector* HookSegmentCP::Gethit() { return Placed(this, &hit); }
Vector* HookSegmentCP::Gethot() { return Placed(this, &hot); }
Vector* HookSegmentCP::Getpit() { return Placed(this, &pit); }
Vector* HookSegmentCP::Getpot() { return Placed(this, &pot); }

Vector* HookSegmentCP::Getmhit() { return &mhit; }
Vector* HookSegmentCP::Getmhot() { return &mhot; }
Vector* HookSegmentCP::Getmpit() { return &mpit; }
Vector* HookSegmentCP::Getmpot() { return &mpot; }

}  // namespace splinecore
