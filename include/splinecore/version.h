// SPDX-License-Identifier: MIT
/// @file
/// The library's version, and a fingerprint of the binding record layouts so
/// that a host can check at load time that the headers it was compiled with
/// describe the library it loaded:
///
/// @code
///   if (splinecore::LayoutFingerprint() != splinecore::kLayoutFingerprint) refuse to run;
/// @endcode
///
/// kLayoutFingerprint is computed in the host's compilation from the sizes
/// and member offsets of the records it shares with the library;
/// LayoutFingerprint() returns the same computation made when the library was
/// built. While the version is 0.x, any change of these layouts comes with a
/// new minor version (and SONAME).
#ifndef SPLINECORE_VERSION_H
#define SPLINECORE_VERSION_H

#include <cstddef>
#include <cstdint>

#include "splinecore/export.h"
#include "splinecore/groups.h"
#include "splinecore/hooks.h"
#include "splinecore/host.h"
#include "splinecore/segment_cp.h"
#include "splinecore/slices.h"

#define SPLINECORE_VERSION_MAJOR 0        ///< major version of these headers
#define SPLINECORE_VERSION_MINOR 1        ///< minor version of these headers
#define SPLINECORE_VERSION_PATCH 0        ///< patch version of these headers
#define SPLINECORE_VERSION_STRING "0.1.0" ///< "major.minor.patch" of these headers

namespace splinecore {

/// "major.minor.patch" of the library loaded (the macros give the headers').
SPLINECORE_API const char* Version();

/// The layout fingerprint the library was built with.
SPLINECORE_API std::uint64_t LayoutFingerprint();

namespace detail {

// FNV-1a over 64-bit words.
constexpr std::uint64_t Mix(std::uint64_t hash, std::uint64_t word) {
  for (int byte = 0; byte < 8; ++byte) {
    hash ^= (word >> (8 * byte)) & 0xFFu;
    hash *= 0x100000001B3ull;
  }
  return hash;
}

// offsetof on the polymorphic MuscleEffect and the derived HookSegmentCP is
// conditionally supported; GCC and Clang support it and give the real offset.
#if defined(__GNUC__) || defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
#endif
constexpr std::uint64_t HeaderLayoutFingerprint() {
  std::uint64_t h = 0xCBF29CE484222325ull;
#define SPLINECORE_SIZE(type) h = Mix(h, sizeof(type))
#define SPLINECORE_AT(type, member) h = Mix(h, offsetof(type, member))
  SPLINECORE_SIZE(FigureCache);
  SPLINECORE_AT(FigureCache, view);
  SPLINECORE_AT(FigureCache, figure);
  SPLINECORE_AT(FigureCache, groupList);
  SPLINECORE_AT(FigureCache, skinGroupList);
  SPLINECORE_AT(FigureCache, muscleTable);
  SPLINECORE_AT(FigureCache, generation);
  SPLINECORE_AT(FigureCache, screenGeneration);
  SPLINECORE_AT(FigureCache, mode);
  SPLINECORE_AT(FigureCache, nextId);
  SPLINECORE_SIZE(FigureRecord);
  SPLINECORE_AT(FigureRecord, muscleTables);
  SPLINECORE_AT(FigureRecord, figureFlags);
  SPLINECORE_SIZE(MuscleTableLink);
  SPLINECORE_AT(MuscleTableLink, next);
  SPLINECORE_AT(MuscleTableLink, table);
  SPLINECORE_SIZE(MuscleTable);
  SPLINECORE_AT(MuscleTable, cpData);
  SPLINECORE_AT(MuscleTable, prevp);
  SPLINECORE_AT(MuscleTable, count);
  SPLINECORE_SIZE(MuscleCPData);
  SPLINECORE_AT(MuscleCPData, effects);
  SPLINECORE_AT(MuscleCPData, indelta);
  SPLINECORE_AT(MuscleCPData, outdelta);
  SPLINECORE_AT(MuscleCPData, position);
  SPLINECORE_AT(MuscleEffect, next);
  SPLINECORE_AT(MuscleEffect, owner);
  SPLINECORE_AT(MuscleOwner, word);
  SPLINECORE_SIZE(ViewRecord);
  SPLINECORE_AT(ViewRecord, viewMatrix);
  SPLINECORE_AT(ViewRecord, inverseViewMatrix);
  SPLINECORE_AT(ViewRecord, screenMatrix);
  SPLINECORE_AT(ViewRecord, inverseScreenMatrix);
  SPLINECORE_SIZE(SegmentCP);
  SPLINECORE_AT(SegmentCP, prev);
  SPLINECORE_AT(SegmentCP, next);
  SPLINECORE_AT(SegmentCP, tag);
  SPLINECORE_AT(SegmentCP, flags);
  SPLINECORE_AT(SegmentCP, p);
  SPLINECORE_AT(SegmentCP, it);
  SPLINECORE_AT(SegmentCP, ot);
  SPLINECORE_AT(SegmentCP, screenp);
  SPLINECORE_AT(SegmentCP, screenit);
  SPLINECORE_AT(SegmentCP, screenot);
  SPLINECORE_AT(SegmentCP, mit);
  SPLINECORE_AT(SegmentCP, mot);
  SPLINECORE_AT(SegmentCP, indelta);
  SPLINECORE_AT(SegmentCP, outdelta);
  SPLINECORE_AT(SegmentCP, stackNext);
  SPLINECORE_AT(SegmentCP, stackPrev);
  SPLINECORE_AT(SegmentCP, head);
  SPLINECORE_AT(SegmentCP, cache);
  SPLINECORE_AT(SegmentCP, id);
  SPLINECORE_AT(SegmentCP, stamp);
  SPLINECORE_AT(SegmentCP, screenStamp);
  SPLINECORE_SIZE(HookSegmentCP);
  SPLINECORE_AT(HookSegmentCP, s);
  SPLINECORE_AT(HookSegmentCP, hit);
  SPLINECORE_AT(HookSegmentCP, hot);
  SPLINECORE_AT(HookSegmentCP, pit);
  SPLINECORE_AT(HookSegmentCP, pot);
  SPLINECORE_AT(HookSegmentCP, mhit);
  SPLINECORE_AT(HookSegmentCP, mhot);
  SPLINECORE_AT(HookSegmentCP, mpit);
  SPLINECORE_AT(HookSegmentCP, mpot);
  SPLINECORE_AT(HookSegmentCP, tempv);
  SPLINECORE_SIZE(GroupNode);
  SPLINECORE_AT(GroupNode, cp);
  SPLINECORE_AT(GroupNode, next);
  SPLINECORE_SIZE(Slice);
  SPLINECORE_AT(Slice, first);
  SPLINECORE_AT(Slice, next);
#undef SPLINECORE_SIZE
#undef SPLINECORE_AT
  return h;
}
#if defined(__GNUC__) || defined(__clang__)
#pragma GCC diagnostic pop
#endif

}  // namespace detail

/// The layout fingerprint of the headers this translation unit sees.
inline constexpr std::uint64_t kLayoutFingerprint = detail::HeaderLayoutFingerprint();

}  // namespace splinecore

#endif
