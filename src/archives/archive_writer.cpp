#include <zip.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "archives/archive_files.h"
#include "archives/utility_zip_impl.h"
#include "platform/win32.h"
#include "temvar/utility_file.h"
#include "temvar/utility_string.h"
#include "utilities/file/owned_handles.h"
#include "utilities/file/system_path.h"
#include "utilities/string/text.h"

namespace temvar {
namespace {

constexpr size_t kWriteSize = 16384;
constexpr int kReadError = -1;

// Closes the archive if an exception gets in the way of closing it with a look at the result.
struct ZipCloser {
  void operator()(void* archive) const { zipClose(archive, nullptr); }
};
using ZipHandle = std::unique_ptr<void, ZipCloser>;

ZipHandle CreateArchive(const SystemPath& path, bool* writeFailed) {
  zlib_filefunc64_def files = ArchiveFiles(writeFailed);
  return ZipHandle(zipOpen2_64(path.get(), APPEND_STATUS_CREATE, nullptr, &files));
}

struct FileFacts {
  uLong dosDate = 0;      // Last-write time in local time; 0 for a file that isn't there.
  bool isDevice = false;  // A pipe or a device, whose reading may never end.
};

FileFacts FactsOf(const char* path) {
  WIN32_FIND_DATAW data;
  const FindHandle find(SystemPath(path).get(), &data);
  if (!find.IsOpen()) return {};
  FileFacts facts;
  facts.isDevice = (data.dwFileAttributes & FILE_ATTRIBUTE_DEVICE) != 0;
  FILETIME local;
  WORD date = 0;
  WORD time = 0;
  if (FileTimeToLocalFileTime(&data.ftLastWriteTime, &local) &&
      FileTimeToDosDateTime(&local, &date, &time)) {
    facts.dosDate = static_cast<uLong>(date) << 16 | time;
  }
  return facts;
}

std::string OwnName(const std::string& path) {
  size_t separator = path.rfind('\\');
  if (separator == std::string::npos) separator = path.rfind('/');
  return separator == std::string::npos ? path : path.substr(separator + 1);
}

// For a result of minizip. The entry is lost then, and a host must not take the archive for whole.
void ThrowIfLost(int result) {
  if (result == ZIP_INTERNALERROR || result == Z_MEM_ERROR) throw std::bad_alloc();
}

class Writer {
 public:
  Writer(zipFile archive, bool* writeFailed)
      : archive_(archive), writeFailed_(writeFailed), block_(kWriteSize) {}

  void Add(const std::string& path, const std::string& name);

 private:
  bool OpenEntry(uLong dosDate, const std::string& name);
  // 0, or the error that leaves the entry open, to be closed with what it holds.
  int CopyIn(const std::string& path, std::FILE* input);

  const zipFile archive_;
  bool* const writeFailed_;
  std::vector<char> block_;
};

void Writer::Add(const std::string& path, const std::string& name) {
  const FileFacts facts = FactsOf(path.c_str());
  if (!OpenEntry(facts.dosDate, name.empty() ? OwnName(path) : name)) return;
  const Stream input(facts.isDevice ? nullptr : TmvUtilityFile()->OpenFile(path.c_str(), "rb"));
  if (input == nullptr) {
    // The entry stays open and empty; minizip closes it with the next one, or with the archive.
    std::printf("error in opening %s for reading\n", path.c_str());
    return;
  }
  *writeFailed_ = false;
  if (CopyIn(path, input.get()) < 0) return;
  const int result = zipCloseFileInZip(archive_);
  ThrowIfLost(result);
  // minizip 1.1 forgets a failed write of packed bytes while it ends their entry.
  if (result != ZIP_OK || *writeFailed_) {
    std::printf("error in closing %s in the zipfile\n", path.c_str());
  }
}

bool Writer::OpenEntry(uLong dosDate, const std::string& name) {
  zip_fileinfo info = {};
  info.dosDate = dosDate;
  const NarrowText ansi(TmvUtilityString()->Utf8ToAnsi(name.c_str()));
  // The entry's record in the directory, and what zlib keeps of a stream at level 6.
  ExpectMemory(300'000 + name.size());
  const int result = zipOpenNewFileInZip(archive_, ansi.get(), &info, nullptr, 0, nullptr, 0,
                                         nullptr, Z_DEFLATED, Z_DEFAULT_COMPRESSION);
  if (result == ZIP_OK) return true;
  ThrowIfLost(result);
  std::printf("error in opening %s in zipfile\n", name.c_str());
  return false;
}

int Writer::CopyIn(const std::string& path, std::FILE* input) {
  int result = ZIP_OK;
  size_t count = 0;
  do {
    count = std::fread(block_.data(), 1, block_.size(), input);
    if (count < block_.size() && !std::feof(input)) {
      std::printf("error in reading %s\n", path.c_str());
      result = kReadError;
    }
    if (count == 0) break;
    const int written = zipWriteInFileInZip(archive_, block_.data(), static_cast<unsigned>(count));
    if (written < 0) {
      std::printf("error in writing %s in the zipfile\n", path.c_str());
      result = written;
    }
  } while (result == ZIP_OK);
  return result;
}

}  // namespace

bool TMVUtilityZipImpl::WriteArchive(const char* archivePath, const char* exclusions) {
  const SystemPath path(archivePath);
  bool writeFailed = false;
  ZipHandle archive = CreateArchive(path, &writeFailed);
  if (archive == nullptr) {
    std::printf("error opening %s\n", TmvUtilityString()->SafeString(archivePath));
    return false;
  }
  try {
    Writer writer(archive.get(), &writeFailed);
    for (const auto& [file, name] : entries_) {
      if (exclusions != nullptr && TmvUtilityFile()->ExtensionInList(file.c_str(), exclusions)) {
        continue;
      }
      writer.Add(file, name);
    }
  } catch (...) {
    // It would pass for a whole archive.
    archive.reset();
    DeleteFileW(path.get());
    throw;
  }
  if (zipClose(archive.release(), nullptr) != ZIP_OK) {
    std::printf("error in closing %s\n", archivePath);
    return false;
  }
  return true;
}

}  // namespace temvar
