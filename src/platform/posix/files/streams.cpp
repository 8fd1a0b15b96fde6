#include "platform/posix/files/streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/posix/errors.h"
#include "platform/posix/files/file_handle.h"
#include "platform/posix/files/narrow_path.h"

namespace {

// The mode of a stream, read from wide text.
struct StreamMode {
  bool valid = false;
  int flags = 0;
  char narrow[4] = {};  // What fdopen takes: the letter, '+', 'b'.
};

StreamMode ParseMode(LPCWSTR wide) {
  StreamMode mode;
  if (wide == nullptr) return mode;
  switch (*wide) {
    case u'r':
      mode.flags = O_RDONLY;
      break;
    case u'w':
      mode.flags = O_WRONLY | O_CREAT | O_TRUNC;
      break;
    case u'a':
      mode.flags = O_WRONLY | O_CREAT | O_APPEND;
      break;
    default:
      return mode;
  }
  size_t length = 0;
  mode.narrow[length++] = static_cast<char>(*wide);
  while (*++wide != u'\0') {
    switch (*wide) {
      case u'+':
        if ((mode.flags & O_ACCMODE) == O_RDWR) return mode;
        mode.flags = (mode.flags & ~O_ACCMODE) | O_RDWR;
        mode.narrow[length++] = '+';
        break;
      case u'x':
        mode.flags |= O_EXCL;
        break;
      case u'b':
      case u't':
      case u'N':  // Not inherited; no stream is.
        break;
      default:
        return mode;
    }
  }
  mode.valid = true;
  return mode;
}

}  // namespace

FILE* _wfopen(LPCWSTR path, LPCWSTR mode) {
  const StreamMode parsed = ParseMode(mode);
  if (!parsed.valid) {
    errno = EINVAL;
    return nullptr;
  }
  const temvar::posix::NarrowPath narrow(path);
  if (!narrow.ok()) return nullptr;
  const int descriptor =
      temvar::posix::OpenFile(narrow.c_str(), parsed.flags, temvar::posix::Sharing::kTogether);
  if (descriptor < 0) {
    temvar::posix::SetLastErrorForPath(narrow);
    // The runtime of Windows has this one number for both.
    if (errno == EISDIR || errno == EWOULDBLOCK) errno = EACCES;
    return nullptr;
  }
  FILE* const stream = fdopen(descriptor, parsed.narrow);
  if (stream == nullptr) close(descriptor);
  return stream;
}

FILE* _wfsopen(LPCWSTR path, LPCWSTR mode, int /*share*/) { return _wfopen(path, mode); }

int _waccess(LPCWSTR path, int mode) {
  const temvar::posix::NarrowPath narrow(path);
  // -1 with errno 2 for an empty path: it names nothing, so callers see a missing file.
  if (!narrow.ok()) return -1;
  static_assert(R_OK == 4 && W_OK == 2 && F_OK == 0);
  // Windows knows no right to execute; its bit in the mode is ignored.
  return access(narrow.c_str(), mode & (R_OK | W_OK));
}

int _fseeki64(FILE* stream, int64_t offset, int origin) { return fseeko(stream, offset, origin); }

int64_t _ftelli64(FILE* stream) { return ftello(stream); }

int _fileno(FILE* stream) { return fileno(stream); }

int _chsize_s(int descriptor, int64_t size) {
  if (size < 0) return EINVAL;
  return ftruncate(descriptor, size) == 0 ? 0 : errno;
}
