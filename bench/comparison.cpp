#include "bench/comparison.h"

#include <algorithm>
#include <cstdio>

namespace bench {
namespace {

constexpr char kLibrary[] = "/library";
constexpr char kPlain[] = "/plain";

double Nanoseconds(const benchmark::BenchmarkReporter::Run& run) {
  const auto p50 = run.counters.find("p50_ns");
  if (p50 != run.counters.end()) return p50->second.value;
  return run.GetAdjustedRealTime() * 1e9 / benchmark::GetTimeUnitMultiplier(run.time_unit);
}

}  // namespace

void Comparison::ReportRuns(const std::vector<Run>& runs) {
  ConsoleReporter::ReportRuns(runs);
  for (const Run& run : runs) {
    Times& times = times_[run.run_name.function_name];
    if (run.aggregate_name == "median") times.median = Nanoseconds(run);
    if (run.aggregate_name == "best") times.best = Nanoseconds(run);
  }
}

void Comparison::Finalize() {
  std::printf("\n%-34s %12s %12s %7s %12s %12s %7s\n", "ns", "median: lib", "plain", "ratio",
              "best: lib", "plain", "ratio");
  for (const auto& [name, library] : times_) {
    const size_t suffix = name.rfind(kLibrary);
    if (suffix == std::string::npos) continue;
    const std::string base = name.substr(0, suffix);
    const auto found = times_.find(base + kPlain);
    if (found == times_.end()) {
      std::printf("%-34s %12.0f %12s %7s %12.0f\n", base.c_str(), library.median, "", "",
                  library.best);
    } else {
      const Times& plain = found->second;
      std::printf("%-34s %12.0f %12.0f %7.2f %12.0f %12.0f %7.2f\n", base.c_str(), library.median,
                  plain.median, library.median / plain.median, library.best, plain.best,
                  library.best / plain.best);
    }
  }
}

double Comparison::Best(const std::vector<double>& repetitions) {
  return *std::min_element(repetitions.begin(), repetitions.end());
}

}  // namespace bench
