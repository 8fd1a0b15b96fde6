#include "platform/posix/crash/reserve.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>

namespace temvar::posix {
namespace {

constexpr int kDescriptors = 12;

// Descriptors of one file without a name. 0 for a free place: no reserve is ever standard input.
constinit std::atomic<int> reserve[kDescriptors] = {};
constinit struct stat identity = {};

// A host may have closed every descriptor that it doesn't know, and have opened its own since.
bool IsOurs(int descriptor) {
  struct stat info;
  return fstat(descriptor, &info) == 0 && info.st_dev == identity.st_dev &&
         info.st_ino == identity.st_ino;
}

}  // namespace

void FillReserve() {
  const int file = memfd_create("temvar-reserve", MFD_CLOEXEC);
  if (file < 0) return;
  for (std::atomic<int>& place : reserve) {
    const int kept = place.exchange(0);
    if (kept > 0 && IsOurs(kept)) close(kept);
  }
  fstat(file, &identity);
  for (std::atomic<int>& place : reserve) {
    const int copy = fcntl(file, F_DUPFD_CLOEXEC, 3);
    if (copy < 0) break;
    place.store(copy);
  }
  close(file);
}

void ReleaseReserve() {
  int released = 0;
  for (std::atomic<int>& place : reserve) {
    const int descriptor = place.exchange(0);
    if (descriptor > 0 && IsOurs(descriptor)) close(descriptor);
    if (descriptor > 0 && ++released == kDescriptors / 2) return;
  }
}

}  // namespace temvar::posix
