// The long soak: `splinecore_soak_driver <edits> <seed>`. Prints the first
// failures (each with its seed and edit log), then the summary line; exits
// non-zero on any mismatch or validator finding.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "soak.h"

int main(int argc, char** argv) {
  splinecore::soak::SoakOptions options;
  options.edits = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 1000000;
  options.seed = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1;
  const std::uint64_t seed = options.seed;
  const splinecore::soak::SoakResult result = splinecore::soak::RunSoak(options);
  std::fputs(result.report.c_str(), stdout);
  std::puts(splinecore::soak::SoakSummary(result, seed).c_str());
  return result.mismatches == 0 && result.findings == 0 ? 0 : 1;
}
