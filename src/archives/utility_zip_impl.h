#ifndef TEMVAR_ARCHIVES_UTILITY_ZIP_IMPL_H_
#define TEMVAR_ARCHIVES_UTILITY_ZIP_IMPL_H_

#include "archives/archive_writer.h"
#include "temvar/utility_zip.h"

namespace temvar {

class TMVUtilityZipImpl final : public TMVUtilityZip {
 public:
  void AddDirectory(const char* directory, const char* root) override;
  void AddFile(const char* path, const char* name) override;
  bool WriteArchive(const char* archive, const char* exclusions) override;
  bool DeflateBuffer(BinaryDataResult* result, const void* data, uint32_t size,
                     int32_t level) override;

 private:
  ArchiveEntries entries_;
};

}  // namespace temvar

#endif  // TEMVAR_ARCHIVES_UTILITY_ZIP_IMPL_H_
