// Compression from memory to memory with zlib; nothing is kept between calls.
#ifndef TEMVAR_ARCHIVES_MEMORY_COMPRESSION_H_
#define TEMVAR_ARCHIVES_MEMORY_COMPRESSION_H_

#include <cstdint>

#include "temvar/binary_data.h"

namespace temvar {

// The operations of TMVUtilityZip and TMVUtilityUnzip of the same names.
bool DeflateBytes(BinaryDataResult* result, const void* data, uint32_t size, int32_t level);
bool InflateBytes(BinaryDataResult* result, const void* data, uint32_t size);
int32_t GunzipBytes(const void* data, uint32_t size, void* output, uint32_t* capacity);

}  // namespace temvar

#endif  // TEMVAR_ARCHIVES_MEMORY_COMPRESSION_H_
