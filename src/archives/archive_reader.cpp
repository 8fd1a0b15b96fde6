#include "archives/archive_reader.h"

#include <zlib.h>

#include <new>

#include "archives/archive_files.h"
#include "utilities/file/system_path.h"

namespace temvar {

unzFile OpenForReading(const char* archive) {
  zlib_filefunc64_def files = ArchiveFiles();
  return unzOpen2_64(SystemPath(archive).get(), &files);
}

int ReadEntryInfo(unzFile archive, EntryInfo* info) {
  // Names of usual length come with the first call; minizip tells the true length of longer ones.
  constexpr size_t kUsualSize = 256;
  unz_file_info raw;
  info->name.resize(kUsualSize);
  int result =
      unzGetCurrentFileInfo(archive, &raw, info->name.data(), kUsualSize, nullptr, 0, nullptr, 0);
  if (result != UNZ_OK) return result;
  info->name.resize(raw.size_filename);
  if (raw.size_filename > kUsualSize) {
    result = unzGetCurrentFileInfo(archive, &raw, info->name.data(), raw.size_filename, nullptr, 0,
                                   nullptr, 0);
  }
  info->dosDate = raw.dosDate;
  info->method = raw.compression_method;
  info->size = raw.uncompressed_size;
  return result;
}

int OpenEntry(unzFile archive, const EntryInfo& info) {
  // minizip 1.1 built without bzip2 hands out the packed bytes of such an entry as its contents.
  if (info.method != 0 && info.method != Z_DEFLATED) return UNZ_BADZIPFILE;
  return unzOpenCurrentFile(archive);
}

int CloseEntry(unzFile archive, const EntryInfo& info, uint64_t count) {
  const int result = unzCloseCurrentFile(archive);
  if (result != UNZ_OK) return result;
  // minizip 1.1 doesn't look at the CRC of an entry that ends before its size is reached.
  return static_cast<uLong>(count) == info.size ? UNZ_OK : UNZ_CRCERROR;
}

std::unique_ptr<char[]> NewReadBlock() {
  return std::unique_ptr<char[]>(new (std::nothrow) char[kReadSize]);
}

}  // namespace temvar
