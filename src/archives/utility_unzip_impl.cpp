#include "archives/utility_unzip_impl.h"
#include "archives/archive_extraction.h"
#include "archives/archive_reader.h"
#include "archives/entry_extraction.h"
#include "archives/memory_compression.h"

namespace temvar {

bool TMVUtilityUnzipImpl::ExtractArchive(const char* archive, const char* destination) {
  return ExtractArchiveTo(archive, destination);
}

int32_t TMVUtilityUnzipImpl::GunzipBuffer(const void* data, uint32_t size, void* output,
                                          uint32_t* capacity) {
  return GunzipBytes(data, size, output, capacity);
}

bool TMVUtilityUnzipImpl::ExtractEntry(BinaryDataResult* result, const char* archive,
                                       const char* entry) {
  return ExtractEntryToMemory(result, archive, entry);
}

bool TMVUtilityUnzipImpl::InflateBuffer(BinaryDataResult* result, const void* data, uint32_t size) {
  return InflateBytes(result, data, size);
}

void* TMVUtilityUnzipImpl::OpenArchive(const char* archive) { return OpenForReading(archive); }

namespace {
constinit TMVUtilityUnzipImpl unzip;
}  // namespace

}  // namespace temvar

TMVUtilityUnzip* TmvUtilityUnzip() { return &temvar::unzip; }
