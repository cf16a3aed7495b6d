// SPDX-License-Identifier: MIT
// The two spaces the conversions, the hook placement and the tangent
// refresh run in, as policies: ScreenSpace (tangents found in screen space
// and carried back to model space with inverseScreenMatrix) and
// MuscleSpace (the muscle placement, in model space, nothing carried
// back). Each names the getters and members its algorithms use; the
// algorithms are written once over them (internal).
#ifndef SPLINECORE_SRC_CONTROLPOINT_SPACES_H
#define SPLINECORE_SRC_CONTROLPOINT_SPACES_H

#include "controlpoint/position_cache.h"
#include "splinecore/hooks.h"

namespace splinecore::detail {

struct ScreenSpace {
  static constexpr bool kScreen = true;
  static Vector& Position(SegmentCP* c) { return c->Getscreenp(); }
  static Vector& InHandle(SegmentCP* c) { return c->Getscreenit(); }
  static Vector& OutHandle(SegmentCP* c) { return c->Getscreenot(); }
  // Where Convert writes the tangents.
  static Vector& InTangent(SegmentCP* c) { return c->it; }
  static Vector& OutTangent(SegmentCP* c) { return c->ot; }
  // A hook's pieces: the one ending at it, and the run's last one.
  static Vector& HookIn(HookSegmentCP* h) { return h->hit; }
  static Vector& HookOut(HookSegmentCP* h) { return h->hot; }
  static Vector& LastIn(HookSegmentCP* h) { return h->pit; }
  static Vector& LastOut(HookSegmentCP* h) { return h->pot; }
  // Brings the position a tangent reads around x up to date.
  static void Refresh(SegmentCP* x) { x->Getp(); }
  static bool IsConverted(const SegmentCP* c) { return c->IsConverted() != 0; }
  static void OnConverted(SegmentCP* c) { c->OnConverted(); }
  static void Convert(SegmentCP* c) { c->Convert(); }
};

struct MuscleSpace {
  static constexpr bool kScreen = false;
  static Vector& Position(SegmentCP* c) { return c->Getmp(); }
  static Vector& InHandle(SegmentCP* c) { return c->Getmit(); }
  static Vector& OutHandle(SegmentCP* c) { return c->Getmot(); }
  // MConvert writes the handles in place of the tangents.
  static Vector& InTangent(SegmentCP* c) { return c->mit; }
  static Vector& OutTangent(SegmentCP* c) { return c->mot; }
  // The muscle placement's pieces.
  static Vector& HookIn(HookSegmentCP* h) { return h->mhit; }
  static Vector& HookOut(HookSegmentCP* h) { return h->mhot; }
  static Vector& LastIn(HookSegmentCP* h) { return h->mpit; }
  static Vector& LastOut(HookSegmentCP* h) { return h->mpot; }
  // A hook's muscle position is its run's muscle placement.
  static void Refresh(SegmentCP* x) { RefreshMuscleHookRun(x); }
  static bool IsConverted(const SegmentCP* c) { return c->IsMconverted() != 0; }
  static void OnConverted(SegmentCP* c) { c->OnMconverted(); }
  static void Convert(SegmentCP* c) { c->MConvert(); }
};

}  // namespace splinecore::detail

#endif
