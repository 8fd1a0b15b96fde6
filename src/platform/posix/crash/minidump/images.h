// The program and libraries of this process, found in its mappings and in their ELF headers.
#ifndef TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_IMAGES_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_IMAGES_H_

#include <climits>
#include <cstddef>
#include <cstdint>

#include "platform/posix/crash/minidump/maps.h"

namespace temvar::posix::minidump {

inline constexpr size_t kMaxBuildId = 64;

struct Image {
  uint64_t base;  // Lowest address.
  uint64_t size;  // To the end of the last segment.
  char path[PATH_MAX];
  uint8_t buildId[kMaxBuildId];
  size_t buildIdSize;  // 0 when the image has none.
};

// Reads one image a call, in the order of addresses. An image is a file whose ELF header is mapped
// and that has an executable mapping after it; a library that is only being read is none.
class ImageReader {
 public:
  // False at the end.
  bool Next(Image& image);

 private:
  MapsReader maps_;
  char candidate_[PATH_MAX] = "";  // Path of the ELF header seen last; "" once it is reported.
  uint64_t candidateBase_ = 0;
};

// Path of the program; "" when it isn't known. `path` has room for PATH_MAX bytes.
void ProgramPath(char* path);

}  // namespace temvar::posix::minidump

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_IMAGES_H_
