#include <cstdarg>

#include "platform/win32.h"
#include "utilities/string/text.h"
#include "utilities/string/utility_string_impl.h"

// Both formatters are the runtime's, so that narrow and wide text come out alike.
namespace temvar {
namespace {

// Ends a list of arguments on every way out.
struct Arguments {
  va_list list;
  ~Arguments() { va_end(list); }
};

template <typename Unit>
Unit* NewFormatBlock(int length) {
  return NewBlock<Unit>(FormatBlockUnits<Unit>(length));
}

}  // namespace

char* TMVUtilityStringImpl::FormatString(const char* format, ...) {
  Arguments measured;
  Arguments written;
  va_start(measured.list, format);
  // Each pass uses its list up, so the second gets a copy made before the first.
  va_copy(written.list, measured.list);
  const int length = _vscprintf(format, measured.list);
  if (length < 0) return NewBlock<char>(1);
  char* const text = NewFormatBlock<char>(length);
  // With room for the terminator, which the Windows runtime leaves out of a text that just fits.
  _vsnprintf(text, static_cast<size_t>(length) + 1, format, written.list);
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
