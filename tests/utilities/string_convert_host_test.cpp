#include <gtest/gtest.h>
#include <temvar/utility_string.h>

#include <string>

#include "support/take.h"

namespace {

using temvar_test::Take;
using temvar_test::TakeWide;
using Wide = std::basic_string<TmvWideChar>;

TMVUtilityString* const text = TmvUtilityString();

// A second way to encode: by the tables of the standards, one bit field after the other.
void AppendUtf8(std::string& out, uint32_t code) {
  const int continuations = code < 0x80 ? 0 : code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
  const uint32_t leads[] = {0x00, 0xC0, 0xE0, 0xF0};
  uint32_t divisor = 1;
  for (int i = 0; i < continuations; ++i) divisor *= 64;
  out += static_cast<char>(leads[continuations] + code / divisor);
  for (; divisor > 1; divisor /= 64) {
    out += static_cast<char>(0x80 + code % divisor / (divisor / 64));
  }
}

void AppendUtf16(Wide& out, uint32_t code) {
  if (code >= 0x10000) {
    out += static_cast<TmvWideChar>(0xD800 + (code - 0x10000) / 0x400);
    code = 0xDC00 + (code - 0x10000) % 0x400;
  }
  out += static_cast<TmvWideChar>(code);
}

bool IsCharacter(uint32_t code) { return code != 0 && (code < 0xD800 || code > 0xDFFF); }

TEST(StringConvert, EveryCharacterGoesThereAndBack) {
  // Alone, and all of them in one text of 4 MB.
  std::string all;
  Wide all_wide;
  for (uint32_t code = 1; code <= 0x10FFFF; ++code) {
    if (!IsCharacter(code)) continue;
    AppendUtf8(all, code);
    AppendUtf16(all_wide, code);
    if (code % 0x100 != 0x41) continue;
    std::string utf8;
    Wide wide;
    AppendUtf8(utf8, code);
    AppendUtf16(wide, code);
    ASSERT_EQ(TakeWide(text->Utf8ToWide(utf8.c_str())), wide) << code;
    ASSERT_EQ(Take(text->WideToUtf8(wide.c_str())), utf8) << code;
  }
  EXPECT_TRUE(TakeWide(text->Utf8ToWide(all.c_str())) == all_wide);
  EXPECT_TRUE(Take(text->WideToUtf8(all_wide.c_str())) == all);
}

// Runs of ASCII take a way of their own: every length and every place of the first other letter.
TEST(StringConvert, AsciiRunsOfEveryLength) {
  for (size_t length = 0; length < 40; ++length) {
    for (size_t place = 0; place <= length; ++place) {
      std::string utf8(length, 'x');
      Wide wide(length, TMV_WIDE('x'));
      utf8.insert(place, "\xCE\xB1");
      wide.insert(place, 1, static_cast<TmvWideChar>(0x3B1));
      ASSERT_EQ(TakeWide(text->Utf8ToWide(utf8.c_str())), wide);
      ASSERT_EQ(Take(text->WideToUtf8(wide.c_str())), utf8);
      TmvWideChar* const block = text->Utf8ToWide(utf8.c_str());
      EXPECT_EQ(block[length + 2], 0) << "two terminators";
      text->FreeString(block);
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
      for (const size_t behind : {0u, 1u, 2u, 3u, 70u}) {
        const std::string utf8 = std::string(before, 'x') + bytes + std::string(behind, 'y');
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
  const std::string replaced = "\xEF\xBF\xBD";
  EXPECT_EQ(Take(text->WideToUtf8(Wide{high, low}.c_str())), "\xF0\x9F\x98\x80");
  EXPECT_EQ(Take(text->WideToUtf8(Wide{high}.c_str())), replaced);
  EXPECT_EQ(Take(text->WideToUtf8(Wide{low}.c_str())), replaced);
  EXPECT_EQ(Take(text->WideToUtf8(Wide{high, letter}.c_str())), replaced + "x");
  EXPECT_EQ(Take(text->WideToUtf8(Wide{low, high}.c_str())), replaced + replaced);
  EXPECT_EQ(Take(text->WideToUtf8(Wide{high, high, low}.c_str())), replaced + "\xF0\x9F\x98\x80");
}

TEST(StringConvert, AnsiIsWindows1252) {
  const struct {
    const char* utf8;
    const char* ansi;
  } cases[] = {
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

}  // namespace
