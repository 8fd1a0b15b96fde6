// Unpacks the input as an archive: whole into a folder, where nothing may come to lie outside the
// destination, and entry by entry under names that the archive holds.
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>

#include "temvar/utility_unzip.h"

namespace {

namespace fs = std::filesystem;

// In memory; the folders above the destination are there for names that climb.
class Scratch {
 public:
  Scratch() : top_("/dev/shm/temvar-fuzz-" + std::to_string(getpid())), home_(top_ / "a/b") {
    fs::create_directories(home_);
  }
  ~Scratch() { fs::remove_all(top_); }

  std::string Archive() const { return home_ / "in.zip"; }
  std::string Destination() const { return home_ / "out"; }

  void PutArchive(const uint8_t* data, size_t size) const {
    std::ofstream file(Archive(), std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  }

  // Aborts if there is more than the archive and the destination.
  void CheckAndClear() const {
    fs::remove_all(Destination());
    fs::remove(Archive());
    if (!fs::is_empty(home_)) std::abort();
    for (const fs::path& folder : {top_, home_.parent_path()}) {
      if (std::distance(fs::directory_iterator(folder), {}) != 1) std::abort();
    }
  }

 private:
  const fs::path top_;
  const fs::path home_;
};

// Unpacks the entry whose name follows the first central header, if there is one.
std::string FirstName(std::string_view archive) {
  const size_t header = archive.find(std::string_view("PK\1\2", 4));
  if (header == archive.npos || archive.size() - header < 46) return "f";
  const auto length = static_cast<unsigned char>(archive[header + 28]);
  return std::string(archive.substr(header + 46, length)).c_str();
}

void ExtractEntry(const std::string& archive, const std::string& name) {
  BinaryDataResult result = {};
  if (!TmvUtilityUnzip()->ExtractEntry(&result, archive.c_str(), name.c_str())) return;
  if (result.Data[result.Size] != '\0') std::abort();
  FreeBinayDataResult(&result);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // The C++ library removes a deep tree with a handle open for each level.
  rlimit handles = {};
  getrlimit(RLIMIT_NOFILE, &handles);
  handles.rlim_cur = handles.rlim_max;
  setrlimit(RLIMIT_NOFILE, &handles);
  // The library's lines would drown those of the fuzzer.
  std::cout.rdbuf(nullptr);
  std::cerr.rdbuf(nullptr);
  return std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Scratch scratch;
  scratch.PutArchive(data, size);
  // Twice: what the first run leaves is in the way of the second.
  for (int i = 0; i < 2; ++i) {
    TmvUtilityUnzip()->ExtractArchive(scratch.Archive().c_str(), scratch.Destination().c_str());
  }
  ExtractEntry(scratch.Archive(), FirstName({reinterpret_cast<const char*>(data), size}));
  ExtractEntry(scratch.Archive(), "f");
  scratch.CheckAndClear();
  return 0;
}
