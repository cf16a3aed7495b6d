// SPDX-License-Identifier: MIT
/// @file
/// SegmentCP: the control point of a spline, its flag bits, and the deletion
/// of control points.
#ifndef SPLINECORE_SEGMENT_CP_H
#define SPLINECORE_SEGMENT_CP_H

#include <cstddef>
#include <cstdint>

#include "splinecore/export.h"
#include "splinecore/geometry.h"
#include "splinecore/host.h"

namespace splinecore {

struct GroupNode;

/// Flag bits of SegmentCP::flags. Bits not named here are not used by the
/// library; they are copied with the others and free for the host.
namespace cpflag {
inline constexpr std::uint32_t smooth = 0x1u;          ///< smooth tangents; clear: a peak
inline constexpr std::uint32_t loopEnd = 0x4u;         ///< last point of a closed spline; walks along next stop after it
inline constexpr std::uint32_t hook = 0x10u;           ///< the point is a HookSegmentCP
inline constexpr std::uint32_t exempt = 0x20u;         ///< the host's: skipped by GroupSlice and by ConvertGroup's hook neighbours
inline constexpr std::uint32_t grouped = 0x40u;        ///< listed in a group (AddToGroup, DeleteFromGroup)
inline constexpr std::uint32_t skinA = 0x80u;          ///< the host's skin flag (IsSkin)
inline constexpr std::uint32_t mconverted = 0x400u;    ///< MConvert has run since the last change
inline constexpr std::uint32_t musclepCached = 0x800u; ///< in a head: its muscle-mode position is current
inline constexpr std::uint32_t lastHook = 0x1000u;     ///< a hook whose stackNext is not a hook
inline constexpr std::uint32_t touched = 0x2000u;      ///< set or cleared by Touch on request; not read by the library
inline constexpr std::uint32_t itCached = 0x4000u;     ///< `it` is current
inline constexpr std::uint32_t otCached = 0x8000u;     ///< `ot` is current
inline constexpr std::uint32_t converted = 0x10000u;   ///< Convert has run since the last change here or at a neighbour
inline constexpr std::uint32_t skinB = 0x20000u;       ///< the host's second skin flag
inline constexpr std::uint32_t screenitCached = 0x80000u;  ///< `screenit` is current
inline constexpr std::uint32_t screenotCached = 0x100000u; ///< `screenot` is current
inline constexpr std::uint32_t screenpCached = 0x200000u;  ///< in a head: `screenp` is current
inline constexpr std::uint32_t muscleMoved = 0x400000u;    ///< muscle effects moved the position or changed the deltas
inline constexpr std::uint32_t pCached = 0x4000000u;       ///< cleared with the model caches; never set by the library
inline constexpr std::uint32_t muscleDeltaCached = 0x8000000u; ///< the deltas in this point's MuscleCPData are current
inline constexpr std::uint32_t mpCached = 0x10000000u;     ///< a hook's muscle-mode placement is current
inline constexpr std::uint32_t mitCached = 0x20000000u;    ///< `mit` is current
inline constexpr std::uint32_t motCached = 0x40000000u;    ///< `mot` is current
inline constexpr std::uint32_t hasHooks = 0x80000000u;     ///< a non-hook whose stackNext is a hook

/// Model caches: what a model generation mismatch clears.
inline constexpr std::uint32_t modelCaches = muscleDeltaCached | musclepCached | pCached | otCached | itCached;
/// Screen caches: what a screen generation mismatch clears.
inline constexpr std::uint32_t screenCaches = screenotCached | screenitCached | screenpCached;
}  // namespace cpflag

/// Is/On/Off/Set for one flag bit; Set takes bit 0 of its argument.
#define SPLINECORE_FLAG_OPS(Name, bit)                                        \
  /** 1 when bit is set, else 0. */                                           \
  int Is##Name() const { return (flags & (bit)) != 0; }                       \
  /** Sets bit in flags. */                                                   \
  void On##Name() { flags |= (bit); }                                         \
  /** Clears bit in flags. */                                                 \
  void Off##Name() { flags &= ~(bit); }                                       \
  /** Sets bit when `on` is odd, else clears it. */                           \
  void Set##Name(int on) {                                                    \
    if (on & 1) On##Name(); else Off##Name();                                 \
  }

/// The control point of a spline.
///
/// The member order, widths and flag bits are shared with the host and are
/// binding (the 32-bit layout is checked in the i386 build). The host fills
/// in `cache`, `p`, the links and the flags directly, then calls SetHead on
/// every stack it formed. Derived values (tangents, screen and muscle data)
/// are computed lazily and cached here, guarded by flag bits and by the
/// figure's two generation counters; a flag is always set before the value
/// it guards is computed, which bounds the mutual recursion of the getters.
///
/// Threads: see docs/host-guide.md (one figure, one thread at a time).
class SPLINECORE_API SegmentCP {
 public:
  SegmentCP* prev;  ///< previous on the spline; null at the start of an open spline
  SegmentCP* next;  ///< next on the spline; the loopEnd point links to the first
  std::uint32_t tag;    ///< the host's; copied, never read
  std::uint32_t flags;  ///< cpflag bits
  Vector p;             ///< model-space position
  Vector it;            ///< cached model-space in-tangent
  Vector ot;            ///< cached model-space out-tangent
  Vector screenp;       ///< cached screen position (the head's is the one used)
  Vector screenit;      ///< cached screen in-handle point
  Vector screenot;      ///< cached screen out-handle point
  Vector mit;           ///< muscle in-tangent, then the muscle in-handle point
  Vector mot;           ///< muscle out-tangent, then the muscle out-handle point
  Delta indelta;        ///< turn and scale of the in-tangent
  Delta outdelta;       ///< turn and scale of the out-tangent
  SegmentCP* stackNext;  ///< lower member of the attached stack
  SegmentCP* stackPrev;  ///< upper member of the attached stack
  SegmentCP* head;       ///< top of the stack; a hook's own address
  FigureCache* cache;    ///< set by the host
  std::uint32_t id;      ///< index into the figure's muscle tables
  std::uint8_t stamp;        ///< generation of the last model validation
  std::uint8_t screenStamp;  ///< screenGeneration of the last screen validation

  /// @name Construction, memory (the record)
  /// Single control points come from AllocSeg and go back with FreeSeg;
  /// arrays come from the general heap (no class-specific array allocation).
  /// @{

  /// Sets cache to null and stamp to 255; every other member keeps what the
  /// allocation left (AllocSeg blocks are zero-filled, so nothing is cached).
  SegmentCP();
  /// As above, then id = cache->nextId++. The pointer is not stored.
  explicit SegmentCP(FigureCache* figureCache);
  SegmentCP(const SegmentCP& other);             ///< copies every member
  SegmentCP& operator=(const SegmentCP& other);  ///< copies every member
  /// Leaves the figure's group list (skin or plain) and releases the muscle
  /// data of this id in every muscle table. Does not unlink: DeleteCP does.
  ~SegmentCP();
  static void* operator new(std::size_t size);  ///< AllocSeg
  static void operator delete(void* block);     ///< FreeSeg
  /// @}

  /// @name Muscle data, deltas, figure and skin flags
  /// @{
  MuscleCPData* GetMuscleCPData();  ///< null without table, array or entry
  int IsMuscle();                   ///< 1 when GetMuscleCPData() is not null
  /// The Delta in force: the muscle record's in muscle mode when there is
  /// one, else the control point's own. Nothing is refreshed.
  Delta& Getindelta();
  Delta& Getoutdelta();  ///< the same for the out-tangent
  int IsIn();  ///< bit 0 of the figure's figureFlags; needs cache and figure
  void OnIn();   ///< sets the In flag
  void OffIn();  ///< clears the In flag
  void SetIn(int on);  ///< bit 0 of `on` becomes the In flag
  int IsSkin();        ///< skinA or skinB
  void OffSkin();      ///< clears both
  /// @}

  /// @name Splines and stacks
  /// @{
  SegmentCP* GetNext();          ///< next
  void SetNext(SegmentCP* n);    ///< stores n in next; nothing else changes
  SegmentCP* GetPrev();          ///< prev
  void SetPrev(SegmentCP* p);    ///< stores p in prev; nothing else changes
  SegmentCP** GetNextUplink();   ///< the address of next
  SegmentCP** GetPrevUplink();   ///< the address of prev
  /// Re-derives head, hasHooks and lastHook for this control point's whole
  /// stack. Call after every change of a stack's membership or order.
  void SetHead();
  /// Marks derived data stale: clears converted, mconverted, mpCached,
  /// motCached, mitCached and moves both stamps one down. Mode bit 0 sets
  /// `touched`, else bit 1 clears it.
  void Touch(std::int32_t mode);
  /// @}

  /// @name Positions (cached)
  /// Preconditions for all getters: cache and head set; screen getters also
  /// need the figure's ViewRecord.
  /// @{
  Vector& Getp();            ///< current model position (the head's p)
  Vector& Getmp();           ///< head's p after bringing a hook's muscle placement up to date
  Vector& Getmusclep();      ///< muscle-mode position (see Getp)
  Vector& Getnonmusclep();   ///< own p, after leaving the muscle state
  Vector& Getscreenp();      ///< head's screenp, brought up to date; places a
                             ///< hook's run first (not for a hook without carrier)
  void SetPrevp();           ///< head's screenp into the muscle table's prevp[head id];
                             ///< does nothing without a table or a covering array
  void OffCacheditot();        ///< clears muscleDeltaCached, musclepCached, otCached, itCached
  void OffCachedpitot();       ///< the same and pCached
  void OffCachedmitot();       ///< clears motCached, mitCached
  void OffCachedmpitot();      ///< clears mpCached, motCached, mitCached
  void OffCachedscreenitot();  ///< clears screenotCached, screenitCached
  void OffCachedscreenpitot(); ///< the same and screenpCached
  /// @}

  /// @name Tangents
  /// A hook whose carrier is missing, whose carrier has no next, or that
  /// lacks a partner gets a zero tangent from the getters and is not
  /// converted; the screen handle is then the transformed head position.
  /// @{

  /// Computes in- and out-tangent (and, when both normal pointers are given,
  /// the normal of the local plane) from the neighbours' positions: screen
  /// positions when `screen` is nonzero, else muscle-placement model
  /// positions. Returns 1 when the tangents come with a normal. A hook
  /// returns 0 and writes nothing. A smooth point on top of its prev (but not
  /// of its next) has no direction toward prev: its normal is zero.
  int GetTangents(Vector* inTangent, Vector* outTangent, Vector* inNormal, Vector* outNormal, int screen);
  Vector& Getit();        ///< model in-tangent
  Vector& Getot();        ///< model out-tangent
  Vector& Getscreenit();  ///< screen in-handle point
  Vector& Getscreenot();  ///< screen out-handle point
  /// Muscle handle points Getmp(head) -/+ tangent/3. The first getter after
  /// a Touch (mconverted clear) runs MConvert, which writes both tangents, and
  /// converts only its own member in place; the other member keeps its tangent
  /// until its own getter converts it, from the head's position at that time.
  /// A getter whose flag is found clear always refreshes the hook runs of next
  /// and prev first. When both flags are clear while mconverted is set
  /// (OffCachedmitot, OffCachedmpitot, a hook run re-placed), the members may
  /// already hold handle points: the getter then runs MConvert again rather
  /// than converting a handle point twice, so no member is converted twice and
  /// no set flag ever guards a tangent. No generation check. Hooks as for Getit.
  Vector& Getmit();
  Vector& Getmot();  ///< the muscle out-handle point, as Getmit
  /// @}

  /// @name Conversion
  /// A hook without a spline neighbour, without a carrier with a next, or
  /// without a partner is left as it was by both conversions.
  /// @{

  /// Writes it/ot from screen-space tangents carried back to model space.
  /// Neither tests nor sets `converted`: the getters do.
  void Convert();
  /// Writes mit/mot as muscle-mode tangents. Neither tests nor sets `mconverted`.
  void MConvert();
  /// @}

  /// @name Group lists
  /// @{

  /// Appends unless already listed (always returns 1); sets `grouped` when
  /// `mark` is nonzero and a node was added. If AllocExt fails, nothing is
  /// added and `grouped` is not set (still returns 1).
  int AddToGroup(GroupNode** list, int mark);
  int AddToGroupNoCheck(GroupNode** list);  ///< prepends; 0 when AllocExt fails
  int DeleteFromGroup(GroupNode** list);    ///< removes the first node; 1 removed, 0 not listed
  int IsAnyGrouped();  ///< head or a member below it carries `grouped`
  /// @}

  /// @name Flag operations
  /// IsX, OnX, OffX and SetX for each named bit x of cpflag.
  /// @{
  SPLINECORE_FLAG_OPS(Smooth, cpflag::smooth)
  SPLINECORE_FLAG_OPS(LoopEnd, cpflag::loopEnd)
  SPLINECORE_FLAG_OPS(Hook, cpflag::hook)
  SPLINECORE_FLAG_OPS(Exempt, cpflag::exempt)
  SPLINECORE_FLAG_OPS(Grouped, cpflag::grouped)
  SPLINECORE_FLAG_OPS(SkinA, cpflag::skinA)
  SPLINECORE_FLAG_OPS(Mconverted, cpflag::mconverted)
  SPLINECORE_FLAG_OPS(MusclepCached, cpflag::musclepCached)
  SPLINECORE_FLAG_OPS(LastHook, cpflag::lastHook)
  SPLINECORE_FLAG_OPS(Touched, cpflag::touched)
  SPLINECORE_FLAG_OPS(ItCached, cpflag::itCached)
  SPLINECORE_FLAG_OPS(OtCached, cpflag::otCached)
  SPLINECORE_FLAG_OPS(Converted, cpflag::converted)
  SPLINECORE_FLAG_OPS(SkinB, cpflag::skinB)
  SPLINECORE_FLAG_OPS(ScreenitCached, cpflag::screenitCached)
  SPLINECORE_FLAG_OPS(ScreenotCached, cpflag::screenotCached)
  SPLINECORE_FLAG_OPS(ScreenpCached, cpflag::screenpCached)
  SPLINECORE_FLAG_OPS(MuscleMoved, cpflag::muscleMoved)
  SPLINECORE_FLAG_OPS(PCached, cpflag::pCached)
  SPLINECORE_FLAG_OPS(MuscleDeltaCached, cpflag::muscleDeltaCached)
  SPLINECORE_FLAG_OPS(MpCached, cpflag::mpCached)
  SPLINECORE_FLAG_OPS(MitCached, cpflag::mitCached)
  SPLINECORE_FLAG_OPS(MotCached, cpflag::motCached)
  SPLINECORE_FLAG_OPS(HasHooks, cpflag::hasHooks)
  /// @}
};

#undef SPLINECORE_FLAG_OPS

/// Unlinks c from its spline (moving loopEnd to its prev when it was the
/// last point of a closed spline) and from its stack (a removed stack top
/// first copies its p into the members below), then destroys and frees it.
/// `*first` is updated when c was the first control point.
/// When `first` or `*first` is null, or c is not reached from `*first` before the
/// walk passes the loopEnd point, nothing changes and nothing is freed.
/// The only point of a closed spline (its next is itself) is unlinked from
/// its stack and freed, and `*first` becomes null.
SPLINECORE_API void DeleteCP(SegmentCP** first, SegmentCP* c);
/// Destroys and frees every control point of the spline that starts at
/// `first` (walking to the loopEnd point or the end), unlinking each from its
/// stack. A null `first` does nothing.
SPLINECORE_API void DeleteAllCP(SegmentCP* first);

}  // namespace splinecore

#endif
