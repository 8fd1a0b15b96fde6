#include <gtest/gtest.h>
#include <temvar/utility_string.h>

#include <string>

#include "support/take.h"

namespace {

using temvar_test::Take;
using temvar_test::TakeWide;

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
  const struct {
    const char* left;
    const char* right;
    int32_t result;
  } cases[] = {
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

}  // namespace
