#include "bench/comparison.h"

#include <algorithm>
#include <cstdio>

namespace bench {
namespace {

constexpr char kLibrary[] = "library";

double Nanoseconds(const benchmark::BenchmarkReporter::Run& run) {
  const auto p50 = run.counters.find("p50_ns");
  if (p50 != run.counters.end()) return p50->second.value;
  const double time =
      run.GetAdjustedRealTime() * 1e9 / benchmark::GetTimeUnitMultiplier(run.time_unit);
  const auto tasks = run.counters.find("tasks");
  return tasks == run.counters.end() ? time : time / tasks->second.value;
}

double Median(const std::vector<double>& sorted) {
  const size_t half = sorted.size() / 2;
  return sorted.size() % 2 == 1 ? sorted[half] : (sorted[half - 1] + sorted[half]) / 2;
}

void PrintTimes(const std::string& name, const std::string& variant, std::vector<double> times,
                double library) {
  std::sort(times.begin(), times.end());
  const size_t margin = times.size() > 2 ? 1 : 0;
  const double median = Median(times);
  std::printf("%-36s %-10s %14.1f %14.1f %14.1f %8.2f\n", name.c_str(), variant.c_str(), median,
              times[margin], times[times.size() - 1 - margin], library / median);
}

}  // namespace

void Comparison::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.run_type != Run::RT_Iteration) continue;
    const std::string& name = run.run_name.function_name;
    const size_t slash = name.rfind('/');
    const std::string base = name.substr(0, slash);
    if (rows_.find(base) == rows_.end()) order_.push_back(base);
    rows_[base].times[name.substr(slash + 1)].push_back(Nanoseconds(run));
  }
}

void Comparison::Finalize() {
  std::printf("\n%-36s %-10s %14s %14s %14s %8s\n", "ns", "", "median", "from", "to", "library/");
  for (const std::string& name : order_) {
    const Row& row = rows_[name];
    double library = 0;
    const auto own = row.times.find(kLibrary);
    if (own != row.times.end()) {
      std::vector<double> times = own->second;
      std::sort(times.begin(), times.end());
      library = Median(times);
      PrintTimes(name, kLibrary, times, library);
    }
    for (const auto& [variant, times] : row.times) {
      if (variant != kLibrary) PrintTimes(name, variant, times, library);
    }
  }
}

}  // namespace bench
