#include "archives/archive_files.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>

#include "platform/system_archive_files.h"

namespace temvar {
namespace {

constexpr uLong kBlockSize = 32 << 10;

constexpr std::string_view kEndSignature("PK\5\6", 4);
constexpr ZPOS64_T kEndRecordSize = 22;
constexpr ZPOS64_T kEndSearchSize = 0xFFFF;  // How far from the end minizip looks for the record.

const zlib_filefunc64_def& SystemFiles() {
  static const zlib_filefunc64_def table = [] {
    zlib_filefunc64_def filled;
    FillSystemArchiveFiles(&filled);
    return filled;
  }();
  return table;
}

// Bytes of the file, from a multiple of the block size on.
struct Block {
  ZPOS64_T start = 0;
  uLong size = 0;
  char bytes[kBlockSize];

  bool Holds(ZPOS64_T position) const { return position >= start && position - start < size; }
};

// An open archive. `position` is where minizip believes to be; a seek only changes it, and the file
// itself is moved when a read or a write needs it elsewhere. These functions are called from C, so
// none of them throws.
//
// Invariants:
// - There are two blocks since minizip reads at two places in turn: the directory at the end of the
//   archive, and the entries. They hold nothing once something was written.
// - minizip sees `shift` zero bytes (0 or 1), then the file. All other positions are the file's
// own.
// - filePosition is the file's position in the system, kUnknown after a failure.
// - fileEnd is where the file was found to end, kUnknown before that. minizip reads on after it, up
//   to 64 KB byte by byte for a header that claims them, and must not reach the system for each.
struct BlockFile {
  static constexpr ZPOS64_T kUnknown = ~ZPOS64_T{0};

  explicit BlockFile(voidpf opened) : file(opened) {}

  voidpf file;
  ZPOS64_T position = 0;
  ZPOS64_T filePosition = 0;
  ZPOS64_T fileEnd = kUnknown;
  ZPOS64_T shift = 0;
  std::array<Block, 2> blocks;
  size_t lastUsed = 0;

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

  bool MoveToEnd(ZPOS64_T* end) {
    const auto& system = SystemFiles();
    filePosition = kUnknown;
    if (system.zseek64_file(system.opaque, file, 0, ZLIB_FILEFUNC_SEEK_END) != 0) return false;
    *end = filePosition = system.ztell64_file(system.opaque, file);
    return true;
  }

  bool HasFailed() {
    const auto& system = SystemFiles();
    return system.zerror_file(system.opaque, file) != 0;
  }

  uLong ReadAt(ZPOS64_T start, void* data, uLong size) {
    if (start >= fileEnd || !MoveTo(start)) return 0;
    const auto& system = SystemFiles();
    const uLong moved = system.zread_file(system.opaque, file, data, size);
    if (moved < size) fileEnd = start + moved;
    filePosition = moved == size ? start + moved : kUnknown;
    return moved;
  }

  // The block with the byte at `place`, filled if need be; it doesn't hold the byte at the end of
  // the file. Of two readers each keeps its block: one that goes on refills its own.
  const Block& BlockAt(ZPOS64_T place) {
    for (size_t i = 0; i < blocks.size(); ++i) {
      if (blocks[i].Holds(place)) return blocks[lastUsed = i];
    }
    if (place >= fileEnd) return blocks[lastUsed];
    const ZPOS64_T start = place / kBlockSize * kBlockSize;
    size_t chosen = 1 - lastUsed;
    if (start != 0 && blocks[lastUsed].Holds(start - 1)) chosen = lastUsed;
    lastUsed = chosen;
    blocks[chosen].start = start;
    blocks[chosen].size = ReadAt(start, blocks[chosen].bytes, kBlockSize);
    return blocks[chosen];
  }

  // Copies what one block holds from `position` on.
  uLong Take(char* data, uLong size) {
    if (position < shift) {
      *data = 0;
      ++position;
      return 1;
    }
    const ZPOS64_T place = position - shift;
    const Block& block = BlockAt(place);
    if (!block.Holds(place)) return 0;
    const auto offset = static_cast<uLong>(place - block.start);
    const uLong count = std::min(size, block.size - offset);
    std::memcpy(data, block.bytes + offset, count);
    position += count;
    return count;
  }

  bool IsSignatureAt(ZPOS64_T place) {
    return std::all_of(kEndSignature.begin(), kEndSignature.end(), [&](char byte) {
      const Block& block = BlockAt(place);
      return block.Holds(place) && block.bytes[place++ - block.start] == byte;
    });
  }

  // Looks for the end record as minizip does: its last signature counts.
  //
  // minizip 1.1 reads fields after the end of the file as what happens to lie in its memory, so it
  // must not see a record that is cut. And it takes the position 0 of an end record for "not
  // found", and so refuses the shortest archive there is, one without entries: it gets to see such
  // a file after one zero byte, like an archive after a program.
  bool Prepare() {
    ZPOS64_T end = 0;
    if (!MoveToEnd(&end)) return false;
    const ZPOS64_T first = end - std::min(end, kEndSearchSize);
    for (ZPOS64_T place = end; place-- > first;) {
      const bool isFound = IsSignatureAt(place);
      // A device that is gone must not be asked for each byte before the place.
      if (HasFailed()) return false;
      if (!isFound) continue;
      shift = place == 0 ? 1 : 0;
      return end - place >= kEndRecordSize;
    }
    return false;
  }
};

int CloseFile(voidpf file) {
  const auto& system = SystemFiles();
  return system.zclose_file(system.opaque, file);
}

voidpf Open(voidpf, const void* path, int mode) noexcept {
  const auto& system = SystemFiles();
  const voidpf file = system.zopen64_file(system.opaque, path, mode);
  if (file == nullptr) return nullptr;
  auto* stream = new (std::nothrow) BlockFile(file);
  const bool isWritten = (mode & ZLIB_FILEFUNC_MODE_WRITE) != 0;
  if (stream != nullptr && (isWritten || stream->Prepare())) return stream;
  delete stream;
  CloseFile(file);
  return nullptr;
}

uLong Read(voidpf, voidpf handle, void* data, uLong size) noexcept {
  auto* stream = static_cast<BlockFile*>(handle);
  auto* bytes = static_cast<char*>(data);
  uLong done = 0;
  while (done < size) {
    const uLong taken = stream->Take(bytes + done, size - done);
    if (taken == 0) break;
    done += taken;
  }
  return done;
}

uLong Write(voidpf writeFailed, voidpf handle, const void* data, uLong size) noexcept {
  auto* stream = static_cast<BlockFile*>(handle);
  for (Block& block : stream->blocks) block.size = 0;
  stream->fileEnd = BlockFile::kUnknown;
  uLong moved = 0;
  if (stream->MoveTo(stream->position)) {
    const auto& system = SystemFiles();
    moved = system.zwrite_file(system.opaque, stream->file, data, size);
    stream->position += moved;
    stream->filePosition = stream->position;
  }
  if (moved != size && writeFailed != nullptr) *static_cast<bool*>(writeFailed) = true;
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
    if (!stream->MoveToEnd(&start)) return -1;
    start += stream->shift;
  }
  const ZPOS64_T target = start + offset;  // An offset back wraps around, as it is meant to.
  if (target > static_cast<ZPOS64_T>(INT64_MAX)) return -1;
  stream->position = target;
  return 0;
}

int Close(voidpf, voidpf handle) noexcept {
  auto* stream = static_cast<BlockFile*>(handle);
  const int result = CloseFile(stream->file);
  delete stream;
  return result;
}

int Error(voidpf, voidpf handle) noexcept {
  const auto& system = SystemFiles();
  return system.zerror_file(system.opaque, static_cast<BlockFile*>(handle)->file);
}

}  // namespace

zlib_filefunc64_def ArchiveFiles(bool* writeFailed) {
  return {Open, Read, Write, Tell, Seek, Close, Error, writeFailed};
}

}  // namespace temvar
