// SPDX-License-Identifier: MIT
// Compile-time checks of the memory layouts shared with the host. The
// binding offsets are those of the 32-bit layout, checked in i386 builds;
// x86-64 builds use the natural 64-bit layout of the same declarations.
#include <cstddef>

#include "splinecore/groups.h"
#include "splinecore/hooks.h"
#include "splinecore/host.h"
#include "splinecore/segment_cp.h"
#include "splinecore/slices.h"

#if defined(__i386__)

// offsetof on the polymorphic MuscleEffect and the derived HookSegmentCP is
// conditionally supported; GCC and Clang support it and give the real offset.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace splinecore {

#define SPLINECORE_CHECK_OFFSET(type, member, offset) \
  static_assert(offsetof(type, member) == (offset), #type "::" #member " must be at " #offset)

SPLINECORE_CHECK_OFFSET(FigureCache, view, 44);
SPLINECORE_CHECK_OFFSET(FigureCache, figure, 48);
SPLINECORE_CHECK_OFFSET(FigureCache, groupList, 264);
SPLINECORE_CHECK_OFFSET(FigureCache, skinGroupList, 268);
SPLINECORE_CHECK_OFFSET(FigureCache, muscleTable, 272);
SPLINECORE_CHECK_OFFSET(FigureCache, generation, 328);
SPLINECORE_CHECK_OFFSET(FigureCache, screenGeneration, 329);
SPLINECORE_CHECK_OFFSET(FigureCache, mode, 330);
SPLINECORE_CHECK_OFFSET(FigureCache, nextId, 472);

SPLINECORE_CHECK_OFFSET(FigureRecord, muscleTables, 260);
SPLINECORE_CHECK_OFFSET(FigureRecord, figureFlags, 464);
SPLINECORE_CHECK_OFFSET(MuscleTableLink, next, 0);
SPLINECORE_CHECK_OFFSET(MuscleTableLink, table, 4);

SPLINECORE_CHECK_OFFSET(MuscleTable, cpData, 684);
SPLINECORE_CHECK_OFFSET(MuscleTable, prevp, 688);
SPLINECORE_CHECK_OFFSET(MuscleTable, count, 800);

SPLINECORE_CHECK_OFFSET(MuscleCPData, effects, 0);
SPLINECORE_CHECK_OFFSET(MuscleCPData, indelta, 4);
SPLINECORE_CHECK_OFFSET(MuscleCPData, outdelta, 16);
SPLINECORE_CHECK_OFFSET(MuscleCPData, position, 28);
static_assert(sizeof(MuscleCPData) == 40, "the library writes MuscleCPData bytes 4 to 39");

SPLINECORE_CHECK_OFFSET(MuscleEffect, next, 4);  // after the table of virtual operations
SPLINECORE_CHECK_OFFSET(MuscleEffect, owner, 8);
SPLINECORE_CHECK_OFFSET(MuscleOwner, word, 48);

SPLINECORE_CHECK_OFFSET(ViewRecord, viewMatrix, 156);
SPLINECORE_CHECK_OFFSET(ViewRecord, inverseViewMatrix, 204);
SPLINECORE_CHECK_OFFSET(ViewRecord, screenMatrix, 252);
SPLINECORE_CHECK_OFFSET(ViewRecord, inverseScreenMatrix, 300);

SPLINECORE_CHECK_OFFSET(SegmentCP, prev, 0);
SPLINECORE_CHECK_OFFSET(SegmentCP, next, 4);
SPLINECORE_CHECK_OFFSET(SegmentCP, tag, 8);
SPLINECORE_CHECK_OFFSET(SegmentCP, flags, 12);
SPLINECORE_CHECK_OFFSET(SegmentCP, p, 16);
SPLINECORE_CHECK_OFFSET(SegmentCP, it, 28);
SPLINECORE_CHECK_OFFSET(SegmentCP, ot, 40);
SPLINECORE_CHECK_OFFSET(SegmentCP, screenp, 52);
SPLINECORE_CHECK_OFFSET(SegmentCP, screenit, 64);
SPLINECORE_CHECK_OFFSET(SegmentCP, screenot, 76);
SPLINECORE_CHECK_OFFSET(SegmentCP, mit, 88);
SPLINECORE_CHECK_OFFSET(SegmentCP, mot, 100);
SPLINECORE_CHECK_OFFSET(SegmentCP, indelta, 112);
SPLINECORE_CHECK_OFFSET(SegmentCP, outdelta, 124);
SPLINECORE_CHECK_OFFSET(SegmentCP, stackNext, 136);
SPLINECORE_CHECK_OFFSET(SegmentCP, stackPrev, 140);
SPLINECORE_CHECK_OFFSET(SegmentCP, head, 144);
SPLINECORE_CHECK_OFFSET(SegmentCP, cache, 148);
SPLINECORE_CHECK_OFFSET(SegmentCP, id, 152);
SPLINECORE_CHECK_OFFSET(SegmentCP, stamp, 156);
SPLINECORE_CHECK_OFFSET(SegmentCP, screenStamp, 157);
static_assert(sizeof(SegmentCP) == 160, "SegmentCP is 160 bytes");

SPLINECORE_CHECK_OFFSET(HookSegmentCP, s, 160);
SPLINECORE_CHECK_OFFSET(HookSegmentCP, hit, 164);
SPLINECORE_CHECK_OFFSET(HookSegmentCP, hot, 176);
SPLINECORE_CHECK_OFFSET(HookSegmentCP, pit, 188);
SPLINECORE_CHECK_OFFSET(HookSegmentCP, pot, 200);
SPLINECORE_CHECK_OFFSET(HookSegmentCP, mhit, 212);
SPLINECORE_CHECK_OFFSET(HookSegmentCP, mhot, 224);
SPLINECORE_CHECK_OFFSET(HookSegmentCP, mpit, 236);
SPLINECORE_CHECK_OFFSET(HookSegmentCP, mpot, 248);
SPLINECORE_CHECK_OFFSET(HookSegmentCP, tempv, 260);
static_assert(sizeof(HookSegmentCP) == 272, "HookSegmentCP is 272 bytes");

SPLINECORE_CHECK_OFFSET(GroupNode, cp, 0);
SPLINECORE_CHECK_OFFSET(GroupNode, next, 4);
static_assert(sizeof(GroupNode) == 8, "group nodes are 8-byte records");
SPLINECORE_CHECK_OFFSET(Slice, first, 0);
SPLINECORE_CHECK_OFFSET(Slice, next, 4);
static_assert(sizeof(Slice) == 8, "slice records are 8-byte records");

#undef SPLINECORE_CHECK_OFFSET

}  // namespace splinecore

#pragma GCC diagnostic pop

#endif  // __i386__
