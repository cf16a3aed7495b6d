// SPDX-License-Identifier: MIT
#include "convert/whole_refresh.h"

#include "controlpoint/position_cache.h"

namespace splinecore::detail {

// The getters' steps without their checks and refreshes of what already
// holds its values: each hook's screen position marked first, so that
// HookRange places the run once; then each hook's conversion.
void RefreshPlacedRun(SegmentCP* carrier) {
  const Matrix& screen = carrier->cache->view->screenMatrix;
  for (SegmentCP* k : HookRun(carrier)) {
    ZeroDerived(k);
    CheckScreenGeneration(k);
    CheckModelGeneration(k);
    k->OnScreenpCached();
  }
  HookRange(carrier);
  for (SegmentCP* k : HookRun(carrier)) k->screenp = TransformPoint(screen, k->head->p);
  for (SegmentCP* k : HookRun(carrier)) {
    k->flags |= cpflag::converted | cpflag::itCached | cpflag::otCached | cpflag::screenitCached |
                cpflag::screenotCached;
    k->Convert();
    k->screenit = ScreenHandlePoint(screen, k->it, kHandleInThird, k->head->p);
    k->screenot = ScreenHandlePoint(screen, k->ot, kHandleOutThird, k->head->p);
  }
}

}  // namespace splinecore::detail
