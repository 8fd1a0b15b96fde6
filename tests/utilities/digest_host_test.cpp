#include <gtest/gtest.h>
#include <temvar/utility_string.h>

#include <fstream>
#include <set>
#include <string>

#include "support/take.h"
#include "support/work_folder.h"

namespace {

using temvar_test::Take;

TMVUtilityString* const text = TmvUtilityString();

// The result of a call and what it printed on standard output.
struct Told {
  std::string result;
  std::string printed;
};

template <typename Call>
Told Listen(Call call) {
  testing::internal::CaptureStdout();
  Told told;
  told.result = Take(call());
  told.printed = testing::internal::GetCapturedStdout();
  return told;
}

class DigestTest : public temvar_test::WorkFolderTest {
 protected:
  Told Md5(const std::string& path) {
    return Listen([&] { return text->Md5OfFile(path.c_str()); });
  }
};
TEMVAR_IN_EVERY_PLACE(DigestTest);

// The test suite of RFC 1321, A.5.
TEST_P(DigestTest, Md5OfKnownTexts) {
  const struct {
    const char* bytes;
    const char* digest;
  } cases[] = {
      {"", "d41d8cd98f00b204e9800998ecf8427e"},
      {"a", "0cc175b9c0f1b6a831c399e269772661"},
      {"abc", "900150983cd24fb0d6963f7d28e17f72"},
      {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
      {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
      {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
       "d174ab98d277d9f5a5611c2c9f419d9f"},
      {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
       "57edf4a22be3c955ac49da2e2107b67a"},
  };
  for (const auto& [bytes, digest] : cases) {
    PutFile("file \xCE\xB1.bin", bytes);
    const std::string path = Path("file \xCE\xB1.bin");
    const Told told = Md5(path);
    EXPECT_EQ(told.result, digest);
    EXPECT_EQ(told.printed, "MD5 hash of file " + path + " is: " + digest + "\n");
  }
}

// Around the size of one read, and more than the library keeps at a time.
TEST_P(DigestTest, Md5OfManyReads) {
  const struct {
    size_t size;
    const char* digest;
  } cases[] = {
      {1023, "e3e210ff5dfc9da789cdbee262348db6"},
      {1024, "c9a34cfc85d982698c6ac89f76071abd"},
      {1025, "ae187e1febee2a150b64849c32d566ca"},
      {1000000, "7707d6ae4e027c70eea2a935c2296f21"},  // RFC 1321 software's million of "a"
  };
  for (const auto& [size, digest] : cases) {
    PutFile("many.bin", std::string(size, 'a'));
    EXPECT_EQ(Md5(Path("many.bin")).result, digest) << size;
  }
}

TEST_P(DigestTest, Md5OfWhatCannotBeOpened) {
  const std::string missing = Path("missing.bin");
  Told told = Md5(missing);
  EXPECT_EQ(told.result, "");
  EXPECT_EQ(told.printed, "Error opening file " + missing + "\nError: 2\n");

  told = Md5(Path());
  EXPECT_EQ(told.result, "");
  EXPECT_EQ(told.printed, "Error opening file " + Path() + "\nError: 5\n");
}

TEST(Digest, Md5OfNoPath) {
  Told told = Listen([] { return text->Md5OfFile(nullptr); });
  EXPECT_EQ(told.result, "");
  EXPECT_EQ(told.printed, "Error opening file (null)\nError: 3\n");
  told = Listen([] { return text->Md5OfFile("bad \xFF name"); });
  EXPECT_EQ(told.result, "");
  EXPECT_EQ(told.printed, "Error opening file bad \xFF name\nError: 3\n");
}

// RFC 3174, 7.3, and FIPS 180.
TEST(Digest, Sha1OfKnownTexts) {
  const struct {
    std::string bytes;
    const char* digest;
  } cases[] = {
      {"", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
      {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
      {std::string(1000000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
      {"\xFF\x80", "2f52fa98aee1519d88a09e5019f4186aa4ba767a"},
  };
  for (const auto& [bytes, digest] : cases) {
    const Told told = Listen([&bytes = bytes] { return text->Sha1OfString(bytes.c_str()); });
    EXPECT_EQ(told.result, digest);
    EXPECT_EQ(told.printed, "");
  }
  EXPECT_EQ(text->Sha1OfString(nullptr), nullptr);
}

TEST(Digest, Guids) {
  // 'X' stands for a digit in upper case, 'x' for one in lower case.
  const std::string shape = "XXXXXXXX-XXXX-xxxx-XXXX-XXXXXXXXXXXX";
  std::set<std::string> seen;
  for (int i = 0; i < 1000; ++i) {
    const std::string guid = Take(text->NewGuidString());
    ASSERT_EQ(guid.size(), shape.size());
    for (size_t at = 0; at < shape.size(); ++at) {
      const std::string allowed = shape[at] == 'X'   ? "0123456789ABCDEF"
                                  : shape[at] == 'x' ? "0123456789abcdef"
                                                     : "-";
      EXPECT_NE(allowed.find(guid[at]), std::string::npos) << guid;
    }
    EXPECT_EQ(guid[14], '4') << "not random: " << guid;
    EXPECT_TRUE(seen.insert(guid).second);
  }
}

}  // namespace
