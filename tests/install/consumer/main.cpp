// A minimal host built against the installed package: one open spline of
// three control points, stacked with a point of a second spline, deleted
// again. Exits non-zero on any surprise.
#include <cstdio>

#include <marrow/marrow.h>
#include <splinecore/splinecore.h>

int main() {
  using namespace splinecore;
  FigureCache cache{};
  const long before = MarrowLiveBlocks();
  SegmentCP* cps[4];
  for (int i = 0; i < 4; ++i) {
    cps[i] = new SegmentCP(&cache);
    cps[i]->cache = &cache;
    cps[i]->head = cps[i];
    cps[i]->p = Vector(static_cast<float>(i), 0, 0);
  }
  cps[0]->next = cps[1];
  cps[1]->prev = cps[0];
  cps[1]->next = cps[2];
  cps[2]->prev = cps[1];
  cps[1]->stackNext = cps[3];  // cps[3] is a one-point spline stacked under cps[1]
  cps[3]->stackPrev = cps[1];
  cps[1]->SetHead();
  const bool ok = cache.nextId == 4 && cps[3]->head == cps[1] && MarrowLiveBlocks() == before + 4;
  DeleteAllCP(cps[0]);
  const bool clean = cps[3]->head == cps[3] && cps[3]->stackPrev == nullptr;
  delete cps[3];
  if (!ok || !clean || MarrowLiveBlocks() != before) {
    std::puts("consumer: unexpected state");
    return 1;
  }
  std::puts("consumer: ok");
  return 0;
}
