// The mappings of this process, read from the kernel at the time of the crash, without the heap.
// Reading them takes long in a process with many: a dump does it once for its images.
#ifndef TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_MAPS_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_MAPS_H_

#include <climits>
#include <cstddef>
#include <cstdint>

namespace temvar::posix::minidump {

struct Mapping {
  uint64_t start = 0;
  uint64_t end = 0;
  uint64_t offset = 0;  // In the file.
  bool readable = false;
  bool executable = false;
  const char* path = "";  // Valid until the next call; "" for memory without a file.
};

// Reads /proc/self/maps, one mapping a call, in the order of addresses.
class MapsReader {
 public:
  MapsReader();
  ~MapsReader();
  MapsReader(const MapsReader&) = delete;
  MapsReader& operator=(const MapsReader&) = delete;

  // False at the end.
  bool Next(Mapping& mapping);

 private:
  bool ReadLine();
  int NextByte();

  int descriptor_;
  char buffer_[1024];
  size_t filled_ = 0;
  size_t used_ = 0;
  char line_[PATH_MAX + 128];
};

}  // namespace temvar::posix::minidump

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_MAPS_H_
