#include <cstring>
#include <set>

#include "support/take.h"
#include "support/work_folder.h"

namespace {

using namespace test;

TMVUtilityString* const text = TmvUtilityString();

// The result of a call and what it printed on standard output.
template <typename Call>
std::pair<std::string, std::string> Listen(Call call) {
  testing::internal::CaptureStdout();
  const std::string result = Take(call());
  return {result, testing::internal::GetCapturedStdout()};
}

using DigestTest = WorkFolderTest;
TEMVAR_IN_EVERY_PLACE(DigestTest);

// From the test suite of RFC 1321, A.5, and around the size of one read; the last is the million of
// "a" of that software.
TEST_P(DigestTest, Md5OfKnownTexts) {
  const std::pair<std::string, const char*> cases[] = {
      {"", "d41d8cd98f00b204e9800998ecf8427e"},
      {"abc", "900150983cd24fb0d6963f7d28e17f72"},
      {std::string(1023, 'a'), "e3e210ff5dfc9da789cdbee262348db6"},
      {std::string(1024, 'a'), "c9a34cfc85d982698c6ac89f76071abd"},
      {std::string(1025, 'a'), "ae187e1febee2a150b64849c32d566ca"},
      {std::string(1000000, 'a'), "7707d6ae4e027c70eea2a935c2296f21"},
  };
  const std::string path = Path("file \xCE\xB1.bin");
  for (const auto& [bytes, digest] : cases) {
    PutFile("file \xCE\xB1.bin", bytes);
    const auto [result, printed] = Listen([&] { return text->Md5OfFile(path.c_str()); });
    EXPECT_EQ(result, digest);
    EXPECT_EQ(printed, "MD5 hash of file " + path + " is: " + digest + "\n");
  }
}

TEST_P(DigestTest, Md5OfWhatCannotBeOpened) {
  const std::string missing = Path("missing.bin");
  const std::string noFolder = Path("no folder/file");
  const std::string folder = Path();
  const std::pair<const char*, std::string> cases[] = {
      {missing.c_str(), missing + "\nError: 2\n"},    {noFolder.c_str(), noFolder + "\nError: 3\n"},
      {folder.c_str(), folder + "\nError: 5\n"},      {nullptr, "(null)\nError: 3\n"},
      {"bad \xFF name", "bad \xFF name\nError: 3\n"},
  };
  for (const auto& [path, line] : cases) {
    const char* const bad = path;
    const auto [result, printed] = Listen([bad] { return text->Md5OfFile(bad); });
    EXPECT_EQ(result, "");
    EXPECT_EQ(printed, "Error opening file " + line);
  }
}

// RFC 3174, 7.3, and FIPS 180.
TEST(Digest, Sha1OfKnownTexts) {
  const std::pair<std::string, const char*> cases[] = {
      {"", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
      {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
      {std::string(1000000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
      {"\xFF\x80", "2f52fa98aee1519d88a09e5019f4186aa4ba767a"},
  };
  for (const auto& [bytes, digest] : cases) {
    const auto heard = Listen([&input = bytes] { return text->Sha1OfString(input.c_str()); });
    EXPECT_EQ(heard, std::pair(std::string(digest), std::string()));
  }
  EXPECT_EQ(text->Sha1OfString(nullptr), nullptr);
}

TEST(Digest, Guids) {
  std::set<std::string> seen;
  for (int i = 0; i < 1000; ++i) {
    const std::string guid = Take(text->NewGuidString());
    std::string shape = guid;
    for (size_t at = 0; at < guid.size(); ++at) {
      const bool is_upper = at < 14 || at > 17;  // The third group alone is in lower case.
      const char* const digits = is_upper ? "0123456789ABCDEF" : "0123456789abcdef";
      if (std::strchr(digits, guid[at]) != nullptr) shape[at] = 'x';
    }
    EXPECT_EQ(shape, "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx") << guid;
    EXPECT_EQ(guid[14], '4') << "not random: " << guid;
    EXPECT_TRUE(seen.insert(guid).second);
  }
}

}  // namespace
