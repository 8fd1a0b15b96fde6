// minizip's reading side as both kinds of extraction use it.
#ifndef TEMVAR_ARCHIVES_ARCHIVE_READER_H_
#define TEMVAR_ARCHIVES_ARCHIVE_READER_H_

#include <unzip.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace temvar {

// Bytes that are read from an entry at a time. zlib copies the last 32 KB of its output in each
// call, so that small blocks cost a tenth of the time.
inline constexpr size_t kReadSize = 64 << 10;

// Closes the open entry first, then the file.
struct UnzipCloser {
  void operator()(void* archive) const { unzClose(archive); }
};
using UnzipHandle = std::unique_ptr<void, UnzipCloser>;

// Opens an archive for reading; null if it can't be opened or is no archive.
unzFile OpenForReading(const char* archive);

// The fields in use of the current entry. `name` has all its bytes, also a NUL.
struct EntryInfo {
  std::string name;
  uLong dosDate;
  uLong method;
  uLong crc;
  uint64_t size;  // Of the contents, as the archive states it.
};

// Reads the current entry's information; minizip's result.
int ReadEntryInfo(unzFile archive, EntryInfo* info);

// Opens the current entry, without a password; minizip's result. Methods other than stored and
// deflated are UNZ_BADZIPFILE.
int OpenEntry(unzFile archive, const EntryInfo& info);

// Reads up to kReadSize bytes of the open entry; their number, 0 at its end, or minizip's error.
// Throws std::bad_alloc.
int ReadEntry(unzFile archive, char* block, size_t size = kReadSize);

// Closes the open entry, of which `count` bytes were read up to its end; minizip's result. An entry
// that ends before its stated size is UNZ_CRCERROR unless its CRC is right.
int CloseEntry(unzFile archive, const EntryInfo& info, uint64_t count);

// A block of kReadSize bytes, null if there is no memory.
std::unique_ptr<char[]> NewReadBlock();

}  // namespace temvar

#endif  // TEMVAR_ARCHIVES_ARCHIVE_READER_H_
