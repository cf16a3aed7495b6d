// Group lists: order, duplicates, the grouped flag, a failed allocation,
// and stack-wide lookup.
#include <gtest/gtest.h>

#include <vector>

#include "figure_test.h"

namespace splinecore {
namespace {

// Control points in zero-filled blocks, as a host makes them.
struct Fresh {
  SegmentCP &a = *new SegmentCP(), &b = *new SegmentCP(), &c = *new SegmentCP(), &d = *new SegmentCP();
  ~Fresh() {
    for (SegmentCP* x : {&a, &b, &c, &d}) delete x;
  }
};

using test::Listed;

TEST(GroupList, AddAppendsOnceNoCheckPrependsDeleteTakesTheFirstNode) {
  const long live = MarrowLiveBlocks();
  {
    Fresh fresh;
    SegmentCP &a = fresh.a, &b = fresh.b, &c = fresh.c;
    GroupNode* list = nullptr;
    EXPECT_EQ(a.AddToGroup(&list, 0), 1);
    EXPECT_EQ(b.AddToGroup(&list, 1), 1);
    EXPECT_EQ(a.AddToGroup(&list, 1), 1);  // listed already: no node, no flag
    EXPECT_EQ(Listed(list), (std::vector<SegmentCP*>{&a, &b}));
    EXPECT_TRUE(!a.IsGrouped() && b.IsGrouped());
    EXPECT_EQ(c.AddToGroupNoCheck(&list), 1);
    EXPECT_EQ(c.AddToGroupNoCheck(&list), 1);
    EXPECT_FALSE(c.IsGrouped());
    EXPECT_EQ(Listed(list), (std::vector<SegmentCP*>{&c, &c, &a, &b}));
    c.OnGrouped();
    EXPECT_EQ(c.DeleteFromGroup(&list), 1);
    EXPECT_FALSE(c.IsGrouped());  // cleared although c is still listed
    EXPECT_EQ(b.DeleteFromGroup(&list), 1);  // the last node
    EXPECT_EQ(Listed(list), (std::vector<SegmentCP*>{&c, &a}));
    b.OnGrouped();
    EXPECT_EQ(b.DeleteFromGroup(&list), 0);
    EXPECT_TRUE(b.IsGrouped());  // not listed: flag kept

    MarrowFailAfter(0);  // no memory: nothing added, no flag
    EXPECT_EQ(b.AddToGroupNoCheck(&list), 0);
    EXPECT_EQ(b.AddToGroup(&list, 1), 1);
    MarrowFailAfter(-1);
    b.OffGrouped();
    EXPECT_EQ(b.AddToGroup(&list, 1), 1);
    EXPECT_EQ(Listed(list), (std::vector<SegmentCP*>{&c, &a, &b}));
    a.OnGrouped();
    FreeGroup(&list);
    EXPECT_EQ(list, nullptr);
    EXPECT_TRUE(a.IsGrouped() && b.IsGrouped());  // flags stay
  }
  EXPECT_EQ(MarrowLiveBlocks(), live);
}

TEST(GroupList, AnyGroupedLooksFromTheHeadDown) {
  Fresh fresh;
  SegmentCP &top = fresh.a, &middle = fresh.b, &bottom = fresh.c, &loner = fresh.d;
  top.stackNext = &middle;
  middle.stackPrev = &top;
  middle.stackNext = &bottom;
  bottom.stackPrev = &middle;
  top.SetHead();
  EXPECT_EQ(middle.IsAnyGrouped(), 0);
  bottom.OnGrouped();
  EXPECT_EQ(top.IsAnyGrouped(), 1);
  bottom.OffGrouped();
  top.OnGrouped();
  EXPECT_EQ(bottom.IsAnyGrouped(), 1);  // the head counts for every member
  loner.head = nullptr;
  loner.OnGrouped();
  EXPECT_EQ(loner.IsAnyGrouped(), 0);
}

}  // namespace
}  // namespace splinecore
