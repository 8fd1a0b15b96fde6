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
  // after it is neither next to it nor followed by the end of the text or of the line.
  const char* dot = text;
  for (const char* at = std::strchr(text, '@'); at != nullptr; at = std::strchr(at + 1, '@')) {
    if (at == text || at[-1] == '@') continue;
    // The dot found for an earlier '@' serves as long as it comes after this one.
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

// One search and its outcome.
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

constexpr uint64_t kReserve = 256 * 1024;
constexpr uint64_t kSmallNeed = 128 * 1024;  // Fits any thread's stack, and spares a thread.

// An upper bound for the frames that the matcher takes for one character: one for each operator,
// each as often as repetitions such as {3,5} copy it. The library refuses patterns of more states.
uint64_t CountOperators(std::string_view pattern) {
  constexpr uint64_t kMostStates = 100'000;
  uint64_t operators = 1;
  for (size_t i = 0; i < pattern.size(); ++i) {
    if (std::strchr("()|*+?[", pattern[i]) != nullptr) ++operators;
    if (pattern[i] != '{') continue;
    const char* const counts = pattern.data() + i + 1;
    const char* const most = counts + std::strspn(counts, "0123456789,");
    const char* last = most;
    while (last != counts && last[-1] != ',') --last;
    const auto copies = static_cast<uint64_t>(std::max({1, ParseInt32(counts), ParseInt32(last)}));
    const bool copiesGroup = i > 0 && pattern[i - 1] == ')';
    operators = std::min(copiesGroup ? operators * copies : operators + copies, kMostStates);
  }
  return operators;
}

// What a search may need. The compiler of patterns recurses with each of their characters, most
// deeply for a parenthesis (540 bytes a pair in libstdc++ 12 without optimisation); the matcher,
// for each character of a match, with each operator that it passes (110 bytes a frame).
uint64_t StackFor(const Search& search) {
  constexpr uint64_t kBytesPerPatternByte = 1024;
  constexpr uint64_t kBytesPerOperator = 512;
  const std::string_view pattern(search.pattern);
  const uint64_t compiling = pattern.size() * kBytesPerPatternByte;
  const uint64_t matching = (search.text.size() + 1) * kBytesPerOperator * CountOperators(pattern);
  // A long text may well hold no long match: it gets what there is.
  return kReserve + std::max(compiling, std::min<uint64_t>(matching, kLargestStack - kReserve));
}

}  // namespace

char* TMVUtilityStringImpl::RegexFirstMatch(const char* text, const char* pattern) {
  Search search{text, pattern, {}, nullptr};
  const uint64_t stack = StackFor(search);
  if (stack <= kReserve + kSmallNeed) {
    RunSearch(&search);
  } else if (stack > kLargestStack ||
             !RunOnLargeStack(static_cast<size_t>(stack), RunSearch, &search)) {
    throw std::regex_error(std::regex_constants::error_stack);
  }
  if (search.error) std::rethrow_exception(search.error);
  return NewNarrowText(search.found);
}

}  // namespace temvar
