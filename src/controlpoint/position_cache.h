// SPDX-License-Identifier: MIT
// Staleness rules shared by the position, tangent and conversion code
// (internal).
#ifndef SPLINECORE_SRC_CONTROLPOINT_POSITION_CACHE_H
#define SPLINECORE_SRC_CONTROLPOINT_POSITION_CACHE_H

#include "controlpoint/walks.h"
#include "splinecore/segment_cp.h"

namespace splinecore::detail {

inline bool IsMuscleMode(const SegmentCP* c) { return (c->cache->mode & kMuscleMode) != 0; }

// When x's stamp differs from the figure's generation: take the generation
// and clear x's model caches.
inline void CheckModelGeneration(SegmentCP* x) {
  const std::uint8_t generation = x->cache->generation;
  if (x->stamp != generation) {
    x->stamp = generation;
    x->flags &= ~cpflag::modelCaches;
  }
}

// The same for screenStamp, screenGeneration and the screen caches.
inline void CheckScreenGeneration(SegmentCP* x) {
  const std::uint8_t generation = x->cache->screenGeneration;
  if (x->screenStamp != generation) {
    x->screenStamp = generation;
    x->flags &= ~cpflag::screenCaches;
  }
}

// For a hook k whose mpCached is clear: place its carrier's run in muscle
// mode (MHookRange), then mark every hook of the run mpCached with its
// mitCached and motCached cleared. Otherwise, and for a hook without a
// carrier, nothing. k is marked placed before the run is placed, not after:
// two carriers whose next points are each other's hooks would otherwise
// place each other's runs without end. On a figure without such a cycle the
// order gives the same bits, since nothing reads k's flag during placement.
void RefreshMuscleHookRun(SegmentCP* k);

}  // namespace splinecore::detail

#endif
