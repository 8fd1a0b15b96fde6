// Lists the input as an archive and reads its entries, without unpacking them to files. An entry
// that reads well must come out of ExtractEntry the same, and no name may lead outside.
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include "archives/archive_reader.h"
#include "archives/entry_name.h"
#include "fuzz/memory_folder.h"
#include "temvar/utility_unzip.h"

namespace {

using fuzz::Require;

void CheckPlace(const std::string& name) {
  const temvar::EntryPlace place = temvar::PlaceOfEntry(name);
  if (place.kind != temvar::EntryPlace::Kind::kInside) return;
  const std::string_view path = place.path;
  Require(path.size() <= name.size() + 1 && path.find('\0') == path.npos);
  for (size_t start = 0, end = 0; start < path.size(); start = end + 1) {
    end = std::min(path.find_first_of("/\\", start), path.size());
    const std::string_view part = path.substr(start, end - start);
    Require(!part.empty() && part != "." && part != "..");
  }
}

// The contents of the current entry, nothing if it is damaged.
std::optional<std::string> Contents(unzFile archive, const temvar::EntryInfo& entry) {
  if (temvar::OpenEntry(archive, entry) != UNZ_OK) return {};
  static char block[temvar::kReadSize];
  std::string contents;
  int count = 0;
  while ((count = unzReadCurrentFile(archive, block, sizeof(block))) > 0) {
    contents.append(block, static_cast<size_t>(count));
  }
  if (temvar::CloseEntry(archive, entry, contents.size()) != UNZ_OK || count < 0) return {};
  return contents;
}

// ExtractEntry takes the first entry of a name, which is a text below 256 bytes.
void CompareWithExtractEntry(const std::string& path, const std::string& name,
                             const std::optional<std::string>& contents) {
  if (name.size() >= 256 || name.find('\0') != name.npos) return;
  BinaryDataResult result = {};
  const bool isFound = TmvUtilityUnzip()->ExtractEntry(&result, path.c_str(), name.c_str());
  if (contents) Require(isFound && *contents == std::string_view(result.Data, result.Size));
  if (isFound) Require(result.Data[result.Size] == '\0');
  FreeBinayDataResult(&result);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  std::cout.rdbuf(nullptr);
  std::cerr.rdbuf(nullptr);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const fuzz::MemoryFolder folder;
  static const std::string path = folder.Archive();
  folder.PutArchive(data, size);
  std::optional<temvar::EntryInfo> first;
  std::optional<std::string> firstContents;
  {
    const temvar::UnzipHandle archive(TmvUtilityUnzip()->OpenArchive(path.c_str()));
    if (archive == nullptr) return 0;
    int result = unzGoToFirstFile(archive.get());
    for (int count = 0; result == UNZ_OK && count < 100; ++count) {
      temvar::EntryInfo entry;
      if (temvar::ReadEntryInfo(archive.get(), &entry) != UNZ_OK) break;
      CheckPlace(entry.name);
      const std::optional<std::string> contents = Contents(archive.get(), entry);
      if (!first) {
        first = entry;
        firstContents = contents;
      }
      result = unzGoToNextFile(archive.get());
    }
  }
  // It opens the archive once more, so not for each input.
  if (first && size % 4 == 0) CompareWithExtractEntry(path, first->name, firstContents);
  return 0;
}
