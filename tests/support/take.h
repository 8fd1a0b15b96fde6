// Takes over text that the library hands out, and releases it as a host must.
#ifndef TESTS_SUPPORT_TAKE_H_
#define TESTS_SUPPORT_TAKE_H_

#include <temvar/utility_string.h>

#include <string>

namespace test {

// The text of a block, which is released. A null block reads as "<null>", which no operation
// returns.
inline std::string Take(char* block) {
  if (block == nullptr) return "<null>";
  std::string text(block);
  TmvUtilityString()->FreeString(block);
  return text;
}

inline std::basic_string<TmvWideChar> TakeWide(TmvWideChar* block) {
  std::basic_string<TmvWideChar> text(block);
  TmvUtilityString()->FreeString(block);
  return text;
}

}  // namespace test

#endif  // TESTS_SUPPORT_TAKE_H_
