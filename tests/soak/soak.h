// Coherence soak, through the public Figure API: random figures and
// edits, some queries asked before each edit, then every query asked in a
// random order on the edited figure and in order on Figure(Describe()) of
// it; the answers and the raw records must agree bit for bit. After every
// edit the figure must pass its validation. Everything derives from the
// seed, so a run is reproduced by its seed and edit count.
#ifndef SPLINECORE_TESTS_SOAK_SOAK_H
#define SPLINECORE_TESTS_SOAK_SOAK_H

#include <cstdint>
#include <string>

namespace splinecore::soak {

struct SoakResult {
  long edits = 0;
  long figures = 0;
  long mismatches = 0;  // answers that differ from the fresh figure's
  long findings = 0;    // validator findings
  std::string report;   // the first failures, each with its edit log
};

struct SoakOptions {
  std::uint64_t seed = 1;
  long edits = 10000;
  long editsPerFigure = 150;  // a new figure after this many edits (or a failure)
};

// Runs the soak. Uses no global state: separate calls may run on separate threads.
SoakResult RunSoak(const SoakOptions& options);

// The one-line summary printed by the soak driver.
std::string SoakSummary(const SoakResult& result, std::uint64_t seed);

}  // namespace splinecore::soak

#endif
