#ifndef TEMVAR_BINARY_DATA_H_
#define TEMVAR_BINARY_DATA_H_

#include <cstdint>

#include "temvar/export.h"

// Bytes that an operation hands out: whole files, archive entries, compressed buffers.
// The record is the caller's; the bytes belong to Owner and go with FreeBinayDataResult.
struct BinaryDataResult {
  void* Owner;    // The library's byte string that holds the bytes; opaque, null if there is none.
  char* Data;     // First byte, followed by a NUL that Size doesn't count. Lives as long as Owner.
  uint32_t Size;  // Number of bytes.
  uint32_t Reserved;  // Always 0.
};

// Releases the bytes that `result` owns; a record with a null Owner is passed over. The record
// itself is left as it is, so Data dangles afterwards: call this once. `result` must not be null.
TMV_API void FreeBinayDataResult(BinaryDataResult* result);

#endif  // TEMVAR_BINARY_DATA_H_
