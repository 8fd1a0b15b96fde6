#include <cstdarg>
#include <cstdio>

#include "platform/win32.h"
#include "utilities/string/text.h"
#include "utilities/string/utility_string_impl.h"

namespace temvar {

namespace {

// Ends a list of arguments on every way out.
struct Arguments {
  va_list list;
  ~Arguments() { va_end(list); }
};

// The block for a text of `length` units: (length * 2 + 2) bytes for narrow and wide text alike.
template <typename Unit>
Unit* NewFormatBlock(int length) {
  return NewBlock<Unit>((static_cast<size_t>(length) * 2 + 2) / sizeof(Unit));
}

}  // namespace

char* TMVUtilityStringImpl::FormatString(const char* format, ...) {
  Arguments measured;
  Arguments written;
  va_start(measured.list, format);
  va_copy(written.list, measured.list);
  const int length = std::vsnprintf(nullptr, 0, format, measured.list);
  if (length < 0) return NewBlock<char>(1);
  char* const text = NewFormatBlock<char>(length);
  std::vsnprintf(text, static_cast<size_t>(length) + 1, format, written.list);
  return text;
}

TmvWideChar* TMVUtilityStringImpl::FormatWideString(const TmvWideChar* format, ...) {
  Arguments measured;
  Arguments written;
  va_start(measured.list, format);
  va_copy(written.list, measured.list);
  const int length = _vscwprintf(format, measured.list);
  if (length < 0) return NewBlock<TmvWideChar>(1);
  TmvWideChar* const text = NewFormatBlock<TmvWideChar>(length);
  _vsnwprintf(text, static_cast<size_t>(length) + 1, format, written.list);
  return text;
}

}  // namespace temvar
