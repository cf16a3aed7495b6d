// Exact Vector comparison for tests: every component must equal the expected
// float; an expected NaN accepts any NaN (an output left unwritten).
#ifndef SPLINECORE_TESTS_EXPECT_VECTOR_H
#define SPLINECORE_TESTS_EXPECT_VECTOR_H

#include <gtest/gtest.h>

#include <cmath>

#include "splinecore/geometry.h"

namespace splinecore::test {

inline void ExpectComponent(const char* axis, float got, float want) {
  if (std::isnan(want)) {
    EXPECT_TRUE(std::isnan(got)) << axis << " = " << got;
  } else {
    EXPECT_EQ(got, want) << axis;
  }
}

inline void ExpectVector(const Vector& v, float x, float y, float z) {
  ExpectComponent("x", v.x, x);
  ExpectComponent("y", v.y, y);
  ExpectComponent("z", v.z, z);
}

inline void ExpectVector(const Vector& v, const Vector& want) { ExpectVector(v, want.x, want.y, want.z); }

}  // namespace splinecore::test

#endif
