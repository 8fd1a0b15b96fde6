#include "support/watch.h"

#include <chrono>

#include "support/text.h"

namespace support {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kKeyWait{20};
constexpr std::chrono::milliseconds kRedraw{100};
constexpr size_t kLineWidth = 78;

const char* StateWord(const JobControl& job) {
  if (job.IsCancelled()) return "cancelling";
  return job.IsPaused() ? "paused" : "running";
}

void DrawLine(std::FILE* out, const std::string& text) {
  std::fprintf(out, "\r%s", FitColumns(text, kLineWidth).c_str());
  std::fflush(out);
}

// True if the key changed something.
bool ObeyKey(char key, JobControl& job) {
  if (job.IsCancelled()) return false;
  if (key == 'p' && !job.IsPaused()) {
    job.Pause();
  } else if (key == 'r' && job.IsPaused()) {
    job.Resume();
  } else if (key == 'c' || Terminal::Interrupted()) {
    job.Cancel();
  } else {
    return false;
  }
  return true;
}

}  // namespace

void WatchJob(JobControl& job, Terminal& terminal, std::FILE* out,
              const std::function<std::string()>& describe) {
  const bool live = terminal.HasLiveOutput();
  Clock::time_point nextDraw = Clock::now();
  while (!job.HasEnded()) {
    const bool changed = ObeyKey(terminal.WaitForKey(kKeyWait), job);
    if (!live && changed) {
      std::fprintf(out, "%s\n", StateWord(job));
      std::fflush(out);
    }
    if (live && (changed || Clock::now() >= nextDraw)) {
      DrawLine(out, describe() + ", " + StateWord(job) + "  [p]ause [r]esume [c]ancel");
      nextDraw = Clock::now() + kRedraw;
    }
  }
  if (live) {
    DrawLine(out, "");
    std::fputs("\r", out);
  }
}

}  // namespace support
