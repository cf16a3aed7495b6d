// Figures for the conversion tests: control points with deltas that neither
// turn nor scale, a turned view, and a hook on a segment with its partners.
#ifndef SPLINECORE_TESTS_CONVERT_CONVERT_FIGURE_H
#define SPLINECORE_TESTS_CONVERT_CONVERT_FIGURE_H

#include "figure_test.h"

namespace splinecore::test {

class ConvertFigure : public FigureTest {
 protected:
  SegmentCP* CP(float x, float y, float z = 0) { return Neutral(f.NewCP(Vector(x, y, z))); }
  HookSegmentCP* Hook(float s) { return Neutral(f.NewHook(s)); }

  // Screen space turned a quarter about z, scaled by 2 and moved:
  // (x,y,z) -> (10 - 2y, 20 + 2x, 30 + 2z), with its exact inverse. Every
  // value used is dyadic, so screen-space arithmetic is exact and the results
  // equal the model-space ones.
  void TurnedView() {
    f.SetScreen(MakeMatrix({0, -2, 0, 10, 2, 0, 0, 20, 0, 0, 2, 30}),
                  MakeMatrix({0, 0.5f, 0, -10, -0.5f, 0, 0, 5, 0, 0, 0.5f, -15}));
  }

  // A hook at s on the segment from carrier C (0,0,0) to N (3,0,0). Partner
  // X tops C's stack, partner Y N's; each has only a next (xNext, yNext), so
  // its tangents are (X - xNext)/2 and its handle offsets a third of that:
  // by default (3,0,0) for X and (0,3,0) for Y. The hook's own neighbour sits
  // at `neighbour`, as its prev or (withPrev false) its next.
  void Build(float s, bool withPrev = true, Vector neighbour = Vector(10, 10, 0),
             Vector xNext = Vector(-18, 0, 0), Vector yNext = Vector(3, -18, 0)) {
    hook = Hook(s);
    f.Open({carrier = CP(0, 0), end = CP(3, 0)});
    f.Open({x = CP(0, 0), CP(xNext.x, xNext.y)});
    f.Open({y = CP(3, 0), CP(yNext.x, yNext.y)});
    SegmentCP* n = CP(neighbour.x, neighbour.y, neighbour.z);
    withPrev ? f.Open({n, hook}) : f.Open({hook, n});
    TestFigure::Stack({x, carrier, hook});
    TestFigure::Stack({y, end});
  }
  // The same segment and hook at s = 0.5 with its prev at `neighbour`, but
  // no partner above C or N.
  void BuildPartnerless(Vector neighbour) {
    hook = Hook(0.5f);
    f.Open({carrier = CP(0, 0), end = CP(3, 0)});
    f.Open({CP(neighbour.x, neighbour.y), hook});
    TestFigure::Stack({carrier, hook});
  }
  // Offsets along y of u = float(69.3125 * k) = 0x1.71aaacp+4 for X and
  // v = float(1.1875 * k) = 0x1.955556p-2 for Y (k the float third), s = 0.75:
  // float(u + float(float(v - u) * 0.75)) = 0x1.84aab0p+2, while one rounding
  // of u + (v - u) * 0.75 gives 0x1.84aaacp+2 (python3 with struct float32).
  void BuildRoundingFigure() {
    Build(0.75f, true, Vector(1.5f, 100, 0), Vector(0, -138.625f, 0), Vector(3, -2.375f, 0));
  }
  static constexpr float kThreeRoundings = 0x1.84aab0p+2f;

  SegmentCP *carrier = nullptr, *end = nullptr, *x = nullptr, *y = nullptr;
  HookSegmentCP* hook = nullptr;
};

}  // namespace splinecore::test

#endif
