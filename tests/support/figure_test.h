// Shared pieces of the raw-record tests: a fixture that owns one TestFigure
// and checks for leaks at teardown, and small builders.
#ifndef SPLINECORE_TESTS_FIGURE_TEST_H
#define SPLINECORE_TESTS_FIGURE_TEST_H

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "expect_vector.h"
#include "marrow/marrow.h"
#include "test_figure.h"

namespace splinecore::test {

inline const Vector kSentinel(-77, -77, -77);  // a member no code path writes

// The control points of a group list, in list order.
inline std::vector<SegmentCP*> Listed(const GroupNode* list) {
  std::vector<SegmentCP*> out;
  for (; list != nullptr; list = list->next) out.push_back(list->cp);
  return out;
}

// Owns one TestFigure; teardown deletes it and checks that the test gave
// back every block it took.
class FigureTest : public ::testing::Test {
 protected:
  void TearDown() override {
    figure_.reset();
    EXPECT_EQ(MarrowLiveBlocks(), live_);
  }
  long live_ = MarrowLiveBlocks();  // taken before the figure is made
  std::unique_ptr<TestFigure> figure_ = std::make_unique<TestFigure>();
  TestFigure& f = *figure_;
};

}  // namespace splinecore::test

#endif
