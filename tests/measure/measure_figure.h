// A figure for the arc-length tests: its viewMatrix turns model space by a
// quarter turn about z and scales it by 2, V(x, y, z) = (10 - 2y, 2x - 4,
// 2z + 1), so every measured value has passed through the view transform
// (exactly, for the small inputs used here).
#ifndef SPLINECORE_TESTS_MEASURE_MEASURE_FIGURE_H
#define SPLINECORE_TESTS_MEASURE_MEASURE_FIGURE_H

#include <gtest/gtest.h>

#include <array>

#include "expect_vector.h"
#include "marrow/marrow.h"
#include "splinecore/measure.h"
#include "test_figure.h"

namespace splinecore::test {

class MeasureFigure : public ::testing::Test {
 protected:
  MeasureFigure() {
    fig.SetView(MakeMatrix({0, -2, 0, 10, 2, 0, 0, -4, 0, 0, 2, 1}),
                MakeMatrix({0, 0.5f, 0, 2, -0.5f, 0, 0, 5, 0, 0, 0.5f, -0.5f}));
  }

  // A peaked control point with neutral deltas: its tangents are the half
  // chords to its neighbours (identity screen matrices).
  SegmentCP* Peaked(Vector p) {
    SegmentCP* c = fig.NewCP(p);
    c->indelta = c->outdelta = Delta{0, 0, 1.0f};
    return c;
  }

  // A control point whose model tangents are given: stored as current
  // cache values (flags set, stamp at the figure's generation).
  SegmentCP* WithTangents(Vector p, Vector it, Vector ot) {
    SegmentCP* c = fig.NewCP(p);
    c->it = it;
    c->ot = ot;
    c->stamp = fig.cache.generation;
    c->flags |= cpflag::itCached | cpflag::otCached;
    return c;
  }

  // Peaked points whose view-space triangle has sides 3 (q0-q1), 5 (q1-q2)
  // and 4 (q2-q0): view positions (10, -4, 1), (10, -1, 1), (6, -4, 1).
  // Peaked points make each segment straight, both end derivatives half its chord.
  std::array<SegmentCP*, 3> Triangle() {
    return {Peaked(Vector(0, 0, 0)), Peaked(Vector(1.5f, 0, 0)), Peaked(Vector(0, 2, 0))};
  }
  // One straight segment: in view space n at the origin, c at (3, 0, 0),
  // both derivatives (3, 0, 0); its 30-chord length is 0x1.7ffffap+1.
  SegmentCP* UniformStraight() {
    const Vector d(0, -1.5f, 0);
    SegmentCP* c = WithTangents(Vector(2, 3.5f, -0.5f), d, d);
    fig.Open({c, WithTangents(Vector(2, 5, -0.5f), d, d)});
    return c;
  }
  // One curved segment: view p0 = (10, -4, 1), p1 = (4, 0, 3),
  // t0 = (1, 2.5, 1.5), t1 = (-3.5, 1, -2); length 0x1.f1fe54p+2.
  SegmentCP* Curved() {
    SegmentCP* c = WithTangents(Vector(2, 3, 1), Vector(0.5f, 1.75f, -1), Vector(0, 0, 0));
    fig.Open({c, WithTangents(Vector(0, 0, 0), Vector(0, 0, 0), Vector(1.25f, -0.5f, 0.75f))});
    return c;
  }

  TestFigure fig;
};

}  // namespace splinecore::test

#endif
