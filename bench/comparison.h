#ifndef BENCH_COMPARISON_H_
#define BENCH_COMPARISON_H_

#include <benchmark/benchmark.h>

#include <map>
#include <string>

namespace bench {

// Prints the results as usual, and at the end each NAME/library beside its NAME/plain: the median
// of the repetitions and the best one, which says more on a machine that does other things
// meanwhile. A counter "p50_ns" stands for the time where a benchmark sets it.
class Comparison : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

  // The statistic of a benchmark that is called "best".
  static double Best(const std::vector<double>& repetitions);

 private:
  struct Times {
    double median = 0;  // In nanoseconds.
    double best = 0;
  };

  std::map<std::string, Times> times_;  // By name.
};

}  // namespace bench

#endif  // BENCH_COMPARISON_H_
