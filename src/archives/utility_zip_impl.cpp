#include "archives/utility_zip_impl.h"
#include "archives/directory_walk.h"
#include "archives/memory_compression.h"
#include "temvar/utility_string.h"

namespace temvar {

void TMVUtilityZipImpl::AddDirectory(const char* directory, const char* root) {
  if (TmvUtilityString()->IsNullOrEmpty(directory)) return;
  if (TmvUtilityString()->IsNullOrEmpty(root)) root = directory;
  WalkFiles(directory, root, [this](const char* path, const char* name) { AddFile(path, name); });
}

void TMVUtilityZipImpl::AddFile(const char* path, const char* name) {
  if (path == nullptr) return;
  entries_[path] = TmvUtilityString()->SafeString(name);
}

bool TMVUtilityZipImpl::WriteArchive(const char* archive, const char* exclusions) {
  return WriteArchiveFile(archive, entries_, exclusions);
}

bool TMVUtilityZipImpl::DeflateBuffer(BinaryDataResult* result, const void* data, uint32_t size,
                                      int32_t level) {
  return DeflateBytes(result, data, size, level);
}

}  // namespace temvar

TMVUtilityZip* CreateTmvUtilityZip() { return new temvar::TMVUtilityZipImpl; }

void DestroyTmvUtilityZip(TMVUtilityZip* zip) {
  delete dynamic_cast<temvar::TMVUtilityZipImpl*>(zip);
}
