// Muscle handle points through the raw getters: a hook's handles come from
// its partners (values derived by hand beside each case).
#include <gtest/gtest.h>

#include "figure_test.h"

namespace splinecore {
namespace {

using test::ExpectVector;
using test::TestFigure;

// A hook H at s = 0.5 on carrier C(0,b) -> N(3,b); partner X stacked above
// C with prev (0,b+3), partner Y above N with prev (3,b+6); H sits at the
// midpoint (1.5,b). X's offsets are (0,0.5,0), Y's (0,1,0). With H's prev at
// (1.5,b+2) they count as they are: T = 0.5 + (1 - 0.5) * 0.5 = (0,0.75,0),
// handles (1.5,b) -/+ (0,0.25). With H's prev at (1.5,b-2), below, the
// in-offsets are taken reversed: T = (0,-0.75,0); at b = 3 the prev's
// position alone would point up, only its difference to H points down. With
// the prev beside H, at (3.5,b), the in-offsets are square to it and count
// as they are. Moving Y's prev to (3,b+12) doubles Y's offset: T =
// (0,1.25,0), a third of which rounds to 0x1.aaaaacp-2.
TEST(MuscleHandles, AHooksHandlesInterpolateItsPartnersOffsets) {
  struct Case {
    float b, prevX, prevY, sign;  // sign: of T's y
  };
  for (const Case k : {Case{0, 1.5f, 2, 1}, Case{3, 1.5f, 1, -1}, Case{0, 3.5f, 0, 1}}) {
    const float b = k.b;
    TestFigure g;
    g.SetMuscleMode(true);
    auto cp = [&g](float x, float y) {
      SegmentCP* c = g.NewCP(Vector(x, y, 0));
      c->indelta = c->outdelta = Delta{0, 0, 1};
      return c;
    };
    HookSegmentCP* hook = g.NewHook(0.5f);
    hook->indelta = hook->outdelta = Delta{0, 0, 1};
    SegmentCP *carrier = nullptr, *end = nullptr, *x = nullptr, *y = nullptr;
    g.Open({carrier = cp(0, b), end = cp(3, b)});
    g.Open({cp(0, b + 3), x = cp(0, b)});
    g.Open({cp(3, b + 6), y = cp(3, b)});
    g.Open({cp(k.prevX, k.prevY), hook});
    TestFigure::Stack({x, carrier, hook});
    TestFigure::Stack({y, end});
    for (float third : {0.25f, 0x1.aaaaacp-2f}) {
      for (int call = 0; call < 3; ++call) {  // computed, cached, computed again
        ExpectVector(hook->Getmit(), Vector(1.5f, b - k.sign * third, 0));
        ExpectVector(hook->Getmot(), Vector(1.5f, b + k.sign * third, 0));
        if (call == 1) hook->OffCachedmitot();
      }
      ExpectVector(hook->p, Vector(1.5f, b, 0));
      if (b != 0) break;  // 3 +/- 0x1.aaaaacp-2 would round: not derived here
      y->prev->p = Vector(3, b + 12, 0);
      for (SegmentCP* c : {y, static_cast<SegmentCP*>(hook)}) c->Touch(0);
    }
  }
}

// A hook on carrier C(0,0) -> N(3,0) at s = 0.5, its prev at (1.5,2):
// stacked alone under C it has no first partner; with X(0,0) of a third
// spline below it but nothing stacked at N, no second. Either way every
// tangent getter answers zero and the screen handles sit on the hook's
// screen position (the screen doubles x and y); Convert and MConvert write
// nothing and carry nothing back; the zeros stay while the flags do.
// Hung on a carrier without a next (X below), the tangents are zero too.
TEST(HookWithoutPartners, HasNoTangentAndConvertWritesNothing) {
  for (int missing : {1, 2, 3}) {
    SCOPED_TRACE(missing);
    TestFigure g;
    g.SetMuscleMode(true);
    g.SetScreen(Matrix{{{2, 0, 0, 0}, {0, 2, 0, 0}, {0, 0, 1, 0}}},
                Matrix{{{0.5f, 0, 0, 0}, {0, 0.5f, 0, 0}, {0, 0, 1, 0}}});
    SegmentCP* carrier = g.NewCP(Vector(0, 0, 0));
    HookSegmentCP* hook = g.NewHook(0.5f);
    SegmentCP* end = nullptr;
    if (missing == 3) {
      g.Open({g.NewCP(Vector(-3, 0, 0)), carrier});
    } else {
      g.Open({carrier, end = g.NewCP(Vector(3, 0, 0))});
    }
    g.Open({g.NewCP(Vector(1.5f, 2, 0)), hook});
    if (missing != 1) {
      SegmentCP* x = g.NewCP(Vector(0, 0, 0));
      g.Open({g.NewCP(Vector(0, 3, 0)), x});
      TestFigure::Stack({carrier, hook, x});
    } else {
      TestFigure::Stack({carrier, hook});
    }
    const Vector zero(0, 0, 0), stale(7, 7, 7);
    hook->it = hook->ot = hook->mit = hook->mot = stale;
    hook->Convert();
    hook->MConvert();
    for (const Vector* v : {&hook->it, &hook->ot, &hook->mit, &hook->mot}) ExpectVector(*v, stale);
    ExpectVector(hook->Getit(), zero);
    ExpectVector(hook->Getot(), zero);
    if (missing == 3) continue;
    ExpectVector(hook->Getmit(), zero);
    ExpectVector(hook->Getmot(), zero);
    ExpectVector(hook->Getscreenit(), Vector(3, 0, 0));
    ExpectVector(hook->Getscreenot(), Vector(3, 0, 0));
    if (missing != 1) continue;
    // The zeros stay while the flags do, though both partners join now.
    SegmentCP *x = g.NewCP(Vector(0, 0, 0)), *y = g.NewCP(Vector(3, 0, 0));
    g.Open({g.NewCP(Vector(0, 3, 0)), x});
    g.Open({g.NewCP(Vector(3, 3, 0)), y});
    TestFigure::Stack({x, carrier, hook});
    TestFigure::Stack({y, end});
    ExpectVector(hook->Getit(), zero);
    ExpectVector(hook->Getmit(), zero);
  }
}

}  // namespace
}  // namespace splinecore
