#ifndef EXAMPLES_BACKUP_PROGRESS_LINE_H_
#define EXAMPLES_BACKUP_PROGRESS_LINE_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace backup {

// The line that shows how far a job is: percent, a bar, and what else there is room for, the time
// that is left first.
//    42 % [#########------------]  0:07 left  12.3 MB of 29.1 MB  5.1 MB/s  p pause, c cancel
class ProgressLine {
 public:
  // `steps` is how often each byte is counted.
  explicit ProgressLine(uint64_t steps) : steps_(steps) {}

  // Exactly `columns` columns, 39 and more.
  std::string Make(uint64_t done, uint64_t total, const std::string& state, size_t columns);

 private:
  using Clock = std::chrono::steady_clock;

  // Bytes a second of late: a pause, or a slow start, is soon forgotten.
  void Measure(uint64_t done, bool running);

  uint64_t steps_;
  Clock::time_point last_ = Clock::now();
  uint64_t lastDone_ = 0;
  double rate_ = 0;
};

}  // namespace backup

#endif  // EXAMPLES_BACKUP_PROGRESS_LINE_H_
