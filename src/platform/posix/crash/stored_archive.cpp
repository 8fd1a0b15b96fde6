#include "platform/posix/crash/stored_archive.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <zlib.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstring>

#include "platform/crash_clock.h"

namespace temvar::posix {
namespace {

// The records of the zip format, little-endian and without gaps, as this system stores them.
#pragma pack(push, 1)
struct FileFacts {
  uint16_t version = 10;
  uint16_t flags = 0;
  uint16_t method = 0;  // Stored.
  uint32_t dosTime = 0;
  uint32_t crc = 0;
  uint32_t packedSize = 0;
  uint32_t size = 0;
  uint16_t nameLength = 0;
  uint16_t extraLength = 0;
};
struct LocalHeader {
  uint32_t signature = 0x04034b50;
  FileFacts facts;
};
struct CentralHeader {
  uint32_t signature = 0x02014b50;
  uint16_t madeBy = 0;
  FileFacts facts;
  uint16_t commentLength = 0;
  uint16_t disk = 0;
  uint16_t internalAttributes = 0;
  uint32_t externalAttributes = 0;
  uint32_t offset = 0;
};
struct EndRecord {
  uint32_t signature = 0x06054b50;
  uint16_t disk = 0;
  uint16_t directoryDisk = 0;
  uint16_t entriesHere = 0;
  uint16_t entries = 0;
  uint32_t directorySize = 0;
  uint32_t directoryOffset = 0;
  uint16_t commentLength = 0;
};
#pragma pack(pop)

// As the system call getdents64 writes it.
struct FolderEntry {
  uint64_t inode;
  int64_t next;
  uint16_t length;
  uint8_t type;
  char name[1];
};

uint32_t DosTime(int64_t time) {
  char text[32];
  if (!CrashTimeOf(time, text)) return 0;
  const auto digits = [&text](size_t start, size_t count) {
    uint32_t number = 0;
    for (size_t i = start; i < start + count; ++i) {
      number = number * 10 + static_cast<uint32_t>(text[i] - '0');
    }
    return number;
  };
  const uint32_t year = digits(0, 4);
  if (year < 1980 || year > 2107) return 0;
  return (year - 1980) << 25 | digits(4, 2) << 21 | digits(6, 2) << 16 | digits(8, 2) << 11 |
         digits(10, 2) << 5 | digits(12, 2) / 2;
}

class StoredArchive {
 public:
  explicit StoredArchive(int file) : file_(file) {
    void* const memory = mmap(nullptr, kMemorySize, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory != MAP_FAILED) memory_ = static_cast<char*>(memory);
  }
  ~StoredArchive() {
    if (memory_ != nullptr) munmap(memory_, kMemorySize);
  }
  StoredArchive(const StoredArchive&) = delete;
  StoredArchive& operator=(const StoredArchive&) = delete;

  // Appends the open file `input`. A file that doesn't fit leaves no trace.
  void Add(int input, const struct stat& info, const char* name) {
    CentralHeader central;
    const size_t length = std::strlen(name);
    const int64_t start = end_;
    const int64_t contents = start + static_cast<int64_t>(sizeof(LocalHeader) + length);
    if (memory_ == nullptr || entries_ == UINT16_MAX || contents > kMaxSize ||
        directorySize_ + sizeof(central) + length > kMemorySize - kBlockSize) {
      return;
    }
    central.facts.dosTime = DosTime(info.st_mtime);
    central.facts.nameLength = static_cast<uint16_t>(length);
    central.offset = static_cast<uint32_t>(start);
    end_ = contents;
    if (!CopyIn(input, central.facts)) {
      end_ = start;
      return;
    }
    const LocalHeader local{.facts = central.facts};
    WriteAt(start, &local, sizeof(local));
    WriteAt(start + static_cast<int64_t>(sizeof(local)), name, length);
    AppendToDirectory(&central, sizeof(central));
    AppendToDirectory(name, length);
    ++entries_;
  }

  void Finish() {
    EndRecord end;
    end.entriesHere = end.entries = entries_;
    end.directorySize = static_cast<uint32_t>(directorySize_);
    end.directoryOffset = static_cast<uint32_t>(end_);
    if (directorySize_ > 0) WriteAt(end_, Directory(), directorySize_);
    const int64_t last = end_ + static_cast<int64_t>(directorySize_);
    WriteAt(last, &end, sizeof(end));
    if (failed_ || ftruncate(file_, last + static_cast<int64_t>(sizeof(end))) != 0) {
      // Nothing that looks like an archive and is none.
      [[maybe_unused]] const int result = ftruncate(file_, 0);
    }
  }

 private:
  static constexpr size_t kBlockSize = 64 * 1024;
  static constexpr int64_t kMaxSize = UINT32_MAX;         // Of the format, up to the directory.
  static constexpr size_t kMemorySize = 4 * 1024 * 1024;  // A block, then the central directory.

  char* Directory() const { return memory_ + kBlockSize; }

  bool CopyIn(int input, FileFacts& facts) {
    int64_t size = 0;
    uLong crc = crc32(0, nullptr, 0);
    for (;;) {
      const ssize_t count = read(input, memory_, kBlockSize);
      if (count == 0) break;
      if (count < 0 && errno == EINTR) continue;
      if (count < 0 || end_ + count > kMaxSize) return false;
      crc = crc32(crc, reinterpret_cast<const Bytef*>(memory_), static_cast<uInt>(count));
      WriteAt(end_, memory_, static_cast<size_t>(count));
      end_ += count;
      size += count;
    }
    facts.crc = static_cast<uint32_t>(crc);
    facts.packedSize = facts.size = static_cast<uint32_t>(size);
    return true;
  }

  void WriteAt(int64_t offset, const void* data, size_t size) {
    const auto* bytes = static_cast<const char*>(data);
    while (size > 0) {
      const ssize_t written = pwrite(file_, bytes, size, offset);
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) {
        failed_ = true;
        return;
      }
      bytes += written;
      offset += written;
      size -= static_cast<size_t>(written);
    }
  }

  void AppendToDirectory(const void* data, size_t size) {
    std::memcpy(Directory() + directorySize_, data, size);
    directorySize_ += size;
  }

  const int file_;
  char* memory_ = nullptr;
  int64_t end_ = 0;
  size_t directorySize_ = 0;
  uint16_t entries_ = 0;
  bool failed_ = false;
};

bool IsArchive(const char* name) {
  const size_t length = std::strlen(name);
  return length >= 4 && strcasecmp(name + length - 4, ".zip") == 0;
}

class Walk {
 public:
  explicit Walk(StoredArchive& archive) : archive_(archive) {}

  // Packs what is in the open folder, whose name in the archive takes `length` bytes of name_.
  void Pack(int folder, size_t length, int depth) {
    alignas(FolderEntry) char entries[1024];
    for (;;) {
      const long size = syscall(SYS_getdents64, folder, entries, sizeof(entries));
      if (size <= 0) return;
      for (long offset = 0; offset < size;) {
        const auto* const entry = reinterpret_cast<const FolderEntry*>(entries + offset);
        offset += entry->length;
        PackEntry(folder, entry->name, length, depth);
      }
    }
  }

 private:
  static constexpr int kMaxDepth = 16;

  void PackEntry(int folder, const char* own, size_t length, int depth) {
    const size_t ownLength = std::strlen(own);
    if (std::strcmp(own, ".") == 0 || std::strcmp(own, "..") == 0) return;
    if (length + ownLength + 2 > sizeof(name_)) return;
    std::memcpy(name_ + length, own, ownLength + 1);
    // Without waiting for the other end of a FIFO.
    const int file = openat(folder, own, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) return;
    struct stat info;
    if (fstat(file, &info) != 0) {
      // Left out.
    } else if (S_ISREG(info.st_mode) && !IsArchive(own)) {
      archive_.Add(file, info, name_);
    } else if (S_ISDIR(info.st_mode) && depth < kMaxDepth) {
      name_[length + ownLength] = '/';
      Pack(file, length + ownLength + 1, depth + 1);
    }
    close(file);
  }

  StoredArchive& archive_;
  char name_[PATH_MAX] = {};
};

}  // namespace

void StoreDirectory(const char* directory, int archive) {
  StoredArchive stored(archive);
  const int folder = open(directory, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder >= 0) {
    Walk(stored).Pack(folder, 0, 1);
    close(folder);
  }
  stored.Finish();
}

}  // namespace temvar::posix
