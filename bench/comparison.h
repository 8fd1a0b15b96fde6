#ifndef BENCH_COMPARISON_H_
#define BENCH_COMPARISON_H_

#include <benchmark/benchmark.h>

#include <map>
#include <string>

namespace bench {

// Prints the results as usual, and at the end the median of each NAME/library beside that of its
// NAME/plain. A counter "p50_ns" stands for the time where a benchmark sets it.
class Comparison : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

 private:
  std::map<std::string, double> medians_;  // In nanoseconds, by name.
};

}  // namespace bench

#endif  // BENCH_COMPARISON_H_
