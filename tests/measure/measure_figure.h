// A figure for the arc-length tests: its viewMatrix turns model space by a
// quarter turn about z and scales it by 2, V(x, y, z) = (10 - 2y, 2x - 4,
// 2z + 1), so every measured value has passed through the view transform
// (exactly, for the small inputs used here).
#ifndef SPLINECORE_TESTS_MEASURE_MEASURE_FIGURE_H
#define SPLINECORE_TESTS_MEASURE_MEASURE_FIGURE_H

#include <gtest/gtest.h>

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

  TestFigure fig;
};

}  // namespace splinecore::test

#endif
