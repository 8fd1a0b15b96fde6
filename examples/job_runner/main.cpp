// A host of the library: reads a tree of files as a job with a lane for each folder, and is paused,
// resumed and cancelled from the keyboard. It uses the exports of the library alone.
#include <temvar/job.h>

#include <chrono>
#include <exception>
#include <iostream>
#include <sstream>

#include "options.h"
#include "reading.h"
#include "support/terminal.h"
#include "support/text.h"
#include "support/watch.h"
#include "table.h"
#include "work.h"

namespace {

using namespace job_runner;
using Clock = std::chrono::steady_clock;

enum ExitStatus { kAllRead = 0, kSomeFailed = 1, kWrongUsage = 2, kNotRun = 3, kCancelled = 130 };

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

std::string Describe(const tmv::JobProgress& files, const Progress& progress,
                     Clock::time_point start) {
  const double rate = static_cast<double>(progress.bytes) / std::max(SecondsSince(start), 1e-3);
  std::ostringstream line;
  line << files.done + files.failed << '/' << files.total << " files, " << files.failed
       << " failed, " << support::FormatBytes(progress.bytes) << ", "
       << support::FormatBytes(static_cast<uint64_t>(rate)) << "/s";
  return line.str();
}

ExitStatus PrintResult(const Options& options, const std::vector<PackageWork>& packages,
                       const tmv::Job& job, double seconds) {
  const Totals totals = PrintTable(std::cout, packages, job.Failures(), options.listFiles);
  std::cout << support::FormatBytes(totals.bytes) << " in " << seconds << " s with "
            << options.workers << " workers\n";
  if (job.GetState() == tmv::JobState::kCancelled) {
    std::cout << "cancelled\n";
    return kCancelled;
  }
  return totals.failed > 0 ? kSomeFailed : kAllRead;
}

ExitStatus RunJob(const Options& options) {
  std::vector<PackageWork> packages = CollectWork(options.paths);
  Progress progress;
  tmv::Job job("job_runner");
  AddReading(job, packages, progress);
  if (job.GetProgress().total == 0) {
    std::cout << "no files\n";
    return kAllRead;
  }
  const Clock::time_point start = Clock::now();
  {
    // In this order: every way out ends the job, stops the pool and restores the terminal.
    support::Terminal terminal;
    tmv::RunningPool pool(options.workers);
    job.Start();
    support::WatchJob(job, terminal, stdout, [&](const std::string& state, size_t) {
      return Describe(job.GetProgress(), progress, start) + ", " + state +
             "  [p]ause [r]esume [c]ancel";
    });
  }
  return PrintResult(options, packages, job, SecondsSince(start));
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const Options options = ParseOptions(support::Utf8Arguments(argc, argv));
    if (options.help) {
      std::cout << kUsage;
      return kAllRead;
    }
    return RunJob(options);
  } catch (const UsageError& error) {
    std::cerr << "job_runner: " << error.what() << '\n' << kUsage;
    return kWrongUsage;
  } catch (const std::exception& error) {
    std::cerr << "job_runner: " << error.what() << '\n';
    return kNotRun;
  }
}
