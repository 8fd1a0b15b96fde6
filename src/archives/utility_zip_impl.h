#ifndef TEMVAR_ARCHIVES_UTILITY_ZIP_IMPL_H_
#define TEMVAR_ARCHIVES_UTILITY_ZIP_IMPL_H_

#include <functional>
#include <map>
#include <string>
#include <utility>

#include "temvar/utility_zip.h"

namespace temvar {

class TMVUtilityZipImpl final : public TMVUtilityZip {
 public:
  // Whether AddDirectory takes a file that it comes to. Without a filter it takes all.
  using Filter = std::function<bool(const char* path)>;

  TMVUtilityZipImpl() = default;
  explicit TMVUtilityZipImpl(Filter filter) : filter_(std::move(filter)) {}

  void AddDirectory(const char* directory, const char* root) override;
  void AddFile(const char* path, const char* name) override;
  bool WriteArchive(const char* archive, const char* exclusions) override;
  bool DeflateBuffer(BinaryDataResult* result, const void* data, uint32_t size,
                     int32_t level) override;

 private:
  // An entry of an archive: a file's path, and its name there, empty for its own.
  std::map<std::string, std::string> entries_;
  const Filter filter_;
};

}  // namespace temvar

#endif  // TEMVAR_ARCHIVES_UTILITY_ZIP_IMPL_H_
