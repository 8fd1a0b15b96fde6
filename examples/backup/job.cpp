#include "job.h"

namespace backup {

Job::Job(std::vector<Folder>& folders) : event_(tmv::MakeEvent("backup")), control_(event_) {
  for (Folder& folder : folders) {
    progress_.total += 3 * folder.bytes;
    event_->AddPackage(MakePackage(folder));
  }
}

// A folder whose digests can't be taken isn't packed, and one that can't be packed isn't verified.
tmv::Package Job::MakePackage(Folder& folder) {
  tmv::Package package = tmv::MakePackage();
  package->SetName(folder.name.c_str());
  package->SetContinueOnFailure(false);
  package->AddTask(MakeStep("backup digest", folder, &Steps::Digest));
  package->AddTask(MakeStep("backup pack", folder, &Steps::Pack));
  package->AddTask(MakeStep("backup verify", folder, &Steps::Verify));
  return package;
}

// The worker turns what a step throws into a failure of its task; the reason is kept for the table.
tmv::Task Job::MakeStep(const char* name, Folder& folder, void (Steps::*step)(RkTask*)) {
  const tmv::Text unique(TmvUtilityApp()->NewPrefixedId(name));
  return tmv::MakeTask(unique.c_str(), [this, &folder, step](RkTask* task) {
    try {
      (Steps(folder, progress_, control_).*step)(task);
    } catch (...) {
      folder.outcome = Folder::Outcome::kFailed;
      folder.error = std::current_exception();
      throw;
    }
  });
}

}  // namespace backup
