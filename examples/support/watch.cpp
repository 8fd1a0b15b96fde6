#include "support/watch.h"

#include <chrono>

#include "support/text.h"

namespace support {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kKeyWait{20};
constexpr std::chrono::milliseconds kRedraw{100};

const char* StateWord(tmv::JobState state) {
  switch (state) {
    case tmv::JobState::kPausing:
      return "pausing";
    case tmv::JobState::kPaused:
      return "paused";
    case tmv::JobState::kCancelling:
      return "cancelling";
    default:
      return "running";
  }
}

void DrawLine(std::FILE* out, const std::string& text, size_t columns) {
  std::fprintf(out, "\r%s", FitColumns(text, columns).c_str());
  std::fflush(out);
}

// What the key did, or null if it did nothing.
const char* ObeyKey(char key, tmv::Job& job) {
  const tmv::JobState state = job.GetState();
  if (state == tmv::JobState::kCancelling || HasEnded(state)) return nullptr;
  const bool isRunning = state == tmv::JobState::kRunning;
  if (key == 'c' || Terminal::Interrupted()) {
    job.Cancel();
    return "cancelling";
  }
  if (key == 'p' && isRunning) {
    job.Pause();
    return "paused";
  }
  if (key == 'r' && !isRunning) {
    job.Resume();
    return "running";
  }
  return nullptr;
}

}  // namespace

void WatchJob(
    tmv::Job& job, Terminal& terminal, std::FILE* out,
    const std::function<std::string(const std::string& state, size_t columns)>& describe) {
  const bool live = terminal.HasLiveOutput();
  Clock::time_point nextDraw = Clock::now();
  while (!HasEnded(job.GetState())) {
    const char* const done = ObeyKey(terminal.WaitForKey(kKeyWait), job);
    if (!live && done != nullptr) {
      std::fprintf(out, "%s\n", done);
      std::fflush(out);
    }
    if (live && (done != nullptr || Clock::now() >= nextDraw)) {
      const size_t columns = terminal.Columns();
      DrawLine(out, describe(StateWord(job.GetState()), columns), columns);
      nextDraw = Clock::now() + kRedraw;
    }
  }
  // A key that came with the end has ended the job too: the caller looks at the state of the job.
  if (live) {
    DrawLine(out, "", terminal.Columns());
    std::fputs("\r", out);
  }
}

}  // namespace support
