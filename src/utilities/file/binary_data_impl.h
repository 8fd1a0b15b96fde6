// How the library hands bytes to its hosts.
#ifndef TEMVAR_UTILITIES_FILE_BINARY_DATA_IMPL_H_
#define TEMVAR_UTILITIES_FILE_BINARY_DATA_IMPL_H_

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "temvar/binary_data.h"

namespace temvar {

// The most bytes that a record can hold: as many as its size can count, and as a string can own,
// which in a 32-bit process is less. A function, as not every compiler can make a constant of it.
inline size_t MaxBinaryDataSize() {
  return std::min<size_t>(std::numeric_limits<uint32_t>::max(), std::string().max_size());
}

// Passes `bytes`, of which there are no more than MaxBinaryDataSize(), to `*result`, where
// FreeBinayDataResult finds them again.
void FillBinaryData(BinaryDataResult* result, std::unique_ptr<std::string> bytes);

}  // namespace temvar

#endif  // TEMVAR_UTILITIES_FILE_BINARY_DATA_IMPL_H_
