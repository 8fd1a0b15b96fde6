// Copies, looks, comparisons and numbers, and texts made by a format; conversions between UTF-8,
// wide text and ANSI, and the repair of UTF-8; patterns.

// With sanitizers GCC 12 takes a std::function inside of <regex> for uninitialised (its bug
// 105562).
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <cinttypes>
#include <climits>
#include <new>
#include <random>
#include <regex>

#include "support/take.h"
#include "support/work_folder.h"

namespace {

using namespace test;
using Wide = std::basic_string<TmvWideChar>;

TMVUtilityString* const text = TmvUtilityString();

TEST(StringBasics, Copies) {
  for (const std::string original : {"", "a", "\xE4\xB8\xAD"}) {
    char* const copy = text->DupString(original.c_str());
    EXPECT_NE(copy, original.c_str());
    EXPECT_EQ(Take(copy), original);
  }
  const TmvWideChar* const wide = TMV_WIDE("\u03B1\u4E2D");
  TmvWideChar* const copy = text->DupWideString(wide);
  EXPECT_NE(copy, wide);
  EXPECT_EQ(TakeWide(copy), wide);
  text->FreeString(nullptr);
}

TEST(StringBasics, NullEmptyAndBlank) {
  EXPECT_TRUE(text->IsNullOrEmpty(nullptr));
  EXPECT_TRUE(text->IsNullOrEmpty(""));
  EXPECT_FALSE(text->IsNullOrEmpty(" "));
  const char* const given = "given";
  EXPECT_EQ(text->SafeString(given), given);
  EXPECT_STREQ(text->SafeString(nullptr), "");
  std::string blanks;
  for (int character = -300; character <= 300; ++character) {
    if (text->IsBlankChar(character)) blanks += static_cast<char>(character);
  }
  EXPECT_EQ(blanks, "\t\r ");
}

TEST(StringBasics, CompareVersion) {
  const std::tuple<const char*, const char*, int32_t> cases[] = {
      {"1.10", "1.9", 1}, {"1.2", "1.2.0", -1},  {"1.", "1", 1},     {"1.x", "1.0", 0},
      {"2", "1.9.9", 1},  {" 7rc1.2", "7.2", 0}, {"-1", "0", -1},    {"", "0", 0},
      {"", nullptr, 1},   {nullptr, nullptr, 0}, {nullptr, "0", -1}, {"1.2", "1.2", 0},
  };
  for (const auto& [left, right, result] : cases) {
    EXPECT_EQ(text->CompareVersion(left, right), result) << left << " " << right;
    EXPECT_EQ(text->CompareVersion(right, left), -result) << right << " " << left;
  }
  EXPECT_EQ(text->CompareVersion("99999999999999999999", "2147483647"), 0);
  EXPECT_EQ(text->CompareVersion("-99999999999999999999.1", "-2147483648.2"), -1);
  const std::string dots(1000000, '.');
  EXPECT_EQ(text->CompareVersion(dots.c_str(), dots.c_str()), 0);
  EXPECT_EQ(text->CompareVersion((dots + "1").c_str(), dots.c_str()), 1);
}

TEST(StringBasics, HexToUInt64) {
  const auto number = [](const std::string& digits) {
    return text->HexToUInt64(digits.c_str(), digits.size());
  };
  EXPECT_EQ(text->HexToUInt64(nullptr, 0), 0u);
  EXPECT_EQ(text->HexToUInt64("0123456789", 4), 0x123u);
  EXPECT_EQ(number("fF"), 255u);
  EXPECT_EQ(number("1fffffffffffff"), 0x1FFFFFFFFFFFFFu);
  EXPECT_EQ(number("8000000000000000"), uint64_t{1} << 63);
  // Rounded beyond 2^53 to even, also where an x87 would keep more bits.
  EXPECT_EQ(number("20000000000001"), uint64_t{1} << 53);
  // No byte is refused: 'g' counts as 16, 'O' and 0xFF as 24, ':' as 10.
  EXPECT_EQ(number("gO:\xFF"), 0x10000u + 0x1800u + 0xA0u + 24u);
  // What doesn't fit is the largest number, also where the powers leave the range of double.
  for (const size_t length : {16u, 1000u}) {
    EXPECT_EQ(number(std::string(length, 'f')), UINT64_MAX);
  }
  EXPECT_EQ(number(std::string(998, '0') + "2a"), 42u);
}

Wide Widen(const std::string& ascii) { return Wide(ascii.begin(), ascii.end()); }

TEST(StringFormat, Narrow) {
  char* const narrow = text->FormatString("%s", "abc");
  for (int i = 3; i < 8; ++i) EXPECT_EQ(narrow[i], '\0') << "room for two terminators";
  text->FreeString(narrow);
  EXPECT_EQ(Take(text->FormatString("%d|%5d|%-5d|%05u|%x", -1, 42, 42, 42u, 255u)),
            "-1|   42|42   |00042|ff");
  EXPECT_EQ(Take(text->FormatString("%s and %.3s", "\xCE\xB1", "abcdef")), "\xCE\xB1 and abc");
  EXPECT_EQ(Take(text->FormatString("%" PRIu64 " %.2f%%", UINT64_MAX, 99.5)),
            "18446744073709551615 99.50%");
}

TEST(StringFormat, ResultIsWhole) {
  for (const size_t size : {0u, 100000u}) {
    const std::string part(size, 'x');
    const Wide wide = Widen(part);
    EXPECT_TRUE(Take(text->FormatString("%s", part.c_str())) == part) << size;
    EXPECT_TRUE(TakeWide(text->FormatWideString(TMV_WIDE("%s"), wide.c_str())) == wide) << size;
  }
  EXPECT_EQ(TakeWide(text->FormatWideString(TMV_WIDE("%*d"), 50000, 1)).size(), 50000u);
  if (sizeof(void*) == 8) return;  // Where the longest text takes just time and 4 GiB.
  // A 32-bit process has no room for it: msvcrt of Wine 8.0 refuses the format, others count it.
  try {
    EXPECT_EQ(Take(text->FormatString("%*d", INT_MAX, 1)), "");
    EXPECT_EQ(TakeWide(text->FormatWideString(TMV_WIDE("%*d"), INT_MAX, 1)), Wide());
  } catch (const std::bad_alloc&) {
  }
}

// The result of each wide conversion beside the narrow one of the C library.
TEST(StringFormat, WideNumbersAreThoseOfPrintf) {
#define EXPECT_SAME(format, ...)                                             \
  EXPECT_EQ(TakeWide(text->FormatWideString(TMV_WIDE(format), __VA_ARGS__)), \
            Widen(Take(text->FormatString(format, __VA_ARGS__))))
  EXPECT_SAME("%d %i %u %o %x %X", -5, 7, 8u, 8u, 255u, 255u);
  EXPECT_SAME("%5d|%-5d|%05d|%+d|% d|%.3d", 42, 42, 42, 42, 42, 42);
  EXPECT_SAME("%*d|%-*d|%.*d", 6, 1, 6, 2, 3, 4);
  EXPECT_SAME("%ld %lu", -123456789L, 123456789UL);
  EXPECT_SAME("%lld %llx", -9223372036854775807LL, 0xFEDCBA9876543210ull);
  EXPECT_SAME("%hd %hu", short{12}, static_cast<unsigned short>(13));
  EXPECT_SAME("%#x %#o", 255u, 8u);
  EXPECT_SAME("%f %.2f %10.3f|%-10.1f|", 1.5, 2.25, 3.125, 4.75);
  EXPECT_SAME("%g %G %e %.0f", 0.5, 1234.5, 1e-7, 2.5);
  EXPECT_SAME("100%% of %d", 1);
#undef EXPECT_SAME
}

TEST(StringFormat, WideTexts) {
  const TmvWideChar* const alpha = TMV_WIDE("\u03B1\u03B2");
  EXPECT_EQ(TakeWide(text->FormatWideString(TMV_WIDE("%s|%ls|%ws"), alpha, alpha, alpha)),
            TMV_WIDE("\u03B1\u03B2|\u03B1\u03B2|\u03B1\u03B2"));
  EXPECT_EQ(TakeWide(text->FormatWideString(TMV_WIDE("%5s|%-5s|%.1s"), alpha, alpha, alpha)),
            TMV_WIDE("   \u03B1\u03B2|\u03B1\u03B2   |\u03B1"));
  EXPECT_EQ(TakeWide(text->FormatWideString(TMV_WIDE("%hs|%S|%4hs"), "abc", "def", "g")),
            TMV_WIDE("abc|def|   g"));
  EXPECT_EQ(TakeWide(text->FormatWideString(TMV_WIDE("%c%lc%hc%C|%3c"), 0x3B1, 'b', 'c', 'd', 'e')),
            TMV_WIDE("\u03B1bcd|  e"));
  EXPECT_EQ(TakeWide(text->FormatWideString(TMV_WIDE("%I64d %I32d"), INT64_C(-9), 8)),
            TMV_WIDE("-9 8"));
  // Without its terminator, as a precision allows.
  const TmvWideChar open[] = {'a', 'b', 'c'};
  EXPECT_EQ(TakeWide(text->FormatWideString(TMV_WIDE("%.3s"), open)), TMV_WIDE("abc"));
}

// Compares with the standard library's way to encode, which is that of its paths.
void ExpectThereAndBack(const std::u32string& characters) {
  const std::filesystem::path path(characters);
  const std::string utf8 = Utf8(path);
  const Wide wide = path.string<TmvWideChar>();
  ASSERT_TRUE(Take(text->WideToUtf8(wide.c_str())) == utf8);
  TmvWideChar* const block = text->Utf8ToWide(utf8.c_str());
  EXPECT_EQ(block[wide.size() + 1], 0) << "two terminators";
  ASSERT_TRUE(TakeWide(block) == wide);
}

TEST(StringConvert, EveryCharacterGoesThereAndBack) {
  std::u32string all;
  for (char32_t code = 1; code <= 0x10FFFF; ++code) {
    if (code >= 0xD800 && code <= 0xDFFF) continue;
    all += code;
    if (code % 0x100 != 0x41) continue;
    SCOPED_TRACE(static_cast<uint32_t>(code));
    ASSERT_NO_FATAL_FAILURE(ExpectThereAndBack({code}));
  }
  ExpectThereAndBack(all);
}

// Runs of ASCII take a way of their own: every length and every place of the first other letter.
TEST(StringConvert, AsciiRunsOfEveryLength) {
  for (size_t length = 0; length < 40; ++length) {
    for (size_t place = 0; place <= length; ++place) {
      SCOPED_TRACE(std::to_string(place) + " of " + std::to_string(length));
      std::u32string characters(length, U'x');
      ASSERT_NO_FATAL_FAILURE(ExpectThereAndBack(characters.insert(place, 1, U'\u03B1')));
    }
  }
}

TEST(StringConvert, IllFormedTextIsEmpty) {
  const char* const cases[] = {// Stray bytes
                               "\x80", "\xBF", "\xFE", "\xFF", "\xF8\x88\x80\x80\x80",
                               // Cut short, or broken off by what follows
                               "\xC3", "\xE4\xB8", "\xF0\x9F\x98",
                               // Longer than needed
                               "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF",
                               // Surrogates, and beyond U+10FFFF
                               "\xED\xA0\x80", "\xED\xBF\xBF", "\xF4\x90\x80\x80",
                               "\xF5\x80\x80\x80"};
  for (const std::string bytes : cases) {
    // At the places where the library goes from one way of reading to another, and at the end.
    for (const size_t before : {0u, 1u, 2u, 3u, 7u, 8u, 61u, 62u, 63u, 64u, 65u}) {
      for (const size_t after : {0u, 1u, 2u, 3u, 70u}) {
        const std::string utf8 = std::string(before, 'x') + bytes + std::string(after, 'y');
        TmvWideChar* const wide = text->Utf8ToWide(utf8.c_str());
        EXPECT_EQ(wide[0], 0) << testing::PrintToString(utf8);
        EXPECT_EQ(wide[1], 0);
        text->FreeString(wide);
      }
    }
  }
}

TEST(StringConvert, UnpairedSurrogatesBecomeReplacements) {
  const TmvWideChar high = 0xD83D, low = 0xDE00, letter = 'x';
  const std::pair<Wide, const char*> cases[] = {
      {{high, low}, "\xF0\x9F\x98\x80"},
      {{high}, "\uFFFD"},
      {{low}, "\uFFFD"},
      {{high, letter}, "\uFFFDx"},
      {{low, high}, "\uFFFD\uFFFD"},
      {{high, high, low}, "\uFFFD\xF0\x9F\x98\x80"},
  };
  for (const auto& [wide, utf8] : cases) EXPECT_EQ(Take(text->WideToUtf8(wide.c_str())), utf8);
}

TEST(StringConvert, AnsiIsWindows1252) {
  const std::pair<const char*, const char*> cases[] = {
      {"plain ~ caf\xC3\xA9 \xC3\xBF", "plain ~ caf\xE9 \xFF"},
      {"€‚ƒ„…†‡ˆ‰Š‹ŒŽ‘’“”•–—˜™š›œžŸ",
       "\x80\x82\x83\x84\x85\x86\x87\x88\x89\x8A\x8B\x8C\x8E\x91\x92\x93\x94\x95\x96\x97\x98\x99"
       "\x9A\x9B\x9C\x9E\x9F"},
      {"\xE4\xB8\xAD\xE6\x96\x87", "??"},
      {"\xFF", ""},  // No text at all
  };
  for (const auto& [utf8, ansi] : cases) {
    EXPECT_EQ(Take(text->Utf8ToAnsi(utf8)), ansi) << utf8;
    const Wide wide = TakeWide(text->Utf8ToWide(utf8));
    EXPECT_EQ(Take(text->WideToAnsi(wide.c_str())), ansi) << utf8;
  }
}

TEST(StringConvert, NullIsEmpty) {
  EXPECT_EQ(TakeWide(text->Utf8ToWide(nullptr)), Wide());
  EXPECT_EQ(Take(text->WideToUtf8(nullptr)), "");
  EXPECT_EQ(Take(text->WideToAnsi(nullptr)), "");
  EXPECT_EQ(Take(text->Utf8ToAnsi(nullptr)), "");
}

std::string Sanitize(const std::string& bytes, uint8_t replacement = '?') {
  // A block of just that size, so that AddressSanitizer sees each step beyond it.
  std::vector<uint8_t> buffer(bytes.begin(), bytes.end());
  const auto size = static_cast<uint32_t>(buffer.size());
  EXPECT_EQ(text->SanitizeUtf8(buffer.data(), size, replacement), !buffer.empty());
  return std::string(buffer.begin(), buffer.end());
}

TEST(StringSanitize, BlanksWhatIsNoCharacterAndKeepsWhole) {
  using std::string_literals::operator""s;
  EXPECT_EQ(Sanitize("plain\t\r\n~ \xC3\xA9 \xF0\x9F\x98\x80"),
            "plain\t\r\n~ \xC3\xA9 \xF0\x9F\x98\x80");
  EXPECT_EQ(Sanitize("\x80 \0\x7F\x1F\xFF"s), "? ????");
  EXPECT_EQ(Sanitize("\xE4\xB8 \xF0\x9F\x98\xC3\xA9\xA9"), "?? ???\xC3\xA9?");
  EXPECT_EQ(Sanitize("\xC0\x80\xED\xA0\x80\xF7\xBF\xBF\xBF"),
            "\xC0\x80\xED\xA0\x80\xF7\xBF\xBF\xBF");
  EXPECT_EQ(Sanitize("\xF8\x88\x80 \xF0\x9F\x98z\xEF\xBF\n\xDF\xBF\xBF"), "??? ???z??\n\xDF\xBF?");
  EXPECT_EQ(Sanitize("a\xE4\xB8", '_'), "a__");
  EXPECT_FALSE(text->SanitizeUtf8(nullptr, 10, '?'));
  uint8_t byte = 0xFF;
  EXPECT_TRUE(text->SanitizeUtf8(&byte, 0, '?'));
  EXPECT_EQ(byte, 0xFF);
}

// The plain code returns what the pattern itself returns, on texts made of the characters that
// count.
TEST(StringPatterns, SameAsTheExpressions) {
  const std::regex address("[^@]+@[^.]+[.]{1}.+");
  const std::regex all_digits("^\\d+$");
  const std::regex digits("^\\d+");
  const std::string alphabet = "@@..a1\n\r\xE9";
  const auto check = [&](const std::string& subject) {
    const char* const bytes = subject.c_str();
    SCOPED_TRACE(testing::PrintToString(subject));
    ASSERT_EQ(text->IsEmailAddress(bytes), std::regex_search(bytes, address));
    ASSERT_EQ(text->IsAllDigits(bytes), std::regex_search(bytes, all_digits));
    ASSERT_EQ(text->StartsWithDigit(bytes), std::regex_search(bytes, digits));
  };
  // All texts of up to five of "@.a1\n", as numbers of base 6 without a zero, and random ones.
  for (int number = 0; number < 6 * 6 * 6 * 6 * 6; ++number) {
    std::string subject;
    for (int rest = number; rest % 6 != 0; rest /= 6) subject += "@.a1\n"[rest % 6 - 1];
    ASSERT_NO_FATAL_FAILURE(check(subject));
  }
  std::mt19937 random(3);
  for (int round = 0; round < 3000; ++round) {
    std::string subject;
    while (random() % 12 != 0) subject += alphabet[random() % alphabet.size()];
    ASSERT_NO_FATAL_FAILURE(check(subject));
  }
}

TEST(StringPatterns, LongTextsCostNoStack) {
  const std::string digits(3000000, '7');
  EXPECT_TRUE(text->IsAllDigits(digits.c_str()));
  EXPECT_TRUE(text->IsEmailAddress((digits + "@" + digits + "." + digits).c_str()));
  EXPECT_FALSE(text->IsEmailAddress(std::string(3000000, '@').c_str()));
  std::string pairs;
  while (pairs.size() < 1000000) pairs += "a@";
  EXPECT_FALSE(text->IsEmailAddress((pairs + ".").c_str()));
}

TEST(StringPatterns, FirstMatchAndThrowForABadPattern) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"version 1.2.3 and 4.5", "\\d+(\\.\\d+)*", "1.2.3"},
      {"version", "\\d+", ""},
      {"", "x*", ""},
      {"aXbXc", "a.*?X", "aX"},
      {"one two", "o(n|t)e?", "one"},
      {"\xE4\xB8\xAD", "^..", "\xE4\xB8"},  // Byte by byte
      {"abc", "ABC", ""},
  };
  for (const auto& [subject, pattern, match] : cases) {
    EXPECT_EQ(Take(text->RegexFirstMatch(subject, pattern)), match) << subject << " " << pattern;
  }
  EXPECT_THROW(text->RegexFirstMatch("text", "("), std::regex_error);
  EXPECT_THROW(text->RegexFirstMatch(std::string(1000, 'x').c_str(), "[z-a]"), std::regex_error);
}

TEST(StringPatterns, ASearchWithoutTheStackThrows) {
  const auto codeOf = [](const std::string& subject, const std::string& pattern) {
    try {
      Take(text->RegexFirstMatch(subject.c_str(), pattern.c_str()));
    } catch (const std::regex_error& error) {
      return error.code();
    }
    return std::regex_constants::error_type{};
  };
  EXPECT_EQ(codeOf("x", std::string(2'000'000, 'a')), std::regex_constants::error_stack);
  if (sizeof(void*) == 8) return;
  // A 32-bit process runs out of addresses for threads.
  std::vector<std::unique_ptr<char[]>> blocks;
  while (char* const block = new (std::nothrow) char[16 << 20]) blocks.emplace_back(block);
  EXPECT_EQ(codeOf(std::string(30000, 'a'), "((a)|(b))+"), std::regex_constants::error_stack);
}

// The lengths that the header promises.
TEST(StringPatterns, LongMatches) {
#if defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "ThreadSanitizer keeps a list of 65,536 calls, fewer than this nests";
#endif
  const std::string subject(sizeof(void*) == 8 ? 300000 : 30000, 'a');
  for (const char* const pattern : {".+", "(a|b)*", "((a)|(b))+", "[^@]+"}) {
    EXPECT_TRUE(Take(text->RegexFirstMatch(subject.c_str(), pattern)) == subject) << pattern;
  }
  // Stack that the pattern asks for, whatever the text is.
  const size_t most = sizeof(void*) == 8 ? 60000 : 30000;
  EXPECT_EQ(Take(text->RegexFirstMatch("x", std::string(most, 'a').c_str())), "");
  const std::string nested = std::string(most / 2, '(') + "a" + std::string(most / 2, ')');
  EXPECT_EQ(Take(text->RegexFirstMatch("ba", nested.c_str())), "a");
  EXPECT_EQ(Take(text->RegexFirstMatch("aab", "(a?){15000}")), "aa");
  const std::string prose = std::string(3000000, ' ') + "42";
  EXPECT_EQ(Take(text->RegexFirstMatch(prose.c_str(), "\\d+")), "42");
}

}  // namespace
