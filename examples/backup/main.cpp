// A host that uses most of the library: backs up each folder of a tree into an archive of its own,
// as a job that runs on a pool of workers and is paused, resumed and cancelled from the keyboard.
#include <temvar/job.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>

#include "crash_report.h"
#include "folder.h"
#include "options.h"
#include "progress_line.h"
#include "restore.h"
#include "settings.h"
#include "steps.h"
#include "support/terminal.h"
#include "support/text.h"
#include "support/watch.h"
#include "table.h"

namespace {

using namespace backup;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

enum ExitStatus { kDone = 0, kSomeFailed = 1, kWrongUsage = 2, kNotRun = 3, kCancelled = 130 };

std::string SettingsPath(const Options& options) {
  if (options.settingsFile) return *options.settingsFile;
  const tmv::Text folder(TmvUtilitySys()->GetAppDataPath());
  return support::Utf8FromPath(support::PathFromFolder(folder.c_str()) / "temvar-backup.json");
}

fs::path FolderOf(const std::string& setting, const char* missing) {
  if (setting.empty()) throw UsageError(missing);
  return support::PathFromUtf8(setting);
}

fs::path SourceOf(const Settings& settings) {
  return fs::canonical(FolderOf(settings.source(), "no folder was backed up before: name one"));
}

fs::path DestinationOf(const Settings& settings) {
  const fs::path path = FolderOf(settings.destination(), "say with --to where the archives go");
  fs::create_directories(path);
  return fs::canonical(path);
}

void Run(tmv::Job& job, uint32_t workers, support::Terminal& terminal, std::FILE* screen,
         const Progress& progress) {
  ProgressLine line(3);
  tmv::RunningPool pool(workers);
  job.Start();
  support::WatchJob(job, terminal, screen, [&](const std::string& state, size_t columns) {
    return line.Make(progress.done, progress.total, state, columns);
  });
}

ExitStatus BackUp(Settings& settings) {
  support::Terminal terminal;
  const fs::path source = SourceOf(settings);
  const fs::path destination = DestinationOf(settings);
  // The digest and archive operations of the library print what they do.
  std::FILE* const screen = support::DivertOutput(destination / "backup.log");
  if (screen == nullptr) throw std::runtime_error("backup.log can't be written");

  std::vector<Folder> folders = ListFolders(source, destination, settings.exclusions());
  settings.Recall(source, folders);
  for (const Folder& folder : folders) RemoveLeftovers(folder);
  const Clock::time_point start = Clock::now();
  Progress progress;
  tmv::Job job("backup");
  AddFolders(job, folders, progress);
  if (!folders.empty()) Run(job, settings.workers(), terminal, screen, progress);
  for (const Folder& folder : folders) RemoveLeftovers(folder);

  NoteFailures(job.Failures(), folders);
  const Totals totals = PrintTable(screen, terminal.Columns(), folders, job.Failures());
  const std::string summary = Summary(totals);
  const std::chrono::duration<double> elapsed = Clock::now() - start;
  std::fprintf(screen, "%s; in %s with %u workers, to %s\n", summary.c_str(),
               tmv::Text(TmvUtilitySys()->FormatDuration(elapsed.count())).c_str(),
               static_cast<unsigned>(settings.workers()),
               support::Utf8FromPath(destination).c_str());
  if (!settings.Remember(source, folders, summary)) {
    std::fputs("backup: the settings can't be saved; the next run packs all of this again\n",
               stderr);
  }
  const bool cancelled = job.GetState() == tmv::JobState::kCancelled;
  if (cancelled) std::fputs("cancelled\n", screen);
  std::fclose(screen);
  if (cancelled) return kCancelled;
  return totals.failed + totals.passedOver > 0 ? kSomeFailed : kDone;
}

// The target must be new or empty, so that nothing is replaced or mixed with existing files.
ExitStatus Restore(const Options& options) {
  const fs::path backup = fs::canonical(support::PathFromUtf8(*options.restore));
  const fs::path wanted = support::PathFromUtf8(*options.destination);
  fs::create_directories(wanted);
  if (!fs::is_empty(wanted)) throw std::runtime_error(*options.destination + " is not empty");
  const fs::path target = fs::canonical(wanted);

  support::Terminal terminal;
  const fs::path log = WorkFolder(target) / "restore.log";
  fs::create_directories(WorkFolder(target));
  std::FILE* const screen = support::DivertOutput(log);
  if (screen == nullptr) throw std::runtime_error("restore.log can't be written");
  tmv::Job job("restore");
  const size_t count = AddArchives(job, backup, target);
  {
    tmv::RunningPool pool(static_cast<uint32_t>(options.workers.value_or(2)));
    job.Start();
    support::WatchJob(job, terminal, screen, [&](const std::string& state, size_t) {
      return std::to_string(static_cast<int>(job.GetProgress().fraction * 100)) + " %  " + state;
    });
  }
  const size_t failed = job.Failures().size();
  PrintFailures(screen, job.Failures());
  std::fprintf(screen, "%lu archives restored, %lu failed, to %s\n",
               static_cast<unsigned long>(count - failed), static_cast<unsigned long>(failed),
               support::Utf8FromPath(target).c_str());
  std::fclose(screen);
  std::fclose(stdout);  // The log in the folder that is removed now.
  std::error_code ignored;
  fs::remove_all(WorkFolder(target), ignored);
  if (job.GetState() == tmv::JobState::kCancelled) return kCancelled;
  return failed > 0 ? kSomeFailed : kDone;
}

void Tell(const std::string& text) { std::fprintf(stderr, "backup: %s\n", text.c_str()); }

// The settings must mean the same wherever the next run is started.
void MakeAbsolute(std::optional<std::string>& path) {
  if (path) path = support::Utf8FromPath(fs::absolute(support::PathFromUtf8(*path)));
}

ExitStatus Run(Options options) {
  MakeAbsolute(options.source);
  MakeAbsolute(options.destination);
  MakeAbsolute(options.settingsFile);
  if (options.restore) return Restore(options);
  const std::string path = SettingsPath(options);
  fs::create_directories(support::PathFromUtf8(path).parent_path());
  std::string notice;
  Settings settings(path, notice);
  if (!notice.empty()) Tell(notice);
  if (options.history) {
    for (const std::string& run : settings.Runs()) std::printf("%s\n", run.c_str());
    return kDone;
  }
  settings.Apply(options);
  WatchForCrashes(support::PathFromUtf8(path), Tell);
  return BackUp(settings);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const std::vector<std::string> arguments = support::Utf8Arguments(argc, argv);
    if (arguments.empty()) {
      std::fputs(kUsage, stderr);
      return kWrongUsage;
    }
    const Options options = ParseOptions(arguments);
    if (options.help) {
      std::fputs(kUsage, stdout);
      return kDone;
    }
    return Run(options);
  } catch (const UsageError& error) {
    std::fprintf(stderr, "backup: %s\n%s", error.what(), kUsage);
    return kWrongUsage;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "backup: %s\n", error.what());
    return kNotRun;
  }
}
