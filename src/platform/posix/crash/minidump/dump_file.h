#ifndef TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_DUMP_FILE_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_DUMP_FILE_H_

#include <cstddef>
#include <cstdint>

#include "platform/posix/crash/minidump/format.h"

namespace temvar::posix::minidump {

// The file under work. Header and directory come first and the streams after them, each entered in
// the directory only when it is on its way to the disk: a file that was cut short opens with what
// it has. Nothing but system calls; memory is written straight from where it lies, so that a page
// that is gone costs that page and no fault.
class DumpFile {
 public:
  // Writes the header and an empty directory to the open file `descriptor`.
  explicit DumpFile(int descriptor);

  // Sets room aside and returns its offset, a multiple of 8. It reads as zeros until written.
  uint32_t Reserve(size_t size);

  // Writes at an offset that Reserve gave.
  void WriteAt(uint32_t offset, const void* data, size_t size);

  // Both in one.
  Location Append(const void* data, size_t size);

  // Appends a text of a dump, made from UTF-8; returns its offset. Cut at 4,095 units.
  uint32_t AppendText(const char* utf8);

  // Appends the file at `path`, up to `limit` bytes. Size 0 when it can't be read.
  Location AppendFile(const char* path, size_t limit);

  // Enters a stream in the directory. A type may be entered once. An empty stream is left out.
  void AddStream(StreamType type, Location location);

  // Everything so far is on the disk when this returns. False if any write has failed: the file
  // then ends at the first place that could not be written, so that nothing reads zeros as
  // contents.
  bool Finish();

 private:
  static constexpr uint32_t kMaxStreams = 12;

  int descriptor_;
  uint32_t end_ = 0;
  uint32_t directory_ = 0;
  uint32_t streams_ = 0;
  uint32_t lost_ = UINT32_MAX;  // The first place of a stream that could not be written.
  bool failed_ = false;
};

}  // namespace temvar::posix::minidump

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_DUMP_FILE_H_
