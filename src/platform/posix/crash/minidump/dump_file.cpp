#include "platform/posix/crash/minidump/dump_file.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>

#include "platform/posix/crash/minidump/memory.h"
#include "platform/posix/files/narrow_path.h"

namespace temvar::posix::minidump {
DumpFile::DumpFile(int descriptor) : descriptor_(descriptor) {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  Header header = {};
  header.signature = kSignature;
  header.version = kVersion;
  header.streamCount = kMaxStreams;
  header.time = static_cast<uint32_t>(now.tv_sec);
  const uint32_t start = Reserve(sizeof(Header));
  directory_ = Reserve(kMaxStreams * sizeof(DirectoryEntry));
  header.directoryOffset = directory_;
  // The file is new: entries that are never written read as zeros, which means unused.
  WriteAt(start, &header, sizeof(header));
}

uint32_t DumpFile::Reserve(size_t size) {
  const uint32_t offset = end_;
  end_ = static_cast<uint32_t>((end_ + size + 7) & ~size_t{7});
  return offset;
}

void DumpFile::WriteAt(uint32_t offset, const void* data, size_t size) {
  const char* at = static_cast<const char*>(data);
  while (size > 0) {
    // The kernel alone looks at the memory: not the wrapper of a sanitizer, to which parts of a
    // stack are out of bounds.
    const long written = syscall(SYS_pwrite64, descriptor_, at, size, static_cast<off_t>(offset));
    if (written < 0 && errno == EINTR) continue;
    size_t done = static_cast<size_t>(written);
    if (written < 0 && errno == EFAULT) {
      // A page that can't be read is no fault of the file: its place stays empty.
      done = std::min(size, kPageSize - reinterpret_cast<uintptr_t>(at) % kPageSize);
    } else if (written <= 0) {
      failed_ = true;
      // An entry of the directory that is lost stays empty, and costs its stream alone.
      if (offset >= directory_ + kMaxStreams * sizeof(DirectoryEntry)) {
        lost_ = std::min(lost_, offset);
      }
      return;
    }
    at += done;
    offset += static_cast<uint32_t>(done);
    size -= done;
  }
}

Location DumpFile::Append(const void* data, size_t size) {
  const Location location = {static_cast<uint32_t>(size), Reserve(size)};
  WriteAt(location.offset, data, size);
  return location;
}

uint32_t DumpFile::AppendText(const char* utf8) {
  struct {
    uint32_t size;
    char16_t text[4096];
  } record = {};
  WideFileName(utf8, record.text, sizeof(record.text) / sizeof(record.text[0]));
  uint32_t length = 0;
  while (record.text[length] != 0) ++length;
  record.size = length * 2;
  return Append(&record, sizeof(record.size) + record.size + 2).offset;
}

Location DumpFile::AppendFile(const char* path, size_t limit) {
  const int source = open(path, O_RDONLY | O_CLOEXEC);
  if (source < 0) return {0, 0};
  const uint32_t start = Reserve(0);
  uint32_t size = 0;
  char buffer[1024];
  while (size < limit) {
    const ssize_t count = read(source, buffer, sizeof(buffer));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    WriteAt(start + size, buffer, static_cast<size_t>(count));
    size += static_cast<uint32_t>(count);
  }
  close(source);
  Reserve(size);
  return {size, start};
}

void DumpFile::AddStream(StreamType type, Location location) {
  if (location.size == 0 || streams_ == kMaxStreams) return;
  const DirectoryEntry entry = {type, location};
  WriteAt(directory_ + streams_ * static_cast<uint32_t>(sizeof(entry)), &entry, sizeof(entry));
  ++streams_;
}

bool DumpFile::Finish() {
  // The room set aside last may not be written to its end.
  if (ftruncate(descriptor_, std::min(end_, lost_)) != 0) failed_ = true;
  if (fsync(descriptor_) != 0 && errno != EINVAL) failed_ = true;
  return !failed_;
}

}  // namespace temvar::posix::minidump
