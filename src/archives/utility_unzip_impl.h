#ifndef TEMVAR_ARCHIVES_UTILITY_UNZIP_IMPL_H_
#define TEMVAR_ARCHIVES_UTILITY_UNZIP_IMPL_H_

#include "temvar/utility_unzip.h"

namespace temvar {

class TMVUtilityUnzipImpl final : public TMVUtilityUnzip {
 public:
  bool ExtractArchive(const char* archive, const char* destination) override;
  int32_t GunzipBuffer(const void* data, uint32_t size, void* output, uint32_t* capacity) override;
  bool ExtractEntry(BinaryDataResult* result, const char* archive, const char* entry) override;
  bool InflateBuffer(BinaryDataResult* result, const void* data, uint32_t size) override;
  void* OpenArchive(const char* archive) override;
};

}  // namespace temvar

#endif  // TEMVAR_ARCHIVES_UTILITY_UNZIP_IMPL_H_
