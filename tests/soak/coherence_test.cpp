// The short soak of the unit tests: random edits on random figures, every
// answer compared with a fresh copy's (see soak.h).
#include <gtest/gtest.h>

#include <cstdlib>

#include "marrow/marrow.h"
#include "soak.h"

namespace splinecore::soak {
namespace {

// Query kinds (bits): positions, segments, lengths, hook pieces; and the
// muscle family alone (muscle positions and segments, hook pieces).
constexpr std::uint32_t kAllQueries = 0x1FF;
constexpr std::uint32_t kMuscleFamily = 0xA4;

SoakOptions ShortSoak(std::uint32_t queryMask) {
  SoakOptions options;
  const char* env = std::getenv("SPLINECORE_SOAK_EDITS");
  options.edits = env != nullptr ? std::strtol(env, nullptr, 10) : SPLINECORE_SOAK_EDITS;
  options.seed = 20240611;
  options.queryMask = queryMask;
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

TEST(CoherenceSoakTest, EveryAnswerMatchesFreshCopies) { ExpectClean(ShortSoak(kAllQueries)); }

TEST(CoherenceSoakTest, MuscleAnswersMatchFreshCopies) { ExpectClean(ShortSoak(kMuscleFamily)); }

}  // namespace
}  // namespace splinecore::soak
