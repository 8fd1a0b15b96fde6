#ifndef EXAMPLES_BACKUP_RESTORE_H_
#define EXAMPLES_BACKUP_RESTORE_H_

#include <temvar/job.h>

#include <filesystem>

namespace backup {

// A lane for each archive in the folder `backup`, which unpacks it into `target` and gives each
// file its name again. Existing files are never replaced. Returns the number of archives.
// Throws std::filesystem::filesystem_error if `backup` can't be listed.
size_t AddArchives(tmv::Job& job, const std::filesystem::path& backup,
                   const std::filesystem::path& target);

// Where the archives are unpacked at first. The caller removes it after the end of the job.
std::filesystem::path WorkFolder(const std::filesystem::path& target);

}  // namespace backup

#endif  // EXAMPLES_BACKUP_RESTORE_H_
