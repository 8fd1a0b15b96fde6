// The mappings of this process, read from the kernel at the time of the crash, without the heap.
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

// The part of a stack that belongs into a dump: from the red zone below `stack_pointer` up to the
// end of its mapping, `limit` bytes at most. On an overflown stack the pointer lies in or below the
// guard: the first readable mapping above it then. False when there is none.
bool FindStack(uint64_t stack_pointer, size_t limit, uint64_t& start, size_t& size);

// The readable part of the 256 bytes around an address.
bool FindSurroundings(uint64_t address, uint64_t& start, size_t& size);

// Copies memory of this process. False, without a fault, when not all of it can be read.
bool CopyMemory(uint64_t address, void* to, size_t size);

}  // namespace temvar::posix::minidump

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_MAPS_H_
