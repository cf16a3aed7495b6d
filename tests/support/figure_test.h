// Shared pieces of the raw-record tests: a fixture that owns one TestFigure
// and checks for leaks at teardown, and small builders.
#ifndef SPLINECORE_TESTS_FIGURE_TEST_H
#define SPLINECORE_TESTS_FIGURE_TEST_H

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <vector>

#include "expect_vector.h"
#include "marrow/marrow.h"
#include "test_figure.h"

namespace splinecore::test {

inline const Vector kSentinel(-77, -77, -77);  // a member no code path writes

// Links cps into one spline (closed: loopEnd on the last) as TestFigure's
// Open or Closed would, without registering it for deletion.
inline SegmentCP* Link(const std::vector<SegmentCP*>& cps, bool closed) {
  const std::size_t n = cps.size();
  for (std::size_t i = 0; i < n; ++i) {
    cps[i]->prev = i > 0 ? cps[i - 1] : closed ? cps[n - 1] : nullptr;
    cps[i]->next = i + 1 < n ? cps[i + 1] : closed ? cps[0] : nullptr;
  }
  if (closed) cps[n - 1]->OnLoopEnd();
  return cps[0];
}

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
