// The README's host example: one open spline of three smooth points, its
// first segment's screen Bezier points, a point on it and the spline's length.
#include <cstdio>

#include "marrow/marrow.h"
#include "splinecore/splinecore.h"

using namespace splinecore;

int main() {
  FigureCache cache{};  // the host's per-figure records, kept alive by the host
  ViewRecord view{};
  FigureRecord record{};
  const Matrix identity{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};
  view.viewMatrix = view.inverseViewMatrix = view.screenMatrix = view.inverseScreenMatrix = identity;
  cache.view = &view;
  cache.figure = &record;

  const Vector at[3] = {{0, 0, 0}, {2, 1, 0}, {4, 0, 0}};
  SegmentCP* cps[3];
  for (int i = 0; i < 3; ++i) {
    cps[i] = new SegmentCP(&cache);  // AllocSeg memory; id from cache.nextId
    cps[i]->cache = &cache;
    cps[i]->p = at[i];
    cps[i]->head = cps[i];
    cps[i]->OnSmooth();
    cps[i]->indelta = cps[i]->outdelta = Delta{0, 0, 1};  // no turn, length unchanged
  }
  for (int i = 0; i < 2; ++i) cps[i]->SetNext(cps[i + 1]), cps[i + 1]->SetPrev(cps[i]);

  // cps[0]'s segment runs from its next (parameter 0) to cps[0] (parameter 1).
  Vector b0 = cps[1]->Getscreenp(), b1 = cps[1]->Getscreenot();
  Vector b2 = cps[0]->Getscreenit(), b3 = cps[0]->Getscreenp(), mid;
  CalcPoint(b0, b1, b2, b3, 0.5f, mid);
  std::printf("length %.6f, first segment's middle (%.6f, %.6f)\n", GetTotalLength(cps[0]), mid.x, mid.y);

  DeleteAllCP(cps[0]);  // frees all three
  return MarrowLiveBlocks() == 0 ? 0 : 1;
}
