// Conversions between UTF-8, wide text and ANSI, and the repair of UTF-8.
#include <vector>

#include "support/take.h"
#include "support/work_folder.h"

namespace {

using namespace test;
using Wide = std::basic_string<TmvWideChar>;

TMVUtilityString* const text = TmvUtilityString();

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

}  // namespace
