#ifndef BENCH_COMPARISON_H_
#define BENCH_COMPARISON_H_

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace bench {

// Prints the results as usual, and at the end the medians of each NAME/library beside those of its
// NAME/PEER, with the ratio and the spread (the second and the last but one of the repetitions). A
// counter "p50_ns" replaces the time where a benchmark sets it; with a counter "tasks" the times
// are those of one task.
class Comparison : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

 private:
  struct Row {
    std::map<std::string, std::vector<double>> times;  // In nanoseconds, by variant.
  };

  std::vector<std::string> order_;
  std::map<std::string, Row> rows_;  // By name.
};

}  // namespace bench

#endif  // BENCH_COMPARISON_H_
