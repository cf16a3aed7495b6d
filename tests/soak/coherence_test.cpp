// The short soak of the unit tests: random edits on random figures, every
// answer compared with a fresh copy's (see soak.h).
#include <gtest/gtest.h>

#include <cstdlib>

#include "marrow/marrow.h"
#include "soak.h"

namespace splinecore::soak {
namespace {

SoakOptions ShortSoak() {
  SoakOptions options;
  const char* env = std::getenv("SPLINECORE_SOAK_EDITS");
  options.edits = env != nullptr ? std::strtol(env, nullptr, 10) : SPLINECORE_SOAK_EDITS;
  options.seed = 20240611;
  return options;
}

void ExpectClean(const SoakOptions& options) {
  const long live = MarrowLiveBlocks();
  const SoakResult result = RunSoak(options);
  EXPECT_EQ(result.edits, options.edits);
  EXPECT_GE(result.figures, options.edits / options.editsPerFigure);
  EXPECT_EQ(result.mismatches, 0) << result.report;
  EXPECT_EQ(result.findings, 0) << result.report;
  EXPECT_EQ(MarrowLiveBlocks(), live);
}

TEST(CoherenceSoakTest, EveryAnswerMatchesFreshCopies) { ExpectClean(ShortSoak()); }

}  // namespace
}  // namespace splinecore::soak
