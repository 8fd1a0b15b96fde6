#include "archives/archive_files.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

#include "platform/system_archive_files.h"

namespace temvar {
namespace {

constexpr uLong kBlockSize = 4096;

const zlib_filefunc64_def& SystemFiles() {
  static const zlib_filefunc64_def table = [] {
    zlib_filefunc64_def filled;
    FillSystemArchiveFiles(&filled);
    return filled;
  }();
  return table;
}

// minizip 1.1 takes the position 0 of an end record for "not found", and so refuses the shortest
// archive there is, one without entries. A file that begins with this signature is shown to it
// behind one zero byte, like an archive behind a program.
constexpr char kEndSignature[] = {'P', 'K', 5, 6};

// An open archive. `position` is where minizip believes to be; a seek only changes it, and the file
// itself is moved when a read or a write needs it elsewhere. These functions are called from C, so
// none of them throws.
//
// Invariants:
// - The block holds the bytes [blockStart, blockStart + blockSize) of what minizip sees, and
//   nothing once something was written.
// - What minizip sees is `shift` zero bytes (0 or 1), then the file.
// - filePosition is where the file stands, kUnknown after a failure.
// - fileEnd is where the file was found to end, kUnknown before that. minizip reads on behind it,
//   up to 64 KB byte by byte for a header that claims them, and must not reach the system for each.
struct BlockFile {
  static constexpr ZPOS64_T kUnknown = ~ZPOS64_T{0};

  voidpf file;
  ZPOS64_T position = 0;
  ZPOS64_T filePosition = 0;
  ZPOS64_T fileEnd = kUnknown;
  ZPOS64_T shift = 0;
  ZPOS64_T blockStart = 0;
  uLong blockSize = 0;
  char block[kBlockSize] = {};

  bool MoveTo(ZPOS64_T target) {
    if (filePosition == target) return true;
    const auto& system = SystemFiles();
    if (system.zseek64_file(system.opaque, file, target, ZLIB_FILEFUNC_SEEK_SET) != 0) {
      filePosition = kUnknown;
      return false;
    }
    filePosition = target;
    return true;
  }

  // Reads from the file's own position `start` on.
  uLong ReadAt(ZPOS64_T start, void* data, uLong size) {
    if (start >= fileEnd || !MoveTo(start)) return 0;
    const auto& system = SystemFiles();
    const uLong moved = system.zread_file(system.opaque, file, data, size);
    if (moved < size) fileEnd = start + moved;
    filePosition = moved == size ? start + moved : kUnknown;
    return moved;
  }

  void FillBlock() {
    blockStart = position;
    if (position < shift) {
      block[0] = 0;
      blockSize = 1;
    } else {
      blockSize = ReadAt(position - shift, block, kBlockSize);
    }
  }

  // Copies what the block holds from `position` on.
  uLong TakeFromBlock(char* data, uLong size) {
    if (position < blockStart || position - blockStart >= blockSize) return 0;
    const auto offset = static_cast<uLong>(position - blockStart);
    const uLong count = std::min(size, blockSize - offset);
    std::memcpy(data, block + offset, count);
    position += count;
    return count;
  }
};

voidpf Open(voidpf, const void* path, int mode) noexcept {
  const auto& system = SystemFiles();
  const voidpf file = system.zopen64_file(system.opaque, path, mode);
  if (file == nullptr) return nullptr;
  auto* stream = new (std::nothrow) BlockFile{file};
  if (stream == nullptr) {
    system.zclose_file(system.opaque, file);
    return nullptr;
  }
  if ((mode & ZLIB_FILEFUNC_MODE_WRITE) == 0) {
    stream->FillBlock();
    if (stream->blockSize >= sizeof(kEndSignature) &&
        std::memcmp(stream->block, kEndSignature, sizeof(kEndSignature)) == 0) {
      stream->shift = 1;
      stream->blockSize = 0;
    }
  }
  return stream;
}

uLong Read(voidpf, voidpf handle, void* data, uLong size) noexcept {
  auto* stream = static_cast<BlockFile*>(handle);
  auto* bytes = static_cast<char*>(data);
  uLong done = stream->TakeFromBlock(bytes, size);
  while (done < size) {
    if (size - done >= kBlockSize && stream->position >= stream->shift) {
      // The entries' data goes straight to its reader.
      const uLong moved =
          stream->ReadAt(stream->position - stream->shift, bytes + done, size - done);
      stream->position += moved;
      return done + moved;
    }
    stream->FillBlock();
    const uLong taken = stream->TakeFromBlock(bytes + done, size - done);
    if (taken == 0) break;
    done += taken;
  }
  return done;
}

uLong Write(voidpf, voidpf handle, const void* data, uLong size) noexcept {
  auto* stream = static_cast<BlockFile*>(handle);
  stream->blockSize = 0;
  stream->fileEnd = BlockFile::kUnknown;
  if (!stream->MoveTo(stream->position)) return 0;
  const auto& system = SystemFiles();
  const uLong moved = system.zwrite_file(system.opaque, stream->file, data, size);
  stream->position += moved;
  stream->filePosition = stream->position;
  return moved;
}

ZPOS64_T Tell(voidpf, voidpf handle) noexcept { return static_cast<BlockFile*>(handle)->position; }

// Positions beyond what the file system can count come from damaged archives; they are refused here
// and not left to overflow.
long Seek(voidpf, voidpf handle, ZPOS64_T offset, int origin) noexcept {
  auto* stream = static_cast<BlockFile*>(handle);
  ZPOS64_T start = 0;
  if (origin == ZLIB_FILEFUNC_SEEK_CUR) {
    start = stream->position;
  } else if (origin == ZLIB_FILEFUNC_SEEK_END) {
    const auto& system = SystemFiles();
    stream->filePosition = BlockFile::kUnknown;
    if (system.zseek64_file(system.opaque, stream->file, 0, ZLIB_FILEFUNC_SEEK_END) != 0) return -1;
    stream->filePosition = system.ztell64_file(system.opaque, stream->file);
    start = stream->filePosition + stream->shift;
  }
  const ZPOS64_T target = start + offset;  // An offset back wraps around, as it is meant to.
  if (target > static_cast<ZPOS64_T>(INT64_MAX)) return -1;
  stream->position = target;
  return 0;
}

int Close(voidpf, voidpf handle) noexcept {
  auto* stream = static_cast<BlockFile*>(handle);
  const auto& system = SystemFiles();
  const int result = system.zclose_file(system.opaque, stream->file);
  delete stream;
  return result;
}

int Error(voidpf, voidpf handle) noexcept {
  const auto& system = SystemFiles();
  return system.zerror_file(system.opaque, static_cast<BlockFile*>(handle)->file);
}

}  // namespace

zlib_filefunc64_def ArchiveFiles() {
  return {Open, Read, Write, Tell, Seek, Close, Error, nullptr};
}

}  // namespace temvar
