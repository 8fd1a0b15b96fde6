#include "archives/archive_reader.h"

#include <zlib.h>

#include <new>

#include "archives/archive_files.h"
#include "utilities/file/system_path.h"

namespace temvar {

unzFile OpenForReading(const char* archive) {
  zlib_filefunc64_def files = ArchiveFiles();
  // Our blocks, and its record of the archive, without which it leaves the file open.
  ExpectMemory(100'000);
  return unzOpen2_64(SystemPath(archive).get(), &files);
}

int ReadEntryInfo(unzFile archive, EntryInfo* info) {
  // Names of usual length come with the first call; minizip reports the true length of longer ones.
  constexpr uLong kUsualSize = 256;
  const auto read = [&](unz_file_info64* raw, uLong size) {
    info->name.resize(size);
    return unzGetCurrentFileInfo64(archive, raw, info->name.data(), size, nullptr, 0, nullptr, 0);
  };
  unz_file_info64 raw;
  int result = read(&raw, kUsualSize);
  if (result == UNZ_OK && raw.size_filename > kUsualSize) result = read(&raw, raw.size_filename);
  if (result != UNZ_OK) return result;
  info->name.resize(raw.size_filename);
  info->dosDate = raw.dosDate;
  info->method = raw.compression_method;
  info->crc = raw.crc;
  info->size = raw.uncompressed_size;
  return UNZ_OK;
}

int OpenEntry(unzFile archive, const EntryInfo& info) {
  // minizip 1.1 built without bzip2 hands out the packed bytes of such an entry as its contents.
  if (info.method != 0 && info.method != Z_DEFLATED) return UNZ_BADZIPFILE;
  // Its buffer, which it loses without the rest, and what zlib keeps of a stream.
  ExpectMemory(100'000);
  return unzOpenCurrentFile(archive);
}

int ReadEntry(unzFile archive, char* block, size_t size) {
  const int count = unzReadCurrentFile(archive, block, static_cast<unsigned>(size));
  // zlib's. Another error means a damaged entry, which this one isn't.
  if (count == Z_MEM_ERROR) throw std::bad_alloc();
  return count;
}

namespace {

// Whether the entry's bytes, read once more, have the CRC that the directory states.
bool HasStatedCrc(unzFile archive, const EntryInfo& info) {
  const auto block = NewReadBlock();
  if (block == nullptr || OpenEntry(archive, info) != UNZ_OK) return false;
  uLong crc = crc32(0, nullptr, 0);
  int count = 0;
  while ((count = ReadEntry(archive, block.get())) > 0) {
    crc = crc32(crc, reinterpret_cast<const Bytef*>(block.get()), static_cast<uInt>(count));
  }
  unzCloseCurrentFile(archive);
  return count == 0 && crc == info.crc;
}

}  // namespace

int CloseEntry(unzFile archive, const EntryInfo& info, uint64_t count) {
  const int result = unzCloseCurrentFile(archive);
  // minizip 1.1 doesn't look at the CRC of an entry that ends before its size is reached. Such
  // entries are rare, so they are read twice, and all others without a second CRC.
  if (result != UNZ_OK || count == info.size) return result;
  return HasStatedCrc(archive, info) ? UNZ_OK : UNZ_CRCERROR;
}

std::unique_ptr<char[]> NewReadBlock() {
  return std::unique_ptr<char[]>(new (std::nothrow) char[kReadSize]);
}

}  // namespace temvar
