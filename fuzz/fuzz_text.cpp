// The byte repair and the conversions on any bytes. What must hold for each input is checked, too:
// a repair is final, and text that converts comes back the same.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "temvar/utility_string.h"

namespace {

TMVUtilityString* const text = TmvUtilityString();

void Require(bool condition) {
  if (!condition) std::abort();
}

// In a block of just that size: a step beyond it is a finding.
void Repair(const uint8_t* data, size_t size) {
  const auto count = static_cast<uint32_t>(size);
  const std::unique_ptr<uint8_t[]> buffer(new uint8_t[size]);
  std::copy(data, data + size, buffer.get());
  Require(text->SanitizeUtf8(buffer.get(), count, '?'));
  const std::string once(buffer.get(), buffer.get() + size);
  Require(text->SanitizeUtf8(buffer.get(), count, '?'));
  Require(once == std::string(buffer.get(), buffer.get() + size));
}

void ConvertUtf8(const std::string& bytes) {
  TmvWideChar* const wide = text->Utf8ToWide(bytes.c_str());
  if (wide[0] == 0) Require(wide[1] == 0);
  char* const back = text->WideToUtf8(wide);
  Require(wide[0] == 0 || bytes.c_str() == std::string(back));
  text->FreeString(text->Utf8ToAnsi(bytes.c_str()));
  text->FreeString(back);
  text->FreeString(wide);
}

// Any units, unpaired surrogates among them, become UTF-8 that converts.
void ConvertUtf16(const uint8_t* data, size_t size) {
  std::basic_string<TmvWideChar> wide(size / sizeof(TmvWideChar), 0);
  std::memcpy(wide.data(), data, wide.size() * sizeof(TmvWideChar));
  char* const utf8 = text->WideToUtf8(wide.c_str());
  TmvWideChar* const back = text->Utf8ToWide(utf8);
  Require((back[0] == 0) == (utf8[0] == '\0'));
  char* const ansi = text->WideToAnsi(wide.c_str());
  Require(std::strlen(ansi) == std::basic_string<TmvWideChar>(wide.c_str()).size());
  text->FreeString(ansi);
  text->FreeString(back);
  text->FreeString(utf8);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Repair(data, size);
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  ConvertUtf8(bytes);
  ConvertUtf16(data, size);
  text->IsEmailAddress(bytes.c_str());
  text->HexToUInt64(bytes.data(), bytes.size());
  text->CompareVersion(bytes.c_str(), bytes.c_str() + std::strlen(bytes.c_str()) / 2);
  return 0;
}
