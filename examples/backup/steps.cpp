#include "steps.h"

#include <algorithm>
#include <stdexcept>

#include "stored_names.h"

namespace backup {

namespace {

using tmv::JobContext;

// Also prints the digest to standard output. Empty for a file that can't be read.
std::string DigestOf(const std::string& path) {
  const tmv::Text digest(TmvUtilityString()->Md5OfFile(path.c_str()));
  return digest.c_str();
}

// The steps of one folder. They throw what went wrong, and return early when the job is cancelled.
class Steps {
 public:
  Steps(Folder& folder, Progress& progress) : folder_(folder), progress_(progress) {}

  void Digest(JobContext& context);
  void Pack(JobContext& context);
  void Verify(JobContext& context);

 private:
  bool IsUnchanged() const;
  bool IsDone() const { return folder_.outcome == Folder::Outcome::kUnchanged; }
  void Count(JobContext& context, uint64_t bytes, uint64_t& taken);
  bool CompareUnpacked(JobContext& context);
  void GiveName();

  Folder& folder_;
  Progress& progress_;
};

void Steps::Count(JobContext& context, uint64_t bytes, uint64_t& taken) {
  taken += bytes;
  progress_.done += bytes;
  context.SetProgress(static_cast<double>(taken) /
                      static_cast<double>(std::max<uint64_t>(folder_.bytes, 1)));
}

// Takes the digest of each file. If none has changed since the last backup, that is all. What can't
// be read is passed over: the others need their backup all the more.
void Steps::Digest(JobContext& context) {
  std::string lines;
  uint64_t taken = 0;
  for (File& file : folder_.files) {
    if (!context.KeepGoing()) return;
    file.digest = DigestOf(file.path);
    if (file.digest.empty()) folder_.passedOver.push_back({file.path, "can't be read"});
    lines += file.digest + ' ' + file.stored + ' ' + file.name + '\n';
    Count(context, file.bytes, taken);
  }
  std::erase_if(folder_.files, [](const File& file) { return file.digest.empty(); });
  folder_.digest = tmv::Text(TmvUtilityString()->Sha1OfString(lines.c_str())).c_str();
  if (!IsUnchanged()) return;
  folder_.outcome = Folder::Outcome::kUnchanged;
  progress_.done += 2 * folder_.bytes;
}

bool Steps::IsUnchanged() const {
  return folder_.digest == folder_.lastDigest &&
         TmvUtilityFile()->PathExists(folder_.archive.c_str());
}

// Packs the files into an archive that doesn't have its name yet. It is written in one go, with no
// pause point in it.
void Steps::Pack(JobContext& context) {
  if (!context.KeepGoing() || IsDone()) return;
  if (!WriteNames(folder_)) throw std::runtime_error(folder_.namesFile + " can't be written");
  const tmv::Zip zip = tmv::MakeZip();
  for (const File& file : folder_.files) zip->AddFile(file.path.c_str(), file.stored.c_str());
  zip->AddFile(folder_.namesFile.c_str(), kNamesEntry);
  if (!zip->WriteArchive(folder_.unfinished.c_str(), nullptr)) {
    throw std::runtime_error(folder_.unfinished + " can't be written");
  }
  uint64_t taken = 0;
  Count(context, folder_.bytes, taken);
}

// Unpacks that archive, compares the digests, and sets its name.
void Steps::Verify(JobContext& context) {
  if (!context.KeepGoing() || IsDone()) return;
  if (!TmvUtilityUnzip()->ExtractArchive(folder_.unfinished.c_str(), folder_.unpacked.c_str())) {
    throw std::runtime_error(folder_.unfinished + " can't be unpacked");
  }
  if (!CompareUnpacked(context)) return;
  GiveName();
  folder_.outcome = Folder::Outcome::kPacked;
}

// False if the job was cancelled on the way.
bool Steps::CompareUnpacked(JobContext& context) {
  uint64_t taken = 0;
  for (const File& file : folder_.files) {
    if (!context.KeepGoing()) return false;
    if (DigestOf(folder_.unpacked + "/" + file.stored) != file.digest) {
      throw std::runtime_error(file.path + " isn't the same in the archive");
    }
    Count(context, file.bytes, taken);
  }
  return context.KeepGoing();
}

// A move doesn't replace: the old archive steps aside, and comes back if the new one can't take its
// place. If the new one lacks what could not be read today, the old one may hold it: the last whole
// archive is kept beside the new one.
void Steps::GiveName() {
  TMVUtilityFile* const files = TmvUtilityFile();
  const std::string old = folder_.archive + ".old";
  const std::string whole = folder_.archive + ".whole";
  files->RemoveFile(old.c_str());
  const bool hadArchive = files->MoveFileTo(folder_.archive.c_str(), old.c_str());
  if (!files->MoveFileTo(folder_.unfinished.c_str(), folder_.archive.c_str())) {
    if (hadArchive) files->MoveFileTo(old.c_str(), folder_.archive.c_str());
    throw std::runtime_error(folder_.archive + " can't be made");
  }
  if (folder_.passedOver.empty()) {
    files->RemoveFile(whole.c_str());
  } else if (!files->PathExists(whole.c_str()) && hadArchive) {
    files->MoveFileTo(old.c_str(), whole.c_str());
  }
  files->RemoveFile(old.c_str());
}

}  // namespace

// A folder whose digests can't be taken isn't packed, and one that can't be packed isn't verified.
std::vector<tmv::JobLane> AddFolders(tmv::Job& job, std::vector<Folder>& folders,
                                     Progress& progress) {
  std::vector<tmv::JobLane> lanes;
  for (Folder& folder : folders) {
    progress.total += 3 * folder.bytes;
    Steps steps(folder, progress);
    tmv::JobLane lane = job.AddLane(folder.name);
    lane.StopAtFailure()
        .Then("digest", [steps](JobContext& context) mutable { steps.Digest(context); })
        .Then("pack", [steps](JobContext& context) mutable { steps.Pack(context); })
        .Then("verify", [steps](JobContext& context) mutable { steps.Verify(context); });
    lanes.push_back(lane);
  }
  return lanes;
}

void NoteFailures(const std::vector<tmv::JobFailure>& failures, std::vector<Folder>& folders) {
  for (const tmv::JobFailure& failure : failures) {
    for (Folder& folder : folders) {
      if (folder.name == failure.lane) folder.outcome = Folder::Outcome::kFailed;
    }
  }
}

}  // namespace backup
