// A host of the library: reads a tree of files as a job of packages and tasks, and is paused,
// resumed and cancelled from the keyboard. It uses the exports of the library alone.
#include <chrono>
#include <exception>
#include <iostream>

#include <temvar/handles.h>
#include "job.h"
#include "options.h"
#include "support/terminal.h"
#include "support/text.h"
#include "table.h"
#include "watch.h"
#include "work.h"

namespace {

using namespace job_runner;

enum ExitStatus { kAllRead = 0, kSomeFailed = 1, kWrongUsage = 2, kNotRun = 3, kCancelled = 130 };

// Leaves no task parked or at work on any way out, so that the pool's Stop returns.
class RunningJob {
 public:
  explicit RunningJob(Job& job) : job_(job) { job_.Start(); }
  ~RunningJob() {
    if (!job_.HasEnded()) job_.Cancel();
  }
  RunningJob(const RunningJob&) = delete;
  RunningJob& operator=(const RunningJob&) = delete;

 private:
  Job& job_;
};

ExitStatus RunJob(const Options& options) {
  Progress progress;
  std::vector<PackageWork> packages = CollectWork(options.paths, progress);
  uint64_t fileCount = 0;
  for (const PackageWork& package : packages) fileCount += package.files.size();
  if (fileCount == 0) {
    std::cout << "no files\n";
    return kAllRead;
  }

  const auto start = std::chrono::steady_clock::now();
  Job job(packages, progress);
  {
    support::Terminal terminal;
    tmv::RunningPool pool(options.workers);
    RunningJob running(job);
    WatchJob(job, progress, fileCount, terminal);
  }
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;

  const Totals totals = PrintTable(std::cout, packages, options.listFiles);
  std::cout << support::FormatBytes(totals.bytes) << " in " << elapsed.count() << " s with "
            << options.workers << " workers\n";
  if (progress.cancelled && totals.notRun > 0) {
    std::cout << "cancelled\n";
    return kCancelled;
  }
  return totals.failed > 0 ? kSomeFailed : kAllRead;
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
