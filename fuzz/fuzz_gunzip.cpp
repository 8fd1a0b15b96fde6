// Unpacks the input as a gzip member into a buffer whose size its first two bytes tell.
#include <cstdlib>
#include <vector>

#include "temvar/utility_unzip.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  const uint32_t room = static_cast<uint32_t>(data[0]) << 8 | data[1];
  // Blocks of exactly these sizes: a step behind either is a finding.
  const std::vector<uint8_t> input(data + 2, data + size);
  std::vector<uint8_t> output(room);
  uint32_t capacity = room;
  const int32_t result = TmvUtilityUnzip()->GunzipBuffer(
      input.data(), static_cast<uint32_t>(input.size()), output.data(), &capacity);
  const bool is_regular = result == 0 ? capacity <= room : result == -1 && capacity == room;
  if (!is_regular) std::abort();
  return 0;
}
