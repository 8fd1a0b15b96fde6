#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "archives/archive_reader.h"
#include "archives/destination.h"
#include "archives/entry_name.h"
#include "archives/utility_unzip_impl.h"
#include "platform/wide_errors.h"
#include "platform/win32.h"
#include "temvar/utility_string.h"
#include "utilities/file/owned_handles.h"
#include "utilities/file/system_path.h"
#include "utilities/string/text.h"

namespace temvar {
namespace {

constexpr int kOutputError = -1;
// A damaged entry leaves on disk what came before the damage, in whole blocks of this size.
constexpr unsigned kDamageBlock = 8192;
static_assert(kReadSize % kDamageBlock == 0);

void PrintZipError(int code, const char* where) {
  std::printf("error %d with zipfile in %s\n", code, where);
}

// Sets the file's times to its entry's, as creation and last-write time. What fails stays as it is.
void StampFile(const std::string& path, uLong dosDate) {
  FILETIME local;
  FILETIME stamp;
  if (!DosDateTimeToFileTime(static_cast<WORD>(dosDate >> 16), static_cast<WORD>(dosDate),
                             &local) ||
      !LocalFileTimeToFileTime(&local, &stamp)) {
    return;
  }
  const FileHandle file(CreateFileW(SystemPath(path.c_str()).get(), GENERIC_READ | GENERIC_WRITE, 0,
                                    nullptr, OPEN_EXISTING, 0, nullptr));
  if (file.IsOpen()) SetFileTime(file.get(), &stamp, nullptr, &stamp);
}

// One run of ExtractArchive over an open archive.
class Extraction {
 public:
  Extraction(unzFile archive, std::string prefix, const char* archivePath)
      : archive_(archive), prefix_(prefix), destination_(std::move(prefix), archivePath) {}

  bool ExtractAll();

 private:
  // These return 0 or the error that ends the run.
  int ExtractCurrent();
  int ExtractFolder(const EntryPlace& place, const std::string& shown);
  int ExtractFile(const EntryInfo& entry, const EntryPlace& place, const std::string& shown);
  // `*total` becomes the number of bytes that the entry yielded.
  int CopyOut(const EntryInfo& entry, Stream output, uint64_t* total);
  // After a failed read, with `done` bytes written: writes the complete bytes in small blocks.
  void CopyUpToDamage(const EntryInfo& entry, std::FILE* output, uint64_t done);

  const unzFile archive_;
  const std::string prefix_;
  Destination destination_;
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
      PrintZipError(result, "unzGoToNextFile");
      return false;
    }
  }
  return true;
}

int Extraction::ExtractCurrent() {
  EntryInfo entry;
  const int result = ReadEntryInfo(archive_, &entry);
  if (result != UNZ_OK) {
    PrintZipError(result, "unzGetCurrentFileInfo");
    return result;
  }
  if (block_ == nullptr) {
    std::printf("Error allocating memory\n");
    return UNZ_INTERNALERROR;
  }
  const std::string shown = prefix_ + entry.name;
  const EntryPlace place = PlaceOfEntry(entry.name);
  const bool isFolder = LastComponent(entry.name) == entry.name.size();
  if (isFolder) return ExtractFolder(place, shown);
  if (place.kind != EntryPlace::Kind::kOutside) return ExtractFile(entry, place, shown);
  std::printf(" extracting: %s\nerror opening %s\n", shown.c_str(), shown.c_str());
  return UNZ_BADZIPFILE;
}

int Extraction::ExtractFolder(const EntryPlace& place, const std::string& shown) {
  std::printf("creating directory: %s\n", shown.c_str());
  const bool isInside = place.kind == EntryPlace::Kind::kInside;
  if (isInside && destination_.MakeFolder(place.path)) return UNZ_OK;
  std::printf("error opening %s\n", shown.c_str());
  return place.kind == EntryPlace::Kind::kOutside ? UNZ_BADZIPFILE : UNZ_OK;
}

int Extraction::ExtractFile(const EntryInfo& entry, const EntryPlace& place,
                            const std::string& shown) {
  int result = OpenEntry(archive_, entry);
  if (result != UNZ_OK) {
    PrintZipError(result, "unzOpenCurrentFilePassword");
    unzCloseCurrentFile(archive_);
    return result;
  }
  const bool isInside = place.kind == EntryPlace::Kind::kInside;
  Stream output = isInside ? destination_.Open(place.path) : nullptr;
  if (output == nullptr) {
    // Costs this entry alone.
    std::printf("error opening %s\n", shown.c_str());
    result = unzCloseCurrentFile(archive_);
  } else {
    std::printf(" extracting: %s\n", shown.c_str());
    uint64_t count = 0;
    result = CopyOut(entry, std::move(output), &count);
    if (result != UNZ_OK) {
      unzCloseCurrentFile(archive_);
      return result;
    }
    StampFile(destination_.FullPath(place.path), entry.dosDate);
    // Only here is the CRC known: a file with a wrong one is on disk already.
    result = CloseEntry(archive_, entry, count);
  }
  if (result != UNZ_OK) PrintZipError(result, "unzCloseCurrentFile");
  return result;
}

int Extraction::CopyOut(const EntryInfo& entry, Stream output, uint64_t* total) {
  // The blocks are larger than a stream's own buffer.
  std::setvbuf(output.get(), nullptr, _IONBF, 0);
  bool isWritten = true;
  int count = 0;
  while (isWritten && (count = ReadEntry(archive_, block_.get())) > 0) {
    *total += static_cast<uint64_t>(count);
    isWritten = std::fwrite(block_.get(), static_cast<size_t>(count), 1, output.get()) == 1;
  }
  if (count < 0) {
    PrintZipError(count, "unzReadCurrentFile");
    CopyUpToDamage(entry, output.get(), *total);
  }
  // The last bytes leave for the disk, which may be full, only here.
  if (std::fclose(output.release()) != 0) isWritten = false;
  if (count < 0) return count;
  if (isWritten) return UNZ_OK;
  std::printf("error in writing extracted file\n");
  return kOutputError;
}

void Extraction::CopyUpToDamage(const EntryInfo& entry, std::FILE* output, uint64_t done) {
  unzCloseCurrentFile(archive_);
  if (OpenEntry(archive_, entry) != UNZ_OK) return;
  uint64_t read = 0;
  int count = 0;
  while ((count = ReadEntry(archive_, block_.get(), kDamageBlock)) > 0) {
    read += static_cast<uint64_t>(count);
    if (read > done) std::fwrite(block_.get(), static_cast<size_t>(count), 1, output);
  }
}

}  // namespace

bool TMVUtilityUnzipImpl::ExtractArchive(const char* archivePath, const char* destination) {
  const char* const path = TmvUtilityString()->SafeString(archivePath);
  // An empty text would mean the root of the current drive. Text that is no UTF-8 is empty too.
  std::basic_string<TmvWideChar> prefix = ToWide(destination).get();
  if (prefix.empty()) return false;
  if (prefix.back() != TMV_WIDE('\\')) prefix += TMV_WIDE('\\');
  // Through the interface, like a host: what replaces an operation there replaces it here too.
  const UnzipHandle archive(TmvUtilityUnzip()->OpenArchive(path));
  if (archive == nullptr) {
    WriteWideErrorLine((std::string("Cannot open ") + path).c_str());
    return false;
  }
  return Extraction(archive.get(), ToUtf8(prefix.c_str()).get(), path).ExtractAll();
}

}  // namespace temvar
