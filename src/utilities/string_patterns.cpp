// The fixed patterns are matched by plain code: the standard library's matcher recurses for each
// character that it consumes, so that a long text would exhaust the stack.
#include <cstring>
#include <regex>

#include "utilities/string_impl.h"
#include "utilities/text.h"

namespace temvar {

namespace {
bool IsDigit(char character) { return character >= '0' && character <= '9'; }
}  // namespace

bool TMVUtilityStringImpl::IsEmailAddress(const char* text) {
  // "[^@]+@[^.]+[.]{1}.+": for some '@' with a character other than '@' before it, the first dot
  // behind it is neither next to it nor followed by the end of the text or of the line.
  const char* dot = text;
  for (const char* at = std::strchr(text, '@'); at != nullptr; at = std::strchr(at + 1, '@')) {
    if (at == text || at[-1] == '@') continue;
    // The dot found for an earlier '@' holds as long as it lies behind this one.
    if (dot <= at) dot = std::strchr(at + 1, '.');
    if (dot == nullptr) return false;
    const char next = dot[1];
    if (dot != at + 1 && next != '\0' && next != '\n' && next != '\r') return true;
  }
  return false;
}

bool TMVUtilityStringImpl::IsAllDigits(const char* text) {
  if (!IsDigit(*text)) return false;
  while (IsDigit(*text)) ++text;
  return *text == '\0';
}

bool TMVUtilityStringImpl::StartsWithDigit(const char* text) { return IsDigit(*text); }

char* TMVUtilityStringImpl::RegexFirstMatch(const char* text, const char* pattern) {
  std::cmatch match;
  if (!std::regex_search(text, match, std::regex(pattern))) return NewBlock<char>(1);
  const auto length = static_cast<size_t>(match.length(0));
  return NewNarrowText(std::string_view(match[0].first, length));
}

}  // namespace temvar
