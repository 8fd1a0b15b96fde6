// Unpacks the input as zlib data; what comes out is packed and must come back the same.
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <vector>

#include "temvar/utility_unzip.h"
#include "temvar/utility_zip.h"

namespace {

void CheckRoundTrip(const BinaryDataResult& plain, int32_t level) {
  TMVUtilityZip* const zip = CreateTmvUtilityZip();
  BinaryDataResult packed = {};
  if (zip->DeflateBuffer(&packed, plain.Data, plain.Size, level)) {
    BinaryDataResult back = {};
    if (!TmvUtilityUnzip()->InflateBuffer(&back, packed.Data, packed.Size)) std::abort();
    if (back.Size != plain.Size || std::memcmp(back.Data, plain.Data, back.Size) != 0) std::abort();
    FreeBinayDataResult(&back);
    FreeBinayDataResult(&packed);
  } else if (plain.Size != 0) {
    std::abort();
  }
  DestroyTmvUtilityZip(zip);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  std::cout.rdbuf(nullptr);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // A block of exactly the input's size: a read behind it is a finding.
  const std::vector<uint8_t> input(data, data + size);
  BinaryDataResult plain = {};
  if (!TmvUtilityUnzip()->InflateBuffer(&plain, input.data(), static_cast<uint32_t>(size)))
    return 0;
  CheckRoundTrip(plain, static_cast<int32_t>(size % 11) - 1);
  FreeBinayDataResult(&plain);
  return 0;
}
