#ifndef TEMVAR_UTILITIES_STRING_UTILITY_STRING_IMPL_H_
#define TEMVAR_UTILITIES_STRING_UTILITY_STRING_IMPL_H_

#include "temvar/utility_string.h"

namespace temvar {

// The order of the operations is that of the interface and part of the binary contract. They are
// defined by subject in string_convert.cpp, string_format.cpp, string_numbers.cpp,
// string_patterns.cpp, string_sanitize.cpp and digest.cpp, the rest in utility_string_impl.cpp. The
// class has no data: its one instance is laid out statically and outlives every caller.
class TMVUtilityStringImpl final : public TMVUtilityString {
 public:
  TmvWideChar* DupWideString(const TmvWideChar* text) override;
  TmvWideChar* Utf8ToWide(const char* text) override;
  char* WideToAnsi(const TmvWideChar* text) override;
  char* WideToUtf8(const TmvWideChar* text) override;
  char* Utf8ToAnsi(const char* text) override;
  char* FormatString(const char* format, ...) override TMV_PRINTF_LIKE(2, 3);
  TmvWideChar* FormatWideString(const TmvWideChar* format, ...) override;
  int32_t CompareVersion(const char* left, const char* right) override;
  bool IsNullOrEmpty(const char* text) override;
  const char* SafeString(const char* text) override;
  bool IsEmailAddress(const char* text) override;
  bool IsBlankChar(int32_t character) override;
  char* DupString(const char* text) override;
  bool IsAllDigits(const char* text) override;
  char* RegexFirstMatch(const char* text, const char* pattern) override;
  uint64_t HexToUInt64(const char* text, uint64_t length) override;
  void FreeString(void* block) override;
  char* Md5OfFile(const char* path) override;
  char* Sha1OfString(const char* text) override;
  bool StartsWithDigit(const char* text) override;
  bool SanitizeUtf8(uint8_t* buffer, uint32_t size, uint8_t replacement) override;
  char* NewGuidString() override;
};

}  // namespace temvar

#endif  // TEMVAR_UTILITIES_STRING_UTILITY_STRING_IMPL_H_
