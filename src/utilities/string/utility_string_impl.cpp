#include <cstdlib>
#include <string_view>

#include "utilities/string/text.h"
#include "utilities/string/utility_string_impl.h"

namespace temvar {

namespace {
constinit TMVUtilityStringImpl instance;
}  // namespace

TmvWideChar* TMVUtilityStringImpl::DupWideString(const TmvWideChar* text) {
  return NewText(std::basic_string_view<TmvWideChar>(text));
}

char* TMVUtilityStringImpl::DupString(const char* text) { return NewNarrowText(text); }

bool TMVUtilityStringImpl::IsNullOrEmpty(const char* text) {
  return text == nullptr || *text == '\0';
}

// The one text of this interface that is no block: it must not be freed.
const char* TMVUtilityStringImpl::SafeString(const char* text) {
  return text == nullptr ? "" : text;
}

// Not the line feed. That looks like an omission and is documented.
bool TMVUtilityStringImpl::IsBlankChar(int32_t character) {
  return character == ' ' || character == '\t' || character == '\r';
}

// A host may have another heap than the library's runtime, so blocks come back here.
void TMVUtilityStringImpl::FreeString(void* block) { std::free(block); }

}  // namespace temvar

TMVUtilityString* TmvUtilityString() { return &temvar::instance; }
