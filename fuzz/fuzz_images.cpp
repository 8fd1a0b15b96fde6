// Maps the input as a file that may be executed, as a process may have one that is no image, and
// lists the images of the process, as a crash dump does.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "platform/posix/crash/minidump/images.h"

namespace minidump = temvar::posix::minidump;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const int file = memfd_create("input", MFD_CLOEXEC);
  if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size)) std::abort();
  // One page more than there is: it lies past the end of the file.
  const size_t mapped = (size / 4096 + 2) * 4096;
  void* const at = mmap(nullptr, mapped, PROT_READ | PROT_EXEC, MAP_PRIVATE, file, 0);
  if (at == MAP_FAILED) std::abort();

  minidump::ImageReader images;
  minidump::Image image;
  bool found_itself = false;
  while (images.Next(image)) {
    const bool sound = image.base != 0 && image.size != 0 && image.size <= UINT32_MAX &&
                       image.buildIdSize <= sizeof(image.buildId) && image.path[0] == '/';
    if (!sound) std::abort();
    found_itself = found_itself || std::strstr(image.path, "fuzz_images") != nullptr;
  }
  if (!found_itself) std::abort();

  munmap(at, mapped);
  close(file);
  return 0;
}
