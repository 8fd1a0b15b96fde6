#include "platform/wide_errors.h"

#include <iostream>
#include <string>

#include "platform/win32.h"

namespace temvar {

void WriteWideErrorLine(const char* utf8) {
  const int size = MultiByteToWideChar(CP_UTF8, 0, utf8, -1, nullptr, 0);
  std::wstring text(size > 0 ? static_cast<size_t>(size) : 1, L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8, -1, text.data(), size);
  text.pop_back();
  // In the runtime's "C" locale a character above 255 puts the stream into its failed state, in
  // which it writes nothing more (msvcrt and ucrt).
  for (const wchar_t character : text) {
    if (std::wcerr.put(character)) continue;
    std::wcerr.clear();
    std::wcerr.put(L'?');
  }
  std::wcerr << std::endl;
}

}  // namespace temvar
