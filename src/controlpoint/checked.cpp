// SPDX-License-Identifier: MIT
#include "controlpoint/checked.h"

#ifdef SPLINECORE_CHECKED
#include <cstdio>
#include <cstdlib>

#include "controlpoint/position_cache.h"
#include "splinecore/host.h"

namespace splinecore::detail {
namespace {

[[noreturn]] void Violated(const SegmentCP* c, const char* rule) {
  std::fprintf(stderr, "splinecore: control point %p (id %u): %s\n", static_cast<const void*>(c),
               c != nullptr ? c->id : 0u, rule);
  std::abort();
}

}  // namespace

void CheckGetter(const SegmentCP* c, Needs needs) {
  if (c == nullptr) Violated(c, "getter called on a null control point");
  if (c->cache == nullptr) Violated(c, "cache is not set");
  if (c->head == nullptr) Violated(c, "head is not set (call SetHead)");
  const bool screen = needs == Needs::kScreen || needs == Needs::kScreenTangent;
  if (screen && c->cache->view == nullptr) Violated(c, "the figure's view record is not set");
  if (c->IsHook() && (needs == Needs::kModelTangent || needs == Needs::kScreenTangent)) {
    if (FindCarrier(const_cast<SegmentCP*>(c)) == nullptr) Violated(c, "a hook has no carrier above it in its stack");
  }
}

}  // namespace splinecore::detail
#endif
