// A host that uses most of the library: backs up each folder of a tree into an archive of its own,
// as a job that runs on a pool of workers and is paused, resumed and cancelled from the keyboard.
#include <temvar/handles.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>

#include "folder.h"
#include "job.h"
#include "options.h"
#include "settings.h"
#include "support/job_control.h"
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

fs::path SourceOf(const Settings& settings) {
  const std::string source = settings.source();
  const fs::path path = support::PathFromUtf8(source.empty() ? BACKUP_OWN_TREE : source);
  return fs::canonical(path);
}

fs::path DestinationOf(const Settings& settings) {
  fs::path path = support::PathFromUtf8(settings.destination());
  if (path.empty()) path = fs::temp_directory_path() / "temvar-backup";
  fs::create_directories(path);
  return fs::canonical(path);
}

// Runs on the crashing thread, so it does as little as can be.
void TellCrash(const TmvWideChar*) {
  std::fputs("backup has crashed; the report lies in the folder crashes of the backup\n", stderr);
}

void InstallCrashReport(const fs::path& destination) {
  const fs::path folder = destination / "crashes" / "";
  fs::create_directories(folder);
  const tmv::WideText wide(TmvUtilityString()->Utf8ToWide(support::Utf8FromPath(folder).c_str()));
  tmv::MakeDbgReport()->Install(wide.c_str(), TellCrash, nullptr);
}

// Key of a folder in the settings: the same name may stand in two sources.
std::string FolderKey(const fs::path& source, const Folder& folder) {
  return support::Utf8FromPath(source / support::PathFromUtf8(folder.name));
}

std::string Describe(const Progress& progress) {
  const int32_t perMille = TmvUtilityApp()->ProgressPerMille(
      static_cast<int64_t>(progress.done), static_cast<int64_t>(progress.total), 0, 1);
  return std::to_string(perMille) + " per mille of " + support::FormatBytes(progress.total / 3);
}

void RunJob(Job& job, uint32_t workers, support::Terminal& terminal, std::FILE* screen) {
  tmv::RunningPool pool(workers);
  support::RunningJob running(job.control());
  support::WatchJob(job.control(), terminal, screen, [&job] { return Describe(job.progress()); });
}

void Remember(Settings& settings, const fs::path& source, const std::vector<Folder>& folders,
              const std::string& summary) {
  for (const Folder& folder : folders) {
    if (folder.outcome == Folder::Outcome::kPacked) {
      settings.SetDigest(FolderKey(source, folder), folder.digest);
    }
  }
  char now[32];
  TmvUtilitySys()->FormatCurrentTime(now, sizeof now, "%Y-%m-%d %H:%M:%S");
  settings.AddRun(std::string(now) + "  " + support::Utf8FromPath(source) + ": " + summary);
  if (!settings.Save()) {
    std::fputs("backup: the settings can't be saved; the next run packs all of this again\n",
               stderr);
  }
}

ExitStatus BackUp(Settings& settings) {
  support::Terminal terminal;
  const fs::path source = SourceOf(settings);
  const fs::path destination = DestinationOf(settings);
  InstallCrashReport(destination);
  // The digest and archive operations of the library print what they do.
  std::FILE* const screen = support::DivertOutput(destination / "backup.log");
  if (screen == nullptr) throw std::runtime_error("backup.log can't be written");

  std::vector<Folder> folders = ListFolders(source, destination, settings.exclusions());
  for (Folder& folder : folders) {
    folder.lastDigest = settings.Digest(FolderKey(source, folder));
    RemoveLeftovers(folder);
  }
  const Clock::time_point start = Clock::now();
  Job job(folders);
  if (!folders.empty()) RunJob(job, settings.workers(), terminal, screen);
  for (const Folder& folder : folders) RemoveLeftovers(folder);

  const Totals totals = PrintTable(screen, folders);
  const std::string summary = Summary(totals);
  const std::chrono::duration<double> elapsed = Clock::now() - start;
  std::fprintf(screen, "%s; in %s with %u workers, to %s\n", summary.c_str(),
               tmv::Text(TmvUtilitySys()->FormatDuration(elapsed.count())).c_str(),
               static_cast<unsigned>(settings.workers()),
               support::Utf8FromPath(destination).c_str());
  Remember(settings, source, folders, summary);
  const bool cancelled = job.control().IsCancelled() && totals.unfinished > 0;
  if (cancelled) std::fputs("cancelled\n", screen);
  std::fclose(screen);
  return cancelled ? kCancelled : totals.failed > 0 ? kSomeFailed : kDone;
}

// The settings must mean the same wherever the next run is started.
void MakeAbsolute(std::optional<std::string>& path) {
  if (path) path = support::Utf8FromPath(fs::absolute(support::PathFromUtf8(*path)));
}

ExitStatus Run(Options options) {
  MakeAbsolute(options.source);
  MakeAbsolute(options.destination);
  MakeAbsolute(options.settingsFile);
  const std::string path = SettingsPath(options);
  fs::create_directories(support::PathFromUtf8(path).parent_path());
  std::string notice;
  Settings settings(path, notice);
  if (!notice.empty()) std::fprintf(stderr, "backup: %s\n", notice.c_str());
  if (options.history) {
    for (const std::string& run : settings.Runs()) std::printf("%s\n", run.c_str());
    return kDone;
  }
  settings.Apply(options);
  return BackUp(settings);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const Options options = ParseOptions(support::Utf8Arguments(argc, argv));
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
