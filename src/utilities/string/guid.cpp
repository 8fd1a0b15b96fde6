#include <cinttypes>
#include <cstdio>

#include "platform/win32.h"
#include "utilities/string/text.h"
#include "utilities/string/utility_string_impl.h"

namespace temvar {

char* TMVUtilityStringImpl::NewGuidString() {
  constexpr size_t kBlockSize = 64;
  GUID guid;
  if (CoCreateGuid(&guid) != S_OK) return NewBlock<char>(1);
  char* const text = NewBlock<char>(kBlockSize);
  const uint32_t first = guid.Data1;
  // The third group is in lower case, unlike the others: readers of the texts know it so.
  std::snprintf(text, kBlockSize, "%08" PRIX32 "-%04X-%04x-%02X%02X-%02X%02X%02X%02X%02X%02X",
                first, guid.Data2, guid.Data3, guid.Data4[0], guid.Data4[1], guid.Data4[2],
                guid.Data4[3], guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
  return text;
}

}  // namespace temvar
