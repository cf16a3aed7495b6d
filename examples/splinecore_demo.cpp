// Example host: builds an open and a closed spline that cross at a stack,
// prints their structure and deletes them.
#include <cstdio>
#include <initializer_list>

#include "marrow/marrow.h"
#include "splinecore/splinecore.h"

namespace {

using namespace splinecore;

struct Host {
  FigureCache cache{};
  ViewRecord view{};
  FigureRecord record{};

  Host() {
    for (Matrix* m : {&view.viewMatrix, &view.inverseViewMatrix, &view.screenMatrix, &view.inverseScreenMatrix})
      for (int r = 0; r < 3; ++r) m->m[r][r] = 1.0f;
    cache.view = &view;
    cache.figure = &record;
  }

  SegmentCP* Point(float x, float y) {
    SegmentCP* cp = new SegmentCP(&cache);
    cp->cache = &cache;
    cp->p = Vector(x, y, 0);
    cp->head = cp;
    cp->OnSmooth();
    return cp;
  }
};

void Link(SegmentCP* const* cps, int count, bool closed) {
  for (int i = 0; i + 1 < count; ++i) {
    cps[i]->SetNext(cps[i + 1]);
    cps[i + 1]->SetPrev(cps[i]);
  }
  if (closed) {
    cps[count - 1]->SetNext(cps[0]);
    cps[0]->SetPrev(cps[count - 1]);
    cps[count - 1]->OnLoopEnd();
  }
}

void Print(const char* name, SegmentCP* first) {
  std::printf("%s spline:\n", name);
  for (SegmentCP* c = first; c != nullptr; c = c->IsLoopEnd() ? nullptr : c->GetNext()) {
    const Vector& p = c->Getp();
    std::printf("  cp %2u at (%5.2f, %5.2f)  prev %-3s next %-3s%s%s\n", c->id, p.x, p.y,
                c->GetPrev() ? "yes" : "-", c->GetNext() ? "yes" : "-", c->IsLoopEnd() ? "  loopEnd" : "",
                c->head != c ? "  (stacked under its head)" : "");
  }
}

}  // namespace

int main() {
  Host host;
  SegmentCP* open[3] = {host.Point(0, 0), host.Point(2, 1), host.Point(4, 0)};
  SegmentCP* closed[4] = {host.Point(2, 1), host.Point(3, 2), host.Point(2, 3), host.Point(1, 2)};
  Link(open, 3, false);
  Link(closed, 4, true);

  // The two splines cross at (2, 1): stack the closed spline's first point
  // under the open spline's middle point, which becomes the head.
  open[1]->stackNext = closed[0];
  closed[0]->stackPrev = open[1];
  open[1]->SetHead();

  Print("open", open[0]);
  Print("closed", closed[0]);
  std::printf("open spline length %.4f, closed spline length %.4f\n", GetTotalLength(open[0]),
              GetTotalLength(closed[0]));

  DeleteAllCP(open[0]);
  DeleteAllCP(closed[0]);
  std::printf("live memory blocks after deletion: %ld\n", MarrowLiveBlocks());
  return MarrowLiveBlocks() == 0 ? 0 : 1;
}
