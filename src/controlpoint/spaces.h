// SPDX-License-Identifier: MIT
// The two spaces the conversions, the hook placement and the tangent
// refresh run in, as policies: ScreenSpace (tangents found in screen space
// and carried back to model space with inverseScreenMatrix) and
// MuscleSpace (the muscle placement, in model space, nothing carried
// back). One template turns the getters, members and flag a space uses into
// the policy's operations; each space is one list of its own (internal).
#ifndef SPLINECORE_SRC_CONTROLPOINT_SPACES_H
#define SPLINECORE_SRC_CONTROLPOINT_SPACES_H

#include <cstdint>

#include "controlpoint/position_cache.h"
#include "splinecore/hooks.h"

namespace splinecore::detail {

using PointGetter = Vector& (SegmentCP::*)();
using PointMember = Vector SegmentCP::*;
using HookMember = Vector HookSegmentCP::*;

// Screen: the screen-only steps run (`if constexpr`). P, In, Out: the
// position and handle getters. It, Ot: where Convert writes the tangents.
// HookIn, HookOut: the piece ending at a hook; LastIn, LastOut: the run's last
// piece. RefreshAround brings the position a tangent reads around a point up
// to date. ConvertedBit marks ConvertTangents as done.
template <bool Screen, PointGetter P, PointGetter In, PointGetter Out, PointMember It, PointMember Ot,
          HookMember HookInPiece, HookMember HookOutPiece, HookMember LastInPiece, HookMember LastOutPiece,
          void (*RefreshAround)(SegmentCP*), std::uint32_t ConvertedBit, void (SegmentCP::*ConvertTangents)()>
struct SpacePolicy {
  static constexpr bool kScreen = Screen;
  static Vector& Position(SegmentCP* c) { return (c->*P)(); }
  static Vector& InHandle(SegmentCP* c) { return (c->*In)(); }
  static Vector& OutHandle(SegmentCP* c) { return (c->*Out)(); }
  static Vector& InTangent(SegmentCP* c) { return c->*It; }
  static Vector& OutTangent(SegmentCP* c) { return c->*Ot; }
  static Vector& HookIn(HookSegmentCP* h) { return h->*HookInPiece; }
  static Vector& HookOut(HookSegmentCP* h) { return h->*HookOutPiece; }
  static Vector& LastIn(HookSegmentCP* h) { return h->*LastInPiece; }
  static Vector& LastOut(HookSegmentCP* h) { return h->*LastOutPiece; }
  static void Refresh(SegmentCP* x) { RefreshAround(x); }
  static bool IsConverted(const SegmentCP* c) { return (c->flags & ConvertedBit) != 0; }
  static void OnConverted(SegmentCP* c) { c->flags |= ConvertedBit; }
  static void Convert(SegmentCP* c) { (c->*ConvertTangents)(); }
};

// The screen space's RefreshAround: the model position, brought up to date.
inline void RefreshModelPosition(SegmentCP* x) { x->Getp(); }

using ScreenSpace =
    SpacePolicy<true, &SegmentCP::Getscreenp, &SegmentCP::Getscreenit, &SegmentCP::Getscreenot, &SegmentCP::it,
                &SegmentCP::ot, &HookSegmentCP::hit, &HookSegmentCP::hot, &HookSegmentCP::pit, &HookSegmentCP::pot,
                RefreshModelPosition, cpflag::converted, &SegmentCP::Convert>;

// MConvert writes the handles in place of the tangents; a hook's muscle
// position is its run's muscle placement.
using MuscleSpace =
    SpacePolicy<false, &SegmentCP::Getmp, &SegmentCP::Getmit, &SegmentCP::Getmot, &SegmentCP::mit, &SegmentCP::mot,
                &HookSegmentCP::mhit, &HookSegmentCP::mhot, &HookSegmentCP::mpit, &HookSegmentCP::mpot,
                RefreshMuscleHookRun, cpflag::mconverted, &SegmentCP::MConvert>;

}  // namespace splinecore::detail

#endif
