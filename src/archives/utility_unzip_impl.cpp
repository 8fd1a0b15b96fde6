#include "archives/utility_unzip_impl.h"

#include <cstdint>
#include <iostream>
#include <memory>
#include <string>

#include "archives/archive_reader.h"
#include "temvar/utility_string.h"
#include "utilities/file/binary_data_impl.h"

namespace temvar {
namespace {

void PrintError(int code, const char* archive, const char* where) {
  // The code as text: the host may have set the stream to another base.
  std::cerr << "Error " << std::to_string(code) << " with zipfile " << archive << " in " << where
            << std::endl;
}

// Appends the open entry's contents; minizip's result, or UNZ_INTERNALERROR once there is more than
// a BinaryDataResult can count. The size that the archive states may be a lie and isn't used.
int AppendEntry(unzFile archive, char* block, std::string* bytes) {
  for (;;) {
    const int count = ReadEntry(archive, block);
    if (count <= 0) return count;
    const auto size = static_cast<size_t>(count);
    if (size > MaxBinaryDataSize() - bytes->size()) return UNZ_INTERNALERROR;
    bytes->append(block, size);
  }
}

}  // namespace

void* TMVUtilityUnzipImpl::OpenArchive(const char* archive) { return OpenForReading(archive); }

bool TMVUtilityUnzipImpl::ExtractEntry(BinaryDataResult* result, const char* archivePath,
                                       const char* entryName) {
  const char* const path = TmvUtilityString()->SafeString(archivePath);
  const char* const entry = TmvUtilityString()->SafeString(entryName);
  const UnzipHandle archive(TmvUtilityUnzip()->OpenArchive(path));
  if (archive == nullptr) {
    std::cerr << "Cannot open " << path << std::endl;
    return false;
  }
  constexpr int kCaseSensitive = 1;
  if (unzLocateFile(archive.get(), entry, kCaseSensitive) != UNZ_OK) {
    std::cerr << "File " << entry << " not found in " << path << std::endl;
    return false;
  }
  EntryInfo info;
  int code = ReadEntryInfo(archive.get(), &info);
  if (code != UNZ_OK) {
    PrintError(code, path, "unzGetCurrentFileInfo.");
    return false;
  }
  const auto block = NewReadBlock();
  if (block == nullptr) {
    std::cerr << "Error allocating memory for read buffer" << std::endl;
    return false;
  }
  code = OpenEntry(archive.get(), info);
  if (code != UNZ_OK) {
    PrintError(code, path, "unzOpenCurrentFilePassword.");
    return false;
  }
  auto bytes = std::make_unique<std::string>();
  std::cout << "Extracting: " << info.name.c_str() << " from " << path << std::endl;
  code = AppendEntry(archive.get(), block.get(), bytes.get());
  if (code < 0) {
    PrintError(code, path, "unzReadCurrentFile");
    bytes->clear();
    code = unzCloseCurrentFile(archive.get());
  } else {
    code = CloseEntry(archive.get(), info, bytes->size());
  }
  if (code != UNZ_OK) {
    PrintError(code, path, "unzCloseCurrentFile");
    bytes->clear();
  }
  FillBinaryData(result, std::move(bytes));
  return true;
}

namespace {

constinit TMVUtilityUnzipImpl unzip;

}  // namespace
}  // namespace temvar

TMVUtilityUnzip* TmvUtilityUnzip() { return &temvar::unzip; }
