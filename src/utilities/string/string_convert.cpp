#include <limits>
#include <string_view>

#include "platform/win32.h"
#include "utilities/string/text.h"
#include "utilities/string/utility_string_impl.h"

namespace temvar {

TmvWideChar* TMVUtilityStringImpl::Utf8ToWide(const char* text) {
  if (text == nullptr) return NewBlock<TmvWideChar>(1);
  // Counts the terminator; 0 for ill-formed text, which leaves the zeroed block as it is.
  const int size = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text, -1, nullptr, 0);
  // Two units more than the text: the shell's functions take this very block as a list, whose end
  // is two terminators in a row. The empty result has both, too.
  TmvWideChar* const wide = NewBlock<TmvWideChar>(static_cast<size_t>(size) + 2);
  // With a capacity of 0, after ill-formed text, this call only measures and writes nothing.
  MultiByteToWideChar(CP_UTF8, 0, text, -1, wide, size);
  return wide;
}

char* TMVUtilityStringImpl::WideToAnsi(const TmvWideChar* text) {
  if (text == nullptr) return NewBlock<char>(1);
  const size_t length = std::basic_string_view<TmvWideChar>(text).size();
  // The system takes no longer text, and would read a negative length as "up to the terminator".
  if (length > std::numeric_limits<int>::max()) return NewBlock<char>(1);
  const int sourceSize = static_cast<int>(length);
  const int size = WideCharToMultiByte(CP_ACP, 0, text, sourceSize, nullptr, 0, nullptr, nullptr);
  char* const ansi = NewBlock<char>(static_cast<size_t>(size) + 1);
  WideCharToMultiByte(CP_ACP, 0, text, sourceSize, ansi, size, nullptr, nullptr);
  return ansi;
}

// Unlike WideToAnsi it converts the terminator with the text, and so takes the system's -1.
char* TMVUtilityStringImpl::WideToUtf8(const TmvWideChar* text) {
  if (text == nullptr) return NewBlock<char>(1);
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  char* const utf8 = NewBlock<char>(static_cast<size_t>(size) + 1);
  WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8, size, nullptr, nullptr);
  return utf8;
}

char* TMVUtilityStringImpl::Utf8ToAnsi(const char* text) {
  if (text == nullptr) return NewBlock<char>(1);
  return WideToAnsi(WideText(Utf8ToWide(text)).get());
}

}  // namespace temvar
