// With sanitizers GCC 12 takes a std::function inside of <regex> for uninitialised (its bug
// 105562).
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <random>
#include <regex>
#include <vector>

#include "support/take.h"

namespace {

using namespace test;

TMVUtilityString* const text = TmvUtilityString();

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

TEST(StringPatterns, FirstMatch) {
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

TEST(StringPatterns, BadPatternThrowsAlsoForLongTexts) {
  EXPECT_THROW(text->RegexFirstMatch("text", "("), std::regex_error);
  EXPECT_THROW(text->RegexFirstMatch(std::string(1000, 'x').c_str(), "[z-a]"), std::regex_error);
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
