#include "steps.h"

#include <temvar/handles.h>

#include <stdexcept>

namespace backup {
namespace {

// Also prints the digest to standard output.
std::string DigestOf(const std::string& path) {
  const tmv::Text digest(TmvUtilityString()->Md5OfFile(path.c_str()));
  return digest.c_str();
}

}  // namespace

void Steps::Digest(RkTask* task) {
  std::string lines;
  for (File& file : folder_.files) {
    if (!job_.KeepGoing(task)) return;
    file.digest = DigestOf(file.path);
    if (file.digest.empty()) throw std::runtime_error(file.path + " can't be read");
    lines += file.digest + ' ' + file.name + '\n';
    progress_.done += file.bytes;
  }
  folder_.digest = tmv::Text(TmvUtilityString()->Sha1OfString(lines.c_str())).c_str();
  if (!IsUnchanged()) return;
  folder_.outcome = Folder::Outcome::kUnchanged;
  progress_.done += 2 * folder_.bytes;
}

bool Steps::IsUnchanged() const {
  return folder_.digest == folder_.lastDigest &&
         TmvUtilityFile()->PathExists(folder_.archive.c_str());
}

// The archive is written in one go, with no pause point in it.
void Steps::Pack(RkTask* task) {
  if (!job_.KeepGoing(task) || folder_.outcome == Folder::Outcome::kUnchanged) return;
  const tmv::Zip zip = tmv::MakeZip();
  for (const File& file : folder_.files) zip->AddFile(file.path.c_str(), file.name.c_str());
  if (!zip->WriteArchive(folder_.unfinished.c_str(), nullptr)) {
    throw std::runtime_error(folder_.unfinished + " can't be written");
  }
  progress_.done += folder_.bytes;
}

void Steps::Verify(RkTask* task) {
  if (!job_.KeepGoing(task) || folder_.outcome == Folder::Outcome::kUnchanged) return;
  TMVUtilityUnzip* const unzip = TmvUtilityUnzip();
  if (!unzip->ExtractArchive(folder_.unfinished.c_str(), folder_.unpacked.c_str())) {
    throw std::runtime_error(folder_.unfinished + " can't be unpacked");
  }
  CompareUnpacked(task);
  if (job_.IsCancelled()) return;
  GiveName();
  folder_.outcome = Folder::Outcome::kPacked;
}

void Steps::CompareUnpacked(RkTask* task) {
  for (const File& file : folder_.files) {
    if (!job_.KeepGoing(task)) return;
    if (DigestOf(folder_.unpacked + "/" + file.name) != file.digest) {
      throw std::runtime_error(file.path + " isn't the same in the archive");
    }
    progress_.done += file.bytes;
  }
}

// A move doesn't replace: the old archive steps aside, and comes back if the new one can't take its
// place.
void Steps::GiveName() {
  TMVUtilityFile* const files = TmvUtilityFile();
  const std::string old = folder_.archive + ".old";
  files->RemoveFile(old.c_str());
  const bool hadArchive = files->MoveFileTo(folder_.archive.c_str(), old.c_str());
  if (!files->MoveFileTo(folder_.unfinished.c_str(), folder_.archive.c_str())) {
    if (hadArchive) files->MoveFileTo(old.c_str(), folder_.archive.c_str());
    throw std::runtime_error(folder_.archive + " can't be made");
  }
  files->RemoveFile(old.c_str());
}

}  // namespace backup
