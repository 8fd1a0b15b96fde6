#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "archives/archive_reader.h"
#include "archives/entry_directories.h"
#include "archives/entry_name.h"
#include "archives/utility_unzip_impl.h"
#include "platform/wide_errors.h"
#include "platform/win32.h"
#include "temvar/utility_string.h"
#include "utilities/file/owned_handles.h"
#include "utilities/file/stream.h"
#include "utilities/file/system_path.h"
#include "utilities/string/text.h"

namespace temvar {
namespace {

constexpr int kOutputError = -1;

void TellZipError(int code, const char* where) {
  std::printf("error %d with zipfile in %s\n", code, where);
}

// Gives the file its entry's time as creation and last-write time. What fails is left as it is.
void StampFile(const TmvWideChar* path, uLong dosDate) {
  const FileHandle file(
      CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  if (!file.IsOpen()) return;
  FILETIME creation;
  FILETIME access;
  FILETIME write;
  FILETIME local;
  FILETIME stamp;
  if (GetFileTime(file.get(), &creation, &access, &write) &&
      DosDateTimeToFileTime(static_cast<WORD>(dosDate >> 16), static_cast<WORD>(dosDate), &local) &&
      LocalFileTimeToFileTime(&local, &stamp)) {
    SetFileTime(file.get(), &stamp, &access, &stamp);
  }
}

// One run of ExtractArchive over an open archive.
class Extraction {
 public:
  // `prefix` is the destination with its separator, which every entry's name is appended to.
  Extraction(unzFile archive, std::string prefix)
      : archive_(archive), prefix_(std::move(prefix)), links_(prefix_) {}

  bool ExtractAll();

 private:
  // These give 0 or the error that ends the run.
  int ExtractCurrent();
  int Refuse(const std::string& name);
  int ExtractFile(const EntryInfo& entry, const std::string& path);
  // `*total` becomes the number of bytes that the entry gave.
  int CopyOut(Stream output, uint64_t* total);

  Stream OpenOutput(const TmvWideChar* wide, const std::string& path);

  const unzFile archive_;
  const std::string prefix_;
  LinkGuard links_;
  const std::unique_ptr<char[]> block_ = NewReadBlock();
};

bool Extraction::ExtractAll() {
  unz_global_info64 archiveInfo;
  unzGetGlobalInfo64(archive_, &archiveInfo);
  for (ZPOS64_T i = 0; i < archiveInfo.number_entry; ++i) {
    if (ExtractCurrent() != UNZ_OK) return false;
    if (i + 1 == archiveInfo.number_entry) break;
    const int result = unzGoToNextFile(archive_);
    if (result != UNZ_OK) {
      TellZipError(result, "unzGoToNextFile");
      return false;
    }
  }
  return true;
}

int Extraction::ExtractCurrent() {
  EntryInfo entry;
  const int result = ReadEntryInfo(archive_, &entry);
  if (result != UNZ_OK) {
    TellZipError(result, "unzGetCurrentFileInfo");
    return result;
  }
  if (block_ == nullptr) {
    std::printf("Error allocating memory\n");
    return UNZ_INTERNALERROR;
  }
  const std::string path = prefix_ + entry.name;
  const bool isDirectory = LastComponent(path) == path.size();
  const bool isInner = IsInnerName(entry.name) && links_.IsFreeOfLinks(entry.name);
  if (isDirectory) {
    std::printf("creating directory: %s\n", path.c_str());
    if (!isInner) return Refuse(path);
    MakeDirectory(path);
    return UNZ_OK;
  }
  if (!isInner) {
    std::printf(" extracting: %s\n", path.c_str());
    return Refuse(path);
  }
  return ExtractFile(entry, path);
}

int Extraction::Refuse(const std::string& path) {
  std::printf("error opening %s\n", path.c_str());
  return UNZ_BADZIPFILE;
}

Stream Extraction::OpenOutput(const TmvWideChar* wide, const std::string& path) {
  std::FILE* output = _wfopen(wide, TMV_WIDE("wb"));
  const size_t last = LastComponent(path);
  if (output == nullptr && last != 0) {
    MakeParents(path.substr(0, last - 1));
    output = _wfopen(wide, TMV_WIDE("wb"));
  }
  return Stream(output);
}

int Extraction::ExtractFile(const EntryInfo& entry, const std::string& path) {
  const SystemPath wide(path.c_str());
  int result = OpenEntry(archive_, entry);
  if (result != UNZ_OK) {
    TellZipError(result, "unzOpenCurrentFilePassword");
    unzCloseCurrentFile(archive_);
    return result;
  }
  Stream output = OpenOutput(wide.get(), path);
  if (output == nullptr) {
    std::printf("error opening %s\n", path.c_str());
    result = unzCloseCurrentFile(archive_);
  } else {
    std::printf(" extracting: %s\n", path.c_str());
    uint64_t count = 0;
    result = CopyOut(std::move(output), &count);
    if (result != UNZ_OK) {
      unzCloseCurrentFile(archive_);
      return result;
    }
    StampFile(wide.get(), entry.dosDate);
    result = CloseEntry(archive_, entry, count);
  }
  if (result != UNZ_OK) TellZipError(result, "unzCloseCurrentFile");
  return result;
}

int Extraction::CopyOut(Stream output, uint64_t* total) {
  bool isWritten = true;
  int count = 0;
  while (isWritten && (count = unzReadCurrentFile(archive_, block_.get(), kReadSize)) > 0) {
    *total += static_cast<uint64_t>(count);
    isWritten = std::fwrite(block_.get(), static_cast<size_t>(count), 1, output.get()) == 1;
  }
  if (count < 0) TellZipError(count, "unzReadCurrentFile");
  // The last bytes leave for the disk, which may be full, only here.
  if (std::fclose(output.release()) != 0) isWritten = false;
  if (count < 0) return count;
  if (isWritten) return UNZ_OK;
  std::printf("error in writing extracted file\n");
  return kOutputError;
}

}  // namespace

bool TMVUtilityUnzipImpl::ExtractArchive(const char* archivePath, const char* destination) {
  const char* const path = TmvUtilityString()->SafeString(archivePath);
  // An empty text would stand for the root of the current drive. Text that is no UTF-8 is empty
  // too.
  std::basic_string<TmvWideChar> prefix = ToWide(destination).get();
  if (prefix.empty()) return false;
  if (prefix.back() != TMV_WIDE('\\')) prefix += TMV_WIDE('\\');
  const UnzipHandle archive(TmvUtilityUnzip()->OpenArchive(path));
  if (archive == nullptr) {
    WriteWideErrorLine((std::string("Cannot open ") + path).c_str());
    return false;
  }
  std::string narrowPrefix = ToUtf8(prefix.c_str()).get();
  CreateDirectoryW(SystemPath(narrowPrefix.c_str()).get(), nullptr);
  return Extraction(archive.get(), std::move(narrowPrefix)).ExtractAll();
}

}  // namespace temvar
