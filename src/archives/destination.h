#ifndef TEMVAR_ARCHIVES_DESTINATION_H_
#define TEMVAR_ARCHIVES_DESTINATION_H_

#include <optional>
#include <string>
#include <string_view>

#include "platform/ways.h"
#include "utilities/file/owned_handles.h"

namespace temvar {

// The folder that an archive is unpacked into. Opens files and makes folders below it, never
// through a link that lies there, and never the archive itself.
//
// Paths are those of EntryPlace::path. Folders that are known already cost nothing: a path is
// looked at from where it leaves the folder of the path before, and not at all below a folder that
// this extraction has made, since nothing in an archive can make a link.
class Destination {
 public:
  // Makes the folder `prefix` (UTF-8, with its separator) if it is missing, but not its parents.
  Destination(std::string prefix, const char* archive);

  // Opens a file for writing, replacing its contents, and makes missing folders on its way. Null if
  // it can't or mustn't be opened.
  Stream Open(const std::string& path);

  // Makes a folder with its parents; what the system refuses stays missing. False if a link is on
  // the way.
  bool MakeFolder(const std::string& path);

  // The path of a file as the system takes it.
  std::string FullPath(const std::string& path) const { return prefix_ + path; }

 private:
  // Where the way to `folder` ends: kFolder at itself.
  ComponentKind LookAt(std::string_view folder);
  bool IsFresh(std::string_view folder) const;
  // Whether the file at `full` is no link and not the archive. A missing file is free.
  bool IsFree(const std::string& full);
  void IdentifyArchive();
  // Makes `folder` with its parents after LookAt has found it missing; false if it can't be made.
  bool MakeMissing(std::string_view folder);
  void SetMade(std::string_view folder);

  const std::string prefix_;
  const std::string archivePath_;
  std::optional<FileIdentity> archive_;
  std::string known_;                 // A folder with neither a link nor a file on its way.
  std::optional<std::string> fresh_;  // A folder that was made here, with all that is below it.
};

}  // namespace temvar

#endif  // TEMVAR_ARCHIVES_DESTINATION_H_
