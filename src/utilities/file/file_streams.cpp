// Streams, and files read, written or made as a whole.
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "platform/win32.h"
#include "utilities/file/binary_data_impl.h"
#include "utilities/file/owned_handles.h"
#include "utilities/file/system_path.h"
#include "utilities/file/utility_file_impl.h"
#include "utilities/string/text.h"

namespace temvar {
namespace {

// The position of a stream's end, or -1. The stream is positioned there afterwards.
int64_t SeekToEnd(FILE* stream) {
  return _fseeki64(stream, 0, SEEK_END) == 0 ? _ftelli64(stream) : -1;
}

// Appends the rest of `stream` to `bytes`. False for an error, or if it gets longer than a
// record can hold.
bool ReadToEnd(FILE* stream, std::string& bytes) {
  // Small blocks cost little: the caller has reserved the size, and the stream has its own buffer.
  char block[512];
  while (std::feof(stream) == 0) {
    bytes.append(block, std::fread(block, 1, sizeof(block), stream));
    if (std::ferror(stream) != 0 || bytes.size() > MaxBinaryDataSize()) return false;
  }
  return true;
}

}  // namespace

FILE* TMVUtilityFileImpl::OpenFile(const char* path, const char* mode) {
  const WideText wideMode = ToWide(mode);
  // The runtime may end a process that asks for no mode at all.
  if (*wideMode == TMV_WIDE('\0')) return nullptr;
  return Opened(_wfopen(SystemPath(path).get(), wideMode.get()));
}

int64_t TMVUtilityFileImpl::FileSize(const char* path) {
  const Stream stream(OpenFile(path, "rb"));
  // The same as for an empty file; PathExists distinguishes the two.
  if (stream == nullptr) return 0;
  const int64_t size = SeekToEnd(stream.get());
  return size < 0 ? 0 : size;
}

bool TMVUtilityFileImpl::ReadWholeFile(BinaryDataResult* result, const char* path) {
  const Stream stream(OpenFile(path, "rb"));
  if (stream == nullptr) return false;
  const int64_t size = SeekToEnd(stream.get());
  if (size > static_cast<int64_t>(MaxBinaryDataSize())) return false;
  // Also after a failure, which can leave a file at its end: that would read as an empty one. Pipes
  // have no positions and are read as they come.
  const bool isAtStart = _fseeki64(stream.get(), 0, SEEK_SET) == 0;
  if (size >= 0 && !isAtStart) return false;
  auto bytes = std::make_unique<std::string>();
  if (size > 0) bytes->reserve(static_cast<size_t>(size));
  if (!ReadToEnd(stream.get(), *bytes)) return false;
  FillBinaryData(result, std::move(bytes));
  return true;
}

bool TMVUtilityFileImpl::WriteWholeFile(const void* data, uint64_t size, const char* path) {
  const Stream stream(OpenFile(path, "wb"));
  if (stream == nullptr) return false;
  // Without a buffer the bytes go straight to the file, and a full disk shows in the count.
  std::setvbuf(stream.get(), nullptr, _IONBF, 0);
  // One write takes 32 bits of size. A larger size writes its low part and returns false, since the
  // count is compared with all of it: documented, odd as it looks.
  const size_t low = static_cast<uint32_t>(size);
  const size_t written = data == nullptr ? 0 : std::fwrite(data, 1, low, stream.get());
  return written == size;
}

bool TMVUtilityFileImpl::CreateFileOfSize(const char* path, uint64_t size) {
  const Stream stream(OpenFile(path, "wb"));
  if (stream == nullptr) return false;
  if (size > static_cast<uint64_t>(std::numeric_limits<int64_t>::max())) return false;
  // The system fills what it adds with zeros.
  return _chsize_s(_fileno(stream.get()), static_cast<int64_t>(size)) == 0;
}

}  // namespace temvar
