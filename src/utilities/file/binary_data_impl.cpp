#include "utilities/file/binary_data_impl.h"

#include <utility>

namespace temvar {

void FillBinaryData(BinaryDataResult* result, std::unique_ptr<std::string> bytes) {
  result->Data = bytes->data();
  result->Size = static_cast<uint32_t>(bytes->size());
  result->Reserved = 0;
  // Last, as nothing may fail once the record owns the bytes. `Data` stays valid: releasing the
  // pointer doesn't move the string.
  result->Owner = bytes.release();
}

}  // namespace temvar

void FreeBinayDataResult(BinaryDataResult* result) {
  // The record itself is the caller's and stays unchanged, so that its `Data` dangles from here on.
  // Deleting null is nothing, which is what a record without bytes needs.
  delete static_cast<std::string*>(result->Owner);
}
