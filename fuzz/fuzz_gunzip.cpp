// Unpacks the input as a gzip member into a buffer whose size is in its first two bytes, and
// compares result and bytes with the documented loop.
#include <cstdlib>
#include <vector>

#include "temvar/utility_unzip.h"
#include "tests/support/zlib_loops.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  const uint32_t room = static_cast<uint32_t>(data[0]) << 8 | data[1];
  // Blocks of exactly these sizes: a step past either end is a finding.
  const std::vector<uint8_t> input(data + 2, data + size);
  const auto length = static_cast<uint32_t>(input.size());
  std::vector<uint8_t> output(room, 0xAA);
  uint32_t capacity = room;
  const int32_t result =
      TmvUtilityUnzip()->GunzipBuffer(input.data(), length, output.data(), &capacity);
  std::vector<uint8_t> expected(room, 0xAA);
  uint32_t produced = room;
  const int32_t documented = test::GunzipByBytes(input.data(), length, expected.data(), &produced);
  if (result != documented || capacity != produced || output != expected) std::abort();
  return 0;
}
