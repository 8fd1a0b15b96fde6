#include "settings.h"

#include <temvar/handles.h>

#include <algorithm>
#include <stdexcept>
#include <thread>

#include "support/text.h"

namespace backup {

namespace {

constexpr char kStore[] = "backup";
constexpr char kWritten[] = "backup as written";
constexpr char kSource[] = "Source";
constexpr char kDestination[] = "Destination";
constexpr char kExclusions[] = "Exclusions";
constexpr char kWorkers[] = "Workers";
constexpr char kRunCount[] = "Runs";
constexpr int32_t kRunsKept = 50;

std::string RunKey(int32_t run) { return "Run " + std::to_string(run % kRunsKept); }

// The same name may be in two sources.
std::string DigestKey(const std::filesystem::path& source, const Folder& folder) {
  return "Digest of " + support::Utf8FromPath(source / support::PathFromUtf8(folder.name));
}

std::string SetAside(const std::string& path) {
  if (TmvUtilityFile()->IsDirectory(path.c_str())) throw std::runtime_error(path + " is a folder");
  const std::string damaged = path + ".damaged.json";
  const tmv::Text aside(TmvUtilityFile()->MakeUniquePath(damaged.c_str()));
  if (!TmvUtilityFile()->MoveFileTo(path.c_str(), aside.c_str())) {
    throw std::runtime_error(path + " is no settings file, and it can't be moved away");
  }
  return path + " is no settings file; it is kept as " + aside.c_str();
}

}  // namespace

Settings::Settings(const std::string& path, std::string& notice) {
  if (!InitUserDefaults(kStore, path.c_str()) && TmvUtilityFile()->PathExists(path.c_str())) {
    notice = SetAside(path);
  }
  store_ = GetUserDefaults(kStore);
}

void Settings::Apply(const Options& options) {
  if (options.source) store_->SetString(kSource, options.source->c_str(), nullptr);
  if (options.destination) store_->SetString(kDestination, options.destination->c_str(), nullptr);
  if (options.exclusions) store_->SetString(kExclusions, options.exclusions->c_str(), nullptr);
  if (options.workers) store_->SetInt(kWorkers, *options.workers, nullptr);
}

std::string Settings::source() const { return Text(kSource); }
std::string Settings::destination() const { return Text(kDestination); }
std::string Settings::exclusions() const { return Text(kExclusions); }

// The file may have been edited by hand.
uint32_t Settings::workers() const {
  const int32_t workers = store_->GetInt(kWorkers, nullptr);
  if (workers >= 1 && workers <= kMostWorkers) return static_cast<uint32_t>(workers);
  return std::clamp(std::thread::hardware_concurrency(), 2u, static_cast<uint32_t>(kMostWorkers));
}

void Settings::Recall(const std::filesystem::path& source, std::vector<Folder>& folders) const {
  for (Folder& folder : folders) folder.lastDigest = Text(DigestKey(source, folder).c_str());
}

bool Settings::Remember(const std::filesystem::path& source, const std::vector<Folder>& folders,
                        const std::string& summary) {
  for (const Folder& folder : folders) {
    if (folder.outcome != Folder::Outcome::kPacked) continue;
    store_->SetString(DigestKey(source, folder).c_str(), folder.digest.c_str(), nullptr);
  }
  char now[32];
  TmvUtilitySys()->FormatCurrentTime(now, sizeof(now), "%Y-%m-%d %H:%M:%S");
  AddRun(std::string(now) + "  " + support::Utf8FromPath(source) + ": " + summary);
  return Save();
}

void Settings::AddRun(const std::string& summary) {
  const int32_t run = store_->GetInt(kRunCount, nullptr);
  store_->SetString(RunKey(run).c_str(), summary.c_str(), nullptr);
  store_->SetInt(kRunCount, run + 1, nullptr);
}

std::vector<std::string> Settings::Runs() const {
  std::vector<std::string> runs;
  const int32_t count = store_->GetInt(kRunCount, nullptr);
  for (int32_t run = std::max(0, count - kRunsKept); run < count; ++run) {
    runs.push_back(Text(RunKey(run).c_str()));
  }
  return runs;
}

// Save writes into the file itself, so the last good one is put by first. It has no result either:
// what the file holds is read again.
bool Settings::Save() {
  const std::string path = store_->GetFilePath();
  if (TmvUtilityFile()->PathExists(path.c_str()) &&
      !TmvUtilityFile()->CopyFileTo(path.c_str(), (path + ".last").c_str())) {
    return false;
  }
  store_->Save();
  const bool readable = InitUserDefaults(kWritten, path.c_str());
  TMVUserDefaults* const written = GetUserDefaults(kWritten);
  const tmv::Text wanted(store_->StringifyValue(store_->GetRootValue()));
  const tmv::Text found(written->StringifyValue(written->GetRootValue()));
  written->ReleaseDocument();
  return readable && wanted.View() == found.View();
}

}  // namespace backup
