#include "watch.h"

#include <chrono>
#include <iostream>
#include <sstream>

#include "support/text.h"

namespace job_runner {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kKeyWait{20};
constexpr std::chrono::milliseconds kRedraw{100};
constexpr size_t kLineWidth = 78;

const char* StateWord(const Job& job, const Progress& progress) {
  if (progress.cancelled) return "cancelling";
  return job.IsPaused() ? "paused" : "running";
}

class ProgressLine {
 public:
  explicit ProgressLine(uint64_t fileCount) : fileCount_(fileCount) {}

  void Draw(const Job& job, const Progress& progress) {
    const std::chrono::duration<double> elapsed = Clock::now() - start_;
    const double rate = static_cast<double>(progress.bytes) / std::max(elapsed.count(), 1e-3);
    std::ostringstream line;
    line << progress.filesDone + progress.filesFailed << '/' << fileCount_ << " files, "
         << progress.filesFailed << " failed, " << support::FormatBytes(progress.bytes) << ", "
         << support::FormatBytes(static_cast<uint64_t>(rate)) << "/s, " << StateWord(job, progress)
         << "  [p]ause [r]esume [c]ancel";
    std::cout << '\r' << support::FitColumns(line.str(), kLineWidth) << std::flush;
  }

  void Clear() { std::cout << '\r' << std::string(kLineWidth, ' ') << '\r' << std::flush; }

 private:
  uint64_t fileCount_;
  Clock::time_point start_ = Clock::now();
};

// True if the key changed something.
bool ObeyKey(char key, Job& job, const Progress& progress) {
  if (progress.cancelled) return false;
  if (key == 'p' && !job.IsPaused()) {
    job.Pause();
  } else if (key == 'r' && job.IsPaused()) {
    job.Resume();
  } else if (key == 'c' || support::Terminal::Interrupted()) {
    job.Cancel();
  } else {
    return false;
  }
  return true;
}

}  // namespace

void WatchJob(Job& job, const Progress& progress, uint64_t fileCount, support::Terminal& terminal) {
  const bool live = terminal.HasLiveOutput();
  ProgressLine line(fileCount);
  Clock::time_point nextDraw = Clock::now();
  while (!job.HasEnded()) {
    const bool changed = ObeyKey(terminal.WaitForKey(kKeyWait), job, progress);
    if (!live && changed) std::cout << StateWord(job, progress) << std::endl;
    if (live && (changed || Clock::now() >= nextDraw)) {
      line.Draw(job, progress);
      nextDraw = Clock::now() + kRedraw;
    }
  }
  if (live) line.Clear();
}

}  // namespace job_runner
