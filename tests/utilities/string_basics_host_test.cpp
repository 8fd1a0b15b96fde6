#include <gtest/gtest.h>
#include <temvar/utility_string.h>

#include <string>

#include "support/take.h"

namespace {

using temvar_test::Take;
using temvar_test::TakeWide;

TMVUtilityString* const text = TmvUtilityString();

TEST(StringBasics, OneObject) { EXPECT_EQ(TmvUtilityString(), text); }

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

TEST(StringBasics, NullAndEmpty) {
  EXPECT_TRUE(text->IsNullOrEmpty(nullptr));
  EXPECT_TRUE(text->IsNullOrEmpty(""));
  EXPECT_FALSE(text->IsNullOrEmpty(" "));
  const char* const given = "given";
  EXPECT_EQ(text->SafeString(given), given);
  EXPECT_STREQ(text->SafeString(nullptr), "");
}

TEST(StringBasics, BlankCharacters) {
  std::string blanks;
  for (int character = -300; character <= 300; ++character) {
    if (text->IsBlankChar(character)) blanks += static_cast<char>(character);
  }
  EXPECT_EQ(blanks, "\t\r ");
}

TEST(StringBasics, CompareVersion) {
  const struct {
    const char* left;
    const char* right;
    int32_t result;
  } cases[] = {
      {"1.10", "1.9", 1},
      {"1.2", "1.2.0", -1},
      {"1.", "1", 1},
      {"1.x", "1.0", 0},
      {"1.2.3", "1.2.3", 0},
      {"2", "1.9.9", 1},
      {" 7rc1.2", "7.2", 0},
      {"-1", "0", -1},
      {"", "", 0},
      {"", "0", 0},
      {"", nullptr, 1},
      {nullptr, nullptr, 0},
      {nullptr, "0", -1},
      {"99999999999999999999", "2147483647", 0},
      {"-99999999999999999999.1", "-2147483648.2", -1},
  };
  for (const auto& [left, right, result] : cases) {
    EXPECT_EQ(text->CompareVersion(left, right), result) << left << " " << right;
    EXPECT_EQ(text->CompareVersion(right, left), -result) << right << " " << left;
  }
  const std::string dots(1000000, '.');
  EXPECT_EQ(text->CompareVersion(dots.c_str(), dots.c_str()), 0);
  EXPECT_EQ(text->CompareVersion((dots + "1").c_str(), dots.c_str()), 1);
}

TEST(StringBasics, HexToUInt64) {
  EXPECT_EQ(text->HexToUInt64("ff", 2), 255u);
  EXPECT_EQ(text->HexToUInt64("FF", 2), 255u);
  EXPECT_EQ(text->HexToUInt64("0123456789", 4), 0x123u);
  EXPECT_EQ(text->HexToUInt64("1fffffffffffff", 14), 0x1FFFFFFFFFFFFFu);
  EXPECT_EQ(text->HexToUInt64(nullptr, 0), 0u);
  EXPECT_EQ(text->HexToUInt64("8000000000000000", 16), uint64_t{1} << 63);
  // Rounded beyond 2^53 to even, also where an x87 would keep more bits.
  EXPECT_EQ(text->HexToUInt64("20000000000001", 14), uint64_t{1} << 53);
  // No byte is refused: 'g' counts as 16, 'O' as 24, ':' as 10, 0xFF as 24.
  EXPECT_EQ(text->HexToUInt64("g", 1), 16u);
  EXPECT_EQ(text->HexToUInt64("O", 1), 24u);
  EXPECT_EQ(text->HexToUInt64(":", 1), 10u);
  EXPECT_EQ(text->HexToUInt64("\xFF", 1), 24u);
  // What doesn't fit is the largest number, also where the powers leave the range of double.
  EXPECT_EQ(text->HexToUInt64("ffffffffffffffff", 16), UINT64_MAX);
  EXPECT_EQ(text->HexToUInt64("10000000000000000", 17), UINT64_MAX);
  EXPECT_EQ(text->HexToUInt64(std::string(1000, 'f').c_str(), 1000), UINT64_MAX);
  EXPECT_EQ(text->HexToUInt64((std::string(998, '0') + "2a").c_str(), 1000), 42u);
}

}  // namespace
