// Unpacks the input as zlib data and compares the bytes with the documented loop; what comes out is
// packed and must come back the same.
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "temvar/utility_unzip.h"
#include "temvar/utility_zip.h"
#include "tests/support/zlib_loops.h"

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
  // A block of exactly the input's size: a read past it is a finding.
  const std::vector<uint8_t> input(data, data + size);
  const auto length = static_cast<uint32_t>(size);
  std::string expected;
  std::string message;
  const int documented = test::InflateByBlocks(input.data(), length, &expected, &message);
  BinaryDataResult plain = {};
  const bool result = TmvUtilityUnzip()->InflateBuffer(&plain, input.data(), length);
  if (result != (documented == Z_STREAM_END)) std::abort();
  if (!result) return 0;
  if (expected != std::string_view(plain.Data, plain.Size)) std::abort();
  CheckRoundTrip(plain, static_cast<int32_t>(size % 11) - 1);
  FreeBinayDataResult(&plain);
  return 0;
}
