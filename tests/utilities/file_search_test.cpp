// Search for text in a file.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "support/work_folder.h"
#include "temvar/temvar.h"

namespace {

class FileSearchTest : public temvar_test::WorkFolderTest {
 protected:
  int32_t Search(const std::string& content, const char* text) {
    PutFile("f.txt", content);
    return TmvUtilityFile()->FileContainsText(Path("f.txt").c_str(), text);
  }
};
TEMVAR_IN_EVERY_PLACE(FileSearchTest);

TEST_P(FileSearchTest, FindsTextWithinALine) {
  const struct {
    const char* content;
    const char* text;
    int32_t expected;
  } cases[] = {
      {"one\nTWO words", "two W", 1},
      {"one\nlast", "last", 1},
      {"1\n2\n", "1\n2", 0},
      {"1\n2\n", "\n", 0},
      {"aa\nab", "aab", 0},
      {"abababac", "ababac", 1},
      {"Γειά", "Γειά", 1},
      {"\n", "", 1},
      {"", "", 0},
      {"", "x", 0},
  };
  for (const auto& c : cases) EXPECT_EQ(Search(c.content, c.text), c.expected) << c.text;
  EXPECT_EQ(TmvUtilityFile()->FileContainsText(Path("missing").c_str(), ""), -1);
  EXPECT_EQ(TmvUtilityFile()->FileContainsText(Path().c_str(), "x"), -1) << "a directory";
}

TEST_P(FileSearchTest, ReadsBesideAStreamThatWrites) {
  FILE* const writer = TmvUtilityFile()->OpenFile(Path("log.txt").c_str(), "ab");
  ASSERT_NE(writer, nullptr);
  std::fputs("first entry\n", writer);
  std::fflush(writer);
  EXPECT_EQ(TmvUtilityFile()->FileContainsText(Path("log.txt").c_str(), "Entry"), 1);
  std::fclose(writer);
}

// The same question answered the plain way: lines one by one, each in lower case.
int32_t PlainSearch(const std::string& content, std::string text) {
  const auto lower = [](std::string& bytes) {
    for (char& c : bytes) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  };
  lower(text);
  size_t start = 0;
  while (start < content.size()) {
    const size_t end = std::min(content.find('\n', start), content.size());
    std::string line = content.substr(start, end - start);
    lower(line);
    if (line.find(text) != std::string::npos) return 1;
    start = end + 1;
  }
  return 0;
}

TEST_P(FileSearchTest, AgreesWithAPlainSearchOfRandomText) {
  std::mt19937 random(20240131);
  const auto text_of = [&random](size_t length, std::string_view letters) {
    std::string text;
    while (text.size() < length) text += letters[random() % letters.size()];
    return text;
  };
  int found = 0;
  for (int i = 0; i < 400; ++i) {
    const std::string content = text_of(random() % 60, "aAbB\n");
    const std::string text = text_of(random() % 7, "abB");
    SCOPED_TRACE(content + "|" + text);
    const int32_t expected = PlainSearch(content, text);
    EXPECT_EQ(Search(content, text.c_str()), expected);
    found += expected;
  }
  EXPECT_GT(found, 50);
  EXPECT_LT(found, 350);
}

TEST_P(FileSearchTest, FindsTextAcrossTheBlocksItReads) {
  for (const size_t before : {4090u, 8190u, 16380u, 65530u, 1'000'000u}) {
    const std::string content = std::string(before, 'x') + "a needle in it" + std::string(50, 'y');
    EXPECT_EQ(Search(content, "A Needle In It"), 1) << before;
    EXPECT_EQ(Search(content, "a needle in us"), 0) << before;
  }
}

}  // namespace
