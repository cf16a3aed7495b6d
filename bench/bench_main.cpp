// Runs every registered benchmark, then prints one table per case: each
// benchmark named "<case>/<implementation>" is set against the first
// implementation registered for its case (the library's own).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

struct Result {
  std::string bench;  // case
  std::string impl;
  double nanoseconds;  // time per iteration
};

class CollectingReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      const std::string name = run.benchmark_name();
      const std::size_t slash = name.find('/');
      if (slash == std::string::npos) continue;
      // Threaded cases by the wall clock, the others by the CPU time.
      const bool wall = name.find(" thread") != std::string::npos;
      const double ns = (wall ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime()) * benchmark::GetTimeUnitMultiplier(benchmark::kNanosecond) /
                        benchmark::GetTimeUnitMultiplier(run.time_unit);
      results.push_back({name.substr(0, slash), name.substr(slash + 1), ns});
    }
  }
  std::vector<Result> results;
};

void PrintRatios(const std::vector<Result>& results) {
  std::printf("\n%-34s %-30s %12s %14s\n", "case", "implementation", "ns/op", "time / first");
  std::vector<std::string> cases;
  for (const Result& r : results) {
    if (std::find(cases.begin(), cases.end(), r.bench) == cases.end()) cases.push_back(r.bench);
  }
  for (const std::string& c : cases) {
    double base = 0.0;
    for (const Result& r : results) {
      if (r.bench != c) continue;
      if (base == 0.0) base = r.nanoseconds;
      std::printf("%-34s %-30s %12.2f %14.3f\n", r.bench.c_str(), r.impl.c_str(), r.nanoseconds,
                  r.nanoseconds / base);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  CollectingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  PrintRatios(reporter.results);
  return 0;
}
