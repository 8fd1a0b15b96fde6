#include "progress_line.h"

#include <temvar/handles.h>

#include <algorithm>
#include <vector>

#include "support/text.h"

namespace backup {

namespace {

constexpr size_t kShortestBar = 10;

std::string Bar(double fraction, size_t columns) {
  const size_t cells = columns - 2;
  const auto full = static_cast<size_t>(fraction * static_cast<double>(cells));
  return '[' + std::string(full, '#') + std::string(cells - full, '-') + ']';
}

std::string TimeLeft(double seconds) {
  const tmv::Text text(TmvUtilitySys()->FormatDuration(seconds));
  return std::string(text.View()) + " left";
}

}  // namespace

void ProgressLine::Measure(uint64_t done, bool running) {
  const Clock::time_point now = Clock::now();
  const double seconds = std::chrono::duration<double>(now - last_).count();
  if (running && seconds < 0.5) return;
  const double rate = static_cast<double>(done - lastDone_) / std::max(seconds, 1e-3);
  if (running) rate_ = rate_ > 0 ? 0.8 * rate_ + 0.2 * rate : rate;
  last_ = now;
  lastDone_ = done;
}

std::string ProgressLine::Make(uint64_t done, uint64_t total, const std::string& state,
                               size_t columns) {
  const bool running = state == "running";
  Measure(done, running);
  const double fraction = total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 1.0;
  const auto percent = static_cast<int>(fraction * 100);
  const std::string head = std::string(percent < 10    ? 2
                                       : percent < 100 ? 1
                                                       : 0,
                                       ' ') +
                           std::to_string(percent) + " % ";

  std::vector<std::string> parts;
  if (!running) {
    parts.push_back(state);
  } else if (rate_ > 0) {
    parts.push_back(TimeLeft(static_cast<double>(total - std::min(done, total)) / rate_));
  } else {
    parts.push_back("--:-- left");
  }
  parts.push_back(support::FormatBytes(done / steps_) + " of " +
                  support::FormatBytes(total / steps_));
  parts.push_back(support::FormatBytes(static_cast<uint64_t>(rate_) / steps_) + "/s");
  parts.push_back(running ? "p pause, c cancel" : "r resume, c cancel");

  std::string tail;
  for (const std::string& part : parts) {
    if (head.size() + kShortestBar + tail.size() + 2 + part.size() > columns) break;
    tail += "  " + part;
  }
  return head + Bar(std::min(fraction, 1.0), columns - head.size() - tail.size()) + tail;
}

}  // namespace backup
