// Shared pieces of the figure tests: a fixture that owns one TestFigure and
// checks for leaks at teardown, a muscle effect with fixed answers, and
// builders and checks several test files use.
#ifndef SPLINECORE_TESTS_FIGURE_TEST_H
#define SPLINECORE_TESTS_FIGURE_TEST_H

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "expect_vector.h"
#include "marrow/marrow.h"
#include "test_figure.h"

namespace splinecore::test {

inline const Vector kSentinel(-77, -77, -77);  // a member no code path writes
inline const Delta kNoTurn{0, 0, 1};

// Gives cp deltas that neither turn nor scale.
template <class T>
T* Neutral(T* cp) {
  cp->indelta = cp->outdelta = kNoTurn;
  return cp;
}

// Links cps into one spline (closed: loopEnd on the last) as TestFigure's
// Open or Closed would; LinkSpline also registers it with f for deletion.
inline SegmentCP* Link(const std::vector<SegmentCP*>& cps, bool closed) {
  const std::size_t n = cps.size();
  for (std::size_t i = 0; i < n; ++i) {
    cps[i]->prev = i > 0 ? cps[i - 1] : closed ? cps[n - 1] : nullptr;
    cps[i]->next = i + 1 < n ? cps[i + 1] : closed ? cps[0] : nullptr;
  }
  if (closed) cps[n - 1]->OnLoopEnd();
  return cps[0];
}
inline SegmentCP* LinkSpline(TestFigure& f, const std::vector<SegmentCP*>& cps, bool closed) {
  f.Register(Link(cps, closed));
  return cps[0];
}

// The control points of a group list, in list order.
inline std::vector<SegmentCP*> Listed(const GroupNode* list) {
  std::vector<SegmentCP*> out;
  for (; list != nullptr; list = list->next) out.push_back(list->cp);
  return out;
}

inline void ExpectDelta(const Delta& d, float pitch, float yaw, float magnitude) {
  EXPECT_EQ(d.pitch, pitch);
  EXPECT_EQ(d.yaw, yaw);
  EXPECT_EQ(d.magnitude, magnitude);
}

// A muscle effect with fixed answers: moves the position by `offset`
// (reporting a move unless the offset is zero) and, when made with deltas,
// replaces the in and out deltas and returns the given flags (otherwise it
// leaves them and returns 0). Counts its position and in-delta calls.
struct FixedEffect : MuscleEffect {
  explicit FixedEffect(Vector by = Vector(0, 0, 0)) : offset(by) {}
  FixedEffect(Delta inDelta, std::int16_t inReturn, Delta outDelta, std::int16_t outReturn)
      : in(inDelta), out(outDelta), inFlags(inReturn), outFlags(outReturn), setsDeltas(true) {}
  std::int32_t ApplyToPosition(std::int32_t, SegmentCP*, Vector* position) override {
    ++positionCalls;
    *position += offset;
    return offset != Vector(0, 0, 0);
  }
  std::int16_t ApplyToInDelta(std::int32_t, SegmentCP*, Delta* d) override {
    ++inDeltaCalls;
    if (setsDeltas) *d = in;
    return inFlags;
  }
  std::int16_t ApplyToOutDelta(std::int32_t, SegmentCP*, Delta* d) override {
    if (setsDeltas) *d = out;
    return outFlags;
  }
  Vector offset{0, 0, 0};
  Delta in{0, 0, 1}, out{0, 0, 1};
  std::int16_t inFlags = 0, outFlags = 0;
  bool setsDeltas = false;
  int positionCalls = 0, inDeltaCalls = 0;
};

// Owns one TestFigure; teardown deletes it and checks that the test gave
// back every block it took.
class FigureTest : public ::testing::Test {
 protected:
  void TearDown() override {
    figure_.reset();
    EXPECT_EQ(MarrowLiveBlocks(), live_);
  }
  TestFigure& F() { return *figure_; }
  // N control points at the origin, not linked.
  template <std::size_t N>
  std::array<SegmentCP*, N> Ps() {
    std::array<SegmentCP*, N> out;
    for (SegmentCP*& c : out) c = f.NewCP(Vector(0, 0, 0));
    return out;
  }

  long live_ = MarrowLiveBlocks();  // taken before the figure is made
  std::unique_ptr<TestFigure> figure_ = std::make_unique<TestFigure>();
  TestFigure& f = *figure_;
};

}  // namespace splinecore::test

#endif
