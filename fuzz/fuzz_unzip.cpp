// Unpacks the input as an archive into a folder. Nothing may come to lie outside the destination,
// and the archive itself stays as it is.
#include <cstdio>
#include <iostream>

#include "fuzz/memory_folder.h"
#include "temvar/utility_unzip.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // The library's lines would drown those of the fuzzer.
  std::cout.rdbuf(nullptr);
  std::cerr.rdbuf(nullptr);
  return std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const fuzz::MemoryFolder folder;
  static const std::string archive = folder.Archive();
  static const std::string destination = folder.Destination();
  folder.PutArchive(data, size);
  // Twice: what the first run leaves is in the way of the second.
  for (int i = 0; i < 2; ++i) {
    TmvUtilityUnzip()->ExtractArchive(archive.c_str(), destination.c_str());
  }
  folder.CheckAndClear(data, size);
  return 0;
}
