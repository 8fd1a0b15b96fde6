#include "bench/comparison.h"

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
    if (run.aggregate_name == "median") medians_[run.run_name.function_name] = Nanoseconds(run);
  }
}

void Comparison::Finalize() {
  std::printf("\n%-34s %14s %14s %12s\n", "medians in ns", "library", "plain pool",
              "library/plain");
  for (const auto& [name, nanoseconds] : medians_) {
    const size_t suffix = name.rfind(kLibrary);
    if (suffix == std::string::npos) continue;
    const std::string base = name.substr(0, suffix);
    const auto plain = medians_.find(base + kPlain);
    if (plain == medians_.end()) {
      std::printf("%-34s %14.0f\n", base.c_str(), nanoseconds);
    } else {
      std::printf("%-34s %14.0f %14.0f %12.2f\n", base.c_str(), nanoseconds, plain->second,
                  nanoseconds / plain->second);
    }
  }
}

}  // namespace bench
