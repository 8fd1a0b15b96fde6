#include <gtest/gtest.h>
#include <temvar/utility_string.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>

namespace {

TMVUtilityString* const text = TmvUtilityString();

std::string Sanitize(const std::string& bytes, uint8_t replacement = '?') {
  // A block of just that size, so that AddressSanitizer sees each step beyond it.
  const std::unique_ptr<uint8_t[]> buffer(new uint8_t[bytes.size()]);
  std::copy(bytes.begin(), bytes.end(), buffer.get());
  EXPECT_TRUE(text->SanitizeUtf8(buffer.get(), static_cast<uint32_t>(bytes.size()), replacement));
  return std::string(buffer.get(), buffer.get() + bytes.size());
}

TEST(StringSanitize, BlanksWhatIsNoCharacterAndKeepsWhole) {
  using std::string_literals::operator""s;
  EXPECT_EQ(Sanitize("plain\t\r\n~ \xC3\xA9 \xF0\x9F\x98\x80"),
            "plain\t\r\n~ \xC3\xA9 \xF0\x9F\x98\x80");
  EXPECT_EQ(Sanitize("\x80 \0\x7F\x1F\xFF"s), "? ????");
  EXPECT_EQ(Sanitize("\xE4\xB8 \xF0\x9F\x98\xC3\xA9\xA9"), "?? ???\xC3\xA9?");
  EXPECT_EQ(Sanitize("\xC0\x80\xED\xA0\x80\xF7\xBF\xBF\xBF"),
            "\xC0\x80\xED\xA0\x80\xF7\xBF\xBF\xBF");
  EXPECT_EQ(Sanitize("a\xE4\xB8", '_'), "a__");
}

TEST(StringSanitize, NullAndEmpty) {
  EXPECT_FALSE(text->SanitizeUtf8(nullptr, 0, '?'));
  EXPECT_FALSE(text->SanitizeUtf8(nullptr, 10, '?'));
  uint8_t byte = 0xFF;
  EXPECT_TRUE(text->SanitizeUtf8(&byte, 0, '?'));
  EXPECT_EQ(byte, 0xFF);
}

// A second decoder, by another way: it splits the bytes into a lead and what follows it, and keeps
// or blanks the group as a whole.
std::string SanitizeByGroups(const std::string& bytes, char replacement) {
  std::string result;
  size_t at = 0;
  while (at < bytes.size()) {
    const auto lead = static_cast<uint8_t>(bytes[at]);
    size_t wanted = 1;
    if (lead >= 0xC0 && lead < 0xF8) wanted = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    size_t size = 1;
    while (size < wanted && at + size < bytes.size() &&
           (static_cast<uint8_t>(bytes[at + size]) & 0xC0) == 0x80) {
      ++size;
    }
    const bool good = wanted > 1
                          ? size == wanted
                          : (lead >= 0x20 && lead < 0x7F) || lead == 9 || lead == 10 || lead == 13;
    result += good ? bytes.substr(at, size) : std::string(size, replacement);
    at += size;
  }
  return result;
}

TEST(StringSanitize, SameAsASecondDecoder) {
  std::mt19937 random(11);
  // Bytes of every kind, those of sequences more often than by chance.
  const std::string kinds = "\x80\xBF\x9F\xC3\xDF\xE0\xEF\xF0\xF7\xF8\xFF\x7Fz\n";
  for (int round = 0; round < 50000; ++round) {
    std::string bytes;
    while (random() % 16 != 0) {
      bytes += random() % 2 == 0 ? kinds[random() % kinds.size()] : static_cast<char>(random());
    }
    ASSERT_EQ(Sanitize(bytes), SanitizeByGroups(bytes, '?'));
    // What was repaired needs no repair.
    ASSERT_EQ(Sanitize(Sanitize(bytes)), Sanitize(bytes));
  }
}

}  // namespace
