// DeleteCP on the raw records: the spline closes the gap, its first point
// follows a deleted first point, a closed spline's loop end moves back, a
// stack keeps a deleted head's position, and a point not on the spline
// changes nothing.
#include <gtest/gtest.h>

#include "figure_test.h"

namespace splinecore {
namespace {

TEST(DeleteCP, ClosesTheGapAndKeepsTheFirstPointAndLoopEnd) {
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

  // Closed x-y-z; z crosses w's spline as the head of the stack [z, w].
  SegmentCP *x = f.NewCP(Vector(0, 0, 0)), *y = f.NewCP(Vector(1, 0, 0)), *z = f.NewCP(Vector(2, 1, 0));
  SegmentCP* w = f.NewCP(Vector(9, 9, 9));
  first = test::Link({x, y, z}, true);
  SegmentCP* other = test::Link({f.NewCP(Vector(2, 0, 0)), w}, false);
  test::TestFigure::Stack({z, w});
  DeleteCP(&first, z);
  EXPECT_TRUE(first == x && y->next == x && x->prev == y && y->IsLoopEnd());
  EXPECT_TRUE(w->stackPrev == nullptr && w->p == Vector(2, 1, 0));
  DeleteCP(&first, x);
  EXPECT_TRUE(first == y && y->next == y && y->prev == y);
  DeleteCP(&first, y);  // the only point of a closed spline
  EXPECT_EQ(first, nullptr);
  DeleteAllCP(other);
  delete stranger;
}

}  // namespace
}  // namespace splinecore
