// The standard library's matcher recurses for each character that it consumes: some 3,000 of them
// use up a stack of 1 MB. So the fixed patterns are matched by plain code, and the host's own
// patterns get a large stack.

// With sanitizers GCC 12 takes a std::function inside of <regex> for uninitialised (its bug
// 105562).
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <algorithm>
#include <cstring>
#include <exception>
#include <regex>
#include <string_view>

#include "platform/threads.h"
#include "utilities/string/text.h"
#include "utilities/string/utility_string_impl.h"

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

namespace {

// One search, with what it came to.
struct Search {
  std::string_view text;
  const char* pattern;
  std::string_view found;
  std::exception_ptr error;
};

void RunSearch(void* argument) {
  Search& search = *static_cast<Search*>(argument);
  try {
    const char* const begin = search.text.data();
    std::cmatch match;
    if (std::regex_search(begin, begin + search.text.size(), match, std::regex(search.pattern))) {
      search.found = {match[0].first, static_cast<size_t>(match.length(0))};
    }
  } catch (...) {
    search.error = std::current_exception();
  }
}

// What the matcher may need. libstdc++ 12 was seen to take 110 bytes a frame, and for each
// character of a match one frame for every operator that it passes.
size_t StackFor(const Search& search) {
  constexpr size_t kReserve = 256 * 1024;
  constexpr size_t kBytesPerOperator = 512;
  size_t operators = 1;
  for (const char* at = search.pattern; *at != '\0'; ++at) {
    if (std::strchr("()|*+?{[", *at) != nullptr) ++operators;
  }
  const size_t most = (kLargestStack - kReserve) / kBytesPerOperator / operators;
  return kReserve + std::min(search.text.size(), most) * kBytesPerOperator * operators;
}

}  // namespace

char* TMVUtilityStringImpl::RegexFirstMatch(const char* text, const char* pattern) {
  constexpr size_t kShortText = 256;  // Fits any thread's stack, and spares a thread.
  Search search{text, pattern, {}, nullptr};
  if (search.text.size() <= kShortText || !RunOnLargeStack(StackFor(search), RunSearch, &search)) {
    RunSearch(&search);
  }
  if (search.error) std::rethrow_exception(search.error);
  return NewNarrowText(search.found);
}

}  // namespace temvar
