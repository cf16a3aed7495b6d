// DeleteCP on the raw records: the spline closes the gap, the first point
// follows a deleted first point and stays for any other, and a point not
// on the spline changes nothing. (Figure::Delete keeps its own first point,
// so only the raw call shows what happens to the caller's.)
#include <gtest/gtest.h>

#include "figure_test.h"

namespace splinecore {
namespace {

TEST(DeleteCP, ClosesTheGapAndMovesTheFirstPointOnlyWithIt) {
  test::TestFigure f;
  SegmentCP *a = f.NewCP(Vector(0, 0, 0)), *b = f.NewCP(Vector(1, 0, 0)), *c = f.NewCP(Vector(2, 0, 0));
  SegmentCP* first = test::Link({a, b, c}, false);
  SegmentCP* stranger = f.NewCP(Vector(5, 5, 5));
  DeleteCP(&first, stranger);  // not on the spline
  EXPECT_TRUE(first == a && a->next == b && b->next == c);
  DeleteCP(&first, b);
  EXPECT_TRUE(first == a && a->next == c && c->prev == a);
  DeleteCP(&first, a);
  EXPECT_TRUE(first == c && c->prev == nullptr && c->next == nullptr);
  DeleteCP(&first, c);
  EXPECT_EQ(first, nullptr);
  delete stranger;
}

}  // namespace
}  // namespace splinecore
