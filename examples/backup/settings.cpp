#include "settings.h"

#include <temvar/handles.h>

#include <algorithm>
#include <stdexcept>
#include <thread>

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
std::string DigestKey(const std::string& folder) { return "Digest of " + folder; }

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

std::string Settings::Digest(const std::string& folder) const {
  return Text(DigestKey(folder).c_str());
}

void Settings::SetDigest(const std::string& folder, const std::string& digest) {
  store_->SetString(DigestKey(folder).c_str(), digest.c_str(), nullptr);
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
  if (TmvUtilityFile()->PathExists(path.c_str())) {
    TmvUtilityFile()->CopyFileTo(path.c_str(), (path + ".last").c_str());
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
