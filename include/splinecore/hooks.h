// SPDX-License-Identifier: MIT
/// @file
/// Hooks: control points that ride on a segment of another spline.
///
/// A hook hangs in its carrier's stack, in the run of hooks directly below
/// the carrier; it lies on the segment from the carrier (s = 0) to the
/// carrier's next (s = 1), at s snapped to 0.25, 0.5 or 0.75. HookRange and
/// MHookRange place a carrier's whole run and cut the segment into pieces
/// at the hooks; each hook stores the inner Bezier points of the piece that
/// ends at it, and the last hook also those of the piece to the carrier's next.
#ifndef SPLINECORE_HOOKS_H
#define SPLINECORE_HOOKS_H

#include "splinecore/export.h"
#include "splinecore/segment_cp.h"

namespace splinecore {

/// A control point that rides on a segment of another spline (see the file
/// description); the `hook` flag marks it.
class SPLINECORE_API HookSegmentCP : public SegmentCP {
 public:
  float s;       ///< parameter on the carrier's segment; readers snap it
  Vector hit;    ///< piece ending here: first inner Bezier point (model space)
  Vector hot;    ///< piece ending here: second inner Bezier point
  Vector pit;    ///< last hook only: piece to the carrier's next, first inner point
  Vector pot;    ///< last hook only: second inner point
  Vector mhit;   ///< muscle-mode twin of hit
  Vector mhot;   ///< muscle-mode twin of hot
  Vector mpit;   ///< muscle-mode twin of pit
  Vector mpot;   ///< muscle-mode twin of pot
  Vector tempv;  ///< the host's scratch; the library never touches it

  /// SegmentCP default construction, then the `hook` flag is set.
  HookSegmentCP();
  /// SegmentCP default construction, then id = cache->nextId++. The `hook`
  /// flag is NOT set: until the host sets it the point acts as an ordinary one.
  explicit HookSegmentCP(FigureCache* figureCache);
  /// A hook made from cp: cp's own p, tag, deltas, links, id, stamps and
  /// flags (with `hook` set and the model and screen cache flags cleared);
  /// head = this; cache null. s is stored unsnapped. cp is not changed.
  HookSegmentCP(SegmentCP* cp, float s);
  HookSegmentCP(const HookSegmentCP& other);             ///< copies both levels
  HookSegmentCP& operator=(const HookSegmentCP& other);  ///< copies both levels
  ~HookSegmentCP();                                      ///< the SegmentCP destructor

  /// Snaps s to 0.25 (s <= 0.375 by bit pattern, every negative s and -0),
  /// 0.5 (up to 0.625, or NaN) or 0.75, stores it and returns it.
  float GetS();
  void SetS(float value);  ///< stores value unsnapped
  Vector& Gettempv();      ///< tempv

  /// @name Placed pieces
  /// Each first calls Getscreenp on the hook, which places the whole run
  /// when the hook's screen position is stale, so the member is current.
  /// @{
  Vector* Gethit();  ///< hit, placed
  Vector* Gethot();  ///< hot, placed
  Vector* Getpit();  ///< pit, placed
  Vector* Getpot();  ///< pot, placed
  /// @}

  /// @name Muscle pieces
  /// The muscle members as they stand, without placing.
  /// @{
  Vector* Getmhit();  ///< mhit as it stands
  Vector* Getmhot();  ///< mhot as it stands
  Vector* Getmpit();  ///< mpit as it stands
  Vector* Getmpot();  ///< mpot as it stands
  /// @}
};

/// Places every hook of carrier's run in screen space and carries the
/// results back with inverseScreenMatrix. A carrier without a run, or
/// without a next, writes nothing.
SPLINECORE_API void HookRange(SegmentCP* carrier);
/// The same from the muscle-mode positions and handles; no transform. A
/// carrier without a run, or without a next, writes nothing.
SPLINECORE_API void MHookRange(SegmentCP* carrier);

}  // namespace splinecore

#endif
