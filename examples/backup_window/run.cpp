#include "run.h"

namespace backup_window {

void Run::List(const std::filesystem::path& source, const std::filesystem::path& destination,
               const std::string& exclusions) {
  job_.emplace("list of folders");
  lanes_.clear();
  progress_.done = 0;
  progress_.total = 0;
  job_->Add("list", [this, source, destination, exclusions](tmv::JobContext& context) {
    namespace fs = std::filesystem;
    fs::create_directories(destination);
    folders_ = backup::ListFolders(fs::canonical(source), fs::canonical(destination), exclusions);
    // A pause holds the backup here, and a cancel ends it.
    context.KeepGoing();
  });
  StartJob();
}

void Run::BackUp() {
  job_.emplace("backup");
  lanes_ = backup::AddFolders(*job_, folders_, progress_);
  StartJob();
}

void Run::StartJob() {
  job_->OnEnd([this] {
    for (const backup::Folder& folder : folders_) backup::RemoveLeftovers(folder);
    ended_();
  });
  job_->Start();
}

double Run::Fraction() const {
  if (progress_.total == 0) return 0;
  return static_cast<double>(progress_.done) / static_cast<double>(progress_.total);
}

std::vector<tmv::JobFailure> Run::Failures() const {
  return job_ ? job_->Failures() : std::vector<tmv::JobFailure>();
}

}  // namespace backup_window
