// SPDX-License-Identifier: MIT
// Reversal of one hook run (internal).
#include "groups/reverse_hook_run.h"

#include "controlpoint/walks.h"
#include "hooks/snap.h"
#include "splinecore/hooks.h"

namespace splinecore::detail {

SegmentCP* ReverseHookRun(SegmentCP* r) {
  SegmentCP* h = RunBottom(r);
  h->OffLastHook();
  r->OnLastHook();
  for (SegmentCP* hook = r;;) {
    SegmentCP* lower = hook->stackNext;
    hook->stackNext = hook->stackPrev;
    hook->stackPrev = lower;
    auto* hs = static_cast<HookSegmentCP*>(hook);
    hs->s = static_cast<float>(1.0 - SnapS(hs->s));
    if (hook == h) break;
    hook = lower;
  }
  return h;
}

}  // namespace splinecore::detail
