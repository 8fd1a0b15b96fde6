#include <gtest/gtest.h>
#include <temvar/utility_string.h>

#include <cinttypes>
#include <string>

#include "support/take.h"

namespace {

using temvar_test::Take;
using temvar_test::TakeWide;
using Wide = std::basic_string<TmvWideChar>;

TMVUtilityString* const text = TmvUtilityString();

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
  const std::string part(100000, 'x');
  EXPECT_EQ(Take(text->FormatString("<%s>", part.c_str())), "<" + part + ">");
  const Wide wide_part(100000, TMV_WIDE('x'));
  EXPECT_TRUE(TakeWide(text->FormatWideString(TMV_WIDE("<%s>"), wide_part.c_str())) ==
              Widen("<" + part + ">"));
  EXPECT_EQ(TakeWide(text->FormatWideString(TMV_WIDE("%*d"), 50000, 1)).size(), 50000u);
  EXPECT_EQ(Take(text->FormatString("%s", "")), "");
  EXPECT_EQ(TakeWide(text->FormatWideString(TMV_WIDE("%s"), TMV_WIDE(""))), Wide());
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
  EXPECT_SAME("%g %G", 0.5, 1234.5);
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
