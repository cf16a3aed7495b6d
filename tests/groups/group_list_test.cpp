// Group lists: membership, order, duplicates, the grouped flag, and what
// happens when the memory services give no node.
#include <vector>

#include <gtest/gtest.h>

#include "figure_test.h"

namespace splinecore {
namespace {

using Members = std::vector<SegmentCP*>;
using test::Listed;

class GroupListTest : public ::testing::Test {
 protected:
  void TearDown() override {
    FreeGroup(&list_);
    MarrowFailAfter(-1);
    for (SegmentCP* cp : fresh_) delete cp;
    EXPECT_EQ(MarrowLiveBlocks(), live_);
  }
  // A control point in a zero-filled block, as a host makes them.
  SegmentCP& Fresh() {
    fresh_.push_back(new SegmentCP());
    return *fresh_.back();
  }
  long live_ = MarrowLiveBlocks();
  GroupNode* list_ = nullptr;
  std::vector<SegmentCP*> fresh_;
  SegmentCP& a_ = Fresh();
  SegmentCP& b_ = Fresh();
  SegmentCP& c_ = Fresh();
};

TEST_F(GroupListTest, AddAppendsOnceAndMarksOnRequest) {
  EXPECT_EQ(a_.AddToGroup(&list_, 0), 1);
  EXPECT_EQ(b_.AddToGroup(&list_, 1), 1);
  EXPECT_EQ(a_.AddToGroup(&list_, 1), 1);  // already listed: nothing changes
  EXPECT_EQ(Listed(list_), (Members{&a_, &b_}));
  EXPECT_FALSE(a_.IsGrouped());
  EXPECT_TRUE(b_.IsGrouped());
}

TEST_F(GroupListTest, NoCheckPrependsDuplicatesWithoutFlag) {
  a_.AddToGroup(&list_, 1);
  EXPECT_EQ(b_.AddToGroupNoCheck(&list_), 1);
  EXPECT_EQ(b_.AddToGroupNoCheck(&list_), 1);
  EXPECT_EQ(Listed(list_), (Members{&b_, &b_, &a_}));
  EXPECT_FALSE(b_.IsGrouped());
}

TEST_F(GroupListTest, DeleteRemovesTheFirstNodeOnlyAndClearsTheFlag) {
  a_.AddToGroup(&list_, 0);
  b_.AddToGroupNoCheck(&list_);
  b_.AddToGroupNoCheck(&list_);
  b_.OnGrouped();
  EXPECT_EQ(b_.DeleteFromGroup(&list_), 1);
  EXPECT_EQ(Listed(list_), (Members{&b_, &a_}));
  EXPECT_FALSE(b_.IsGrouped());  // cleared although b is still listed
  c_.OnGrouped();
  EXPECT_EQ(c_.DeleteFromGroup(&list_), 0);
  EXPECT_TRUE(c_.IsGrouped());  // not listed: flag unchanged
  EXPECT_EQ(a_.DeleteFromGroup(&list_), 1);  // the last node
  EXPECT_EQ(Listed(list_), (Members{&b_}));
}

TEST_F(GroupListTest, FreeGroupEmptiesTheListAndKeepsFlags) {
  a_.AddToGroup(&list_, 1);
  b_.AddToGroup(&list_, 1);
  FreeGroup(&list_);
  EXPECT_EQ(list_, nullptr);
  EXPECT_TRUE(a_.IsGrouped());
  EXPECT_TRUE(b_.IsGrouped());
}

TEST_F(GroupListTest, NoMemoryLeavesTheListAsItWas) {
  a_.AddToGroup(&list_, 1);
  MarrowFailAfter(0);
  EXPECT_EQ(b_.AddToGroupNoCheck(&list_), 0);
  EXPECT_EQ(b_.AddToGroup(&list_, 1), 1);
  MarrowFailAfter(-1);
  EXPECT_EQ(Listed(list_), (Members{&a_}));
  EXPECT_FALSE(b_.IsGrouped());
}

TEST_F(GroupListTest, AnyGroupedLooksFromTheHeadDown) {
  SegmentCP& top = Fresh();
  SegmentCP& middle = Fresh();
  SegmentCP& bottom = Fresh();
  top.stackNext = &middle;
  middle.stackPrev = &top;
  middle.stackNext = &bottom;
  bottom.stackPrev = &middle;
  top.SetHead();
  EXPECT_EQ(middle.IsAnyGrouped(), 0);
  bottom.OnGrouped();
  EXPECT_EQ(top.IsAnyGrouped(), 1);
  EXPECT_EQ(bottom.IsAnyGrouped(), 1);
  bottom.OffGrouped();
  top.OnGrouped();
  EXPECT_EQ(bottom.IsAnyGrouped(), 1);  // the head counts for every member
  SegmentCP& loner = Fresh();
  loner.head = nullptr;
  loner.OnGrouped();
  EXPECT_EQ(loner.IsAnyGrouped(), 0);
}

}  // namespace
}  // namespace splinecore
