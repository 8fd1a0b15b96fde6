// Copies, looks, comparisons and numbers, and texts made by a format.
#include <gtest/gtest.h>

#include <cinttypes>
#include <climits>
#include <new>

#include "support/take.h"

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

}  // namespace
