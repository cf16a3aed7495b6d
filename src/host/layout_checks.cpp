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
namespace {

// Where a member lies.
struct Field {
  std::size_t offset;
  std::size_t size;
};

#define SPLINECORE_FIELD(type, member) Field{offsetof(type, member), sizeof(type::member)}

// The fields follow each other with no gap, the first at `start`: the
// layout is the declaration order and the members' sizes, so only where a
// run of members starts is stated.
template <std::size_t N>
constexpr bool Packed(std::size_t start, const Field (&fields)[N]) {
  for (const Field& f : fields) {
    if (f.offset != start) return false;
    start += f.size;
  }
  return true;
}

#define SPLINECORE_CHECK_PACKED(type, start, ...) \
  static_assert(Packed(start, {__VA_ARGS__}), #type ": a member is not where the one before it ends, or not from " #start)

SPLINECORE_CHECK_PACKED(FigureCache, 44, SPLINECORE_FIELD(FigureCache, view), SPLINECORE_FIELD(FigureCache, figure));
SPLINECORE_CHECK_PACKED(FigureCache, 264, SPLINECORE_FIELD(FigureCache, groupList),
                        SPLINECORE_FIELD(FigureCache, skinGroupList), SPLINECORE_FIELD(FigureCache, muscleTable));
SPLINECORE_CHECK_PACKED(FigureCache, 328, SPLINECORE_FIELD(FigureCache, generation),
                        SPLINECORE_FIELD(FigureCache, screenGeneration), SPLINECORE_FIELD(FigureCache, mode));
SPLINECORE_CHECK_PACKED(FigureCache, 472, SPLINECORE_FIELD(FigureCache, nextId));

SPLINECORE_CHECK_PACKED(FigureRecord, 260, SPLINECORE_FIELD(FigureRecord, muscleTables));
SPLINECORE_CHECK_PACKED(FigureRecord, 464, SPLINECORE_FIELD(FigureRecord, figureFlags));
SPLINECORE_CHECK_PACKED(MuscleTableLink, 0, SPLINECORE_FIELD(MuscleTableLink, next),
                        SPLINECORE_FIELD(MuscleTableLink, table));

SPLINECORE_CHECK_PACKED(MuscleTable, 684, SPLINECORE_FIELD(MuscleTable, cpData), SPLINECORE_FIELD(MuscleTable, prevp));
SPLINECORE_CHECK_PACKED(MuscleTable, 800, SPLINECORE_FIELD(MuscleTable, count));

SPLINECORE_CHECK_PACKED(MuscleCPData, 0, SPLINECORE_FIELD(MuscleCPData, effects),
                        SPLINECORE_FIELD(MuscleCPData, indelta), SPLINECORE_FIELD(MuscleCPData, outdelta),
                        SPLINECORE_FIELD(MuscleCPData, position));
static_assert(sizeof(MuscleCPData) == 40, "the library writes MuscleCPData bytes 4 to 39");

// next comes after the table of virtual operations.
SPLINECORE_CHECK_PACKED(MuscleEffect, 4, SPLINECORE_FIELD(MuscleEffect, next), SPLINECORE_FIELD(MuscleEffect, owner));
SPLINECORE_CHECK_PACKED(MuscleOwner, 48, SPLINECORE_FIELD(MuscleOwner, word));

SPLINECORE_CHECK_PACKED(ViewRecord, 156, SPLINECORE_FIELD(ViewRecord, viewMatrix),
                        SPLINECORE_FIELD(ViewRecord, inverseViewMatrix), SPLINECORE_FIELD(ViewRecord, screenMatrix),
                        SPLINECORE_FIELD(ViewRecord, inverseScreenMatrix));

SPLINECORE_CHECK_PACKED(SegmentCP, 0, SPLINECORE_FIELD(SegmentCP, prev), SPLINECORE_FIELD(SegmentCP, next),
                        SPLINECORE_FIELD(SegmentCP, tag), SPLINECORE_FIELD(SegmentCP, flags),
                        SPLINECORE_FIELD(SegmentCP, p), SPLINECORE_FIELD(SegmentCP, it), SPLINECORE_FIELD(SegmentCP, ot),
                        SPLINECORE_FIELD(SegmentCP, screenp), SPLINECORE_FIELD(SegmentCP, screenit),
                        SPLINECORE_FIELD(SegmentCP, screenot), SPLINECORE_FIELD(SegmentCP, mit),
                        SPLINECORE_FIELD(SegmentCP, mot), SPLINECORE_FIELD(SegmentCP, indelta),
                        SPLINECORE_FIELD(SegmentCP, outdelta), SPLINECORE_FIELD(SegmentCP, stackNext),
                        SPLINECORE_FIELD(SegmentCP, stackPrev), SPLINECORE_FIELD(SegmentCP, head),
                        SPLINECORE_FIELD(SegmentCP, cache), SPLINECORE_FIELD(SegmentCP, id),
                        SPLINECORE_FIELD(SegmentCP, stamp), SPLINECORE_FIELD(SegmentCP, screenStamp));
static_assert(sizeof(SegmentCP) == 160, "SegmentCP is 160 bytes");

SPLINECORE_CHECK_PACKED(HookSegmentCP, 160, SPLINECORE_FIELD(HookSegmentCP, s), SPLINECORE_FIELD(HookSegmentCP, hit),
                        SPLINECORE_FIELD(HookSegmentCP, hot), SPLINECORE_FIELD(HookSegmentCP, pit),
                        SPLINECORE_FIELD(HookSegmentCP, pot), SPLINECORE_FIELD(HookSegmentCP, mhit),
                        SPLINECORE_FIELD(HookSegmentCP, mhot), SPLINECORE_FIELD(HookSegmentCP, mpit),
                        SPLINECORE_FIELD(HookSegmentCP, mpot), SPLINECORE_FIELD(HookSegmentCP, tempv));
static_assert(sizeof(HookSegmentCP) == 272, "HookSegmentCP is 272 bytes");

SPLINECORE_CHECK_PACKED(GroupNode, 0, SPLINECORE_FIELD(GroupNode, cp), SPLINECORE_FIELD(GroupNode, next));
static_assert(sizeof(GroupNode) == 8, "group nodes are 8-byte records");
SPLINECORE_CHECK_PACKED(Slice, 0, SPLINECORE_FIELD(Slice, first), SPLINECORE_FIELD(Slice, next));
static_assert(sizeof(Slice) == 8, "slice records are 8-byte records");

#undef SPLINECORE_CHECK_PACKED
#undef SPLINECORE_FIELD

}  // namespace
}  // namespace splinecore

#pragma GCC diagnostic pop

#endif  // __i386__
