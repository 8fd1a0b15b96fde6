#include "platform/posix/files/copy_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <utility>

#include "platform/posix/files/file_handle.h"

namespace temvar::posix {
namespace {

// A descriptor that closes itself and keeps errno.
class Descriptor {
 public:
  Descriptor(const char* path, int flags) : value_(OpenFile(path, flags, Sharing::kTogether)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    const int error = errno;
    if (value_ >= 0) close(value_);
    errno = error;
  }

  int get() const { return value_; }

  // False with errno if what was written is lost: file systems of a network, and those with a
  // quota, report that only here. An interrupted close has closed the file.
  bool Close() { return close(std::exchange(value_, -1)) == 0 || errno == EINTR; }

 private:
  int value_;
};

// Moves bytes from one file to the other with a buffer, for what the kernel can't copy by itself.
bool PumpBytes(int from, int to) {
  char buffer[64 * 1024];
  for (;;) {
    const ssize_t count = read(from, buffer, sizeof(buffer));
    if (count == 0) return true;
    if (count < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    for (ssize_t done = 0; done < count;) {
      const ssize_t written = write(to, buffer + done, static_cast<size_t>(count - done));
      if (written < 0 && errno != EINTR) return false;
      if (written > 0) done += written;
    }
  }
}

bool CopyBytes(int from, int to) {
  // Below the most that one call copies, which is 2 GiB less a page.
  constexpr size_t kChunk = size_t{1} << 30;
  ssize_t count;
  do {
    count = copy_file_range(from, nullptr, to, nullptr, kChunk, 0);
  } while (count > 0 || (count < 0 && errno == EINTR));
  // The end as the kernel sees it may be no end: files of /proc have no size. The pump goes on from
  // where the kernel stopped, and copes with a pair of file systems that the kernel can't serve.
  return PumpBytes(from, to);
}

// Copies contents, permissions and last-write time; errno on failure.
bool CopyOpenFiles(int from, const struct stat& info, int to) {
  // EINVAL: a pipe or a device, which has no length to cut.
  if (ftruncate(to, 0) != 0 && errno != EINVAL) return false;
  if (!CopyBytes(from, to)) return false;
  const timespec times[] = {{0, UTIME_OMIT}, info.st_mtim};
  // The bytes are what counts: some file systems know neither permissions nor times.
  (void)!fchmod(to, info.st_mode & 0777);
  (void)!futimens(to, times);
  return true;
}

}  // namespace

Copied CopyOneFile(const char* source, const char* destination, bool exclusive) {
  const Descriptor from(source, O_RDONLY);
  struct stat fromInfo;
  if (from.get() < 0 || fstat(from.get(), &fromInfo) != 0) return Copied::kNoSource;
  // Not emptied before it is known to be another file than the source.
  Descriptor to(destination, O_WRONLY | O_CREAT | (exclusive ? O_EXCL : 0));
  struct stat toInfo;
  if (to.get() < 0) return Copied::kNoDestination;
  // An exclusive file is this copy's own.
  if (fstat(to.get(), &toInfo) != 0) return exclusive ? Copied::kPart : Copied::kNoDestination;
  if (fromInfo.st_dev == toInfo.st_dev && fromInfo.st_ino == toInfo.st_ino) {
    return Copied::kOntoItself;
  }
  const bool isWhole = CopyOpenFiles(from.get(), fromInfo, to.get()) && to.Close();
  return isWhole ? Copied::kWhole : Copied::kPart;
}

}  // namespace temvar::posix
