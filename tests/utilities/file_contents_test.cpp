// Streams, files read, written or made as a whole, and the search for text in one.
#include <cstdio>

#include "support/work_folder.h"
#include "temvar/temvar.h"

namespace {

using namespace test;

constexpr uint64_t kFiveGiB = uint64_t{5} << 30;

TMVUtilityFile* const files = TmvUtilityFile();

class FileStreamsTest : public WorkFolderTest {
 protected:
  // Reads `name` whole and checks the record; "(false)" if the operation fails.
  std::string ReadWhole(std::string_view name) {
    BinaryDataResult result{};
    if (!files->ReadWholeFile(&result, Path(name).c_str())) return "(false)";
    EXPECT_NE(result.Owner, nullptr);
    EXPECT_EQ(result.Reserved, 0u);
    EXPECT_EQ(result.Data[result.Size], '\0');
    const std::string bytes(result.Data, result.Size);
    FreeBinayDataResult(&result);
    return bytes;
  }
};
TEMVAR_IN_EVERY_PLACE(FileStreamsTest);

TEST_P(FileStreamsTest, OpenFileTakesTheModesOfFopen) {
  const auto write = [this](const char* mode, const char* text) {
    FILE* const stream = files->OpenFile(Path("ä 字.txt").c_str(), mode);
    ASSERT_NE(stream, nullptr) << mode;
    EXPECT_GE(std::fputs(text, stream), 0);
    EXPECT_EQ(std::fclose(stream), 0);
  };
  write("wb", "one\n");
  write("ab", "two\n");
  EXPECT_EQ(GetFile("ä 字.txt"), "one\ntwo\n");
  write("r+b", "ONE");
  EXPECT_EQ(GetFile("ä 字.txt"), "ONE\ntwo\n");
  write("w+b", "new");
  EXPECT_EQ(GetFile("ä 字.txt"), "new");
  write("a+b", "er");

  FILE* const reader = files->OpenFile(Path("ä 字.txt").c_str(), "r");
  ASSERT_NE(reader, nullptr);
  char line[16] = {};
  EXPECT_NE(std::fgets(line, sizeof(line), reader), nullptr);
  EXPECT_STREQ(line, "newer");
  EXPECT_LT(std::fputs("x", reader) + std::fflush(reader), 0) << "opened for reading only";
  std::fclose(reader);
}

TEST_P(FileStreamsTest, OpenFileRefusesDirectoriesAndBadModes) {
  MakeFolder("folder");
  PutFile("a", "a");
  for (const char* mode : {"rb", "wb", "r+b"}) {
    EXPECT_EQ(files->OpenFile(Path("folder").c_str(), mode), nullptr) << mode;
  }
  for (const char* mode : {"", "\xFF", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(files->OpenFile(Path("a").c_str(), mode), nullptr);
  }
  EXPECT_EQ(GetFile("a"), "a");
  EXPECT_EQ(files->FileSize(Path("folder").c_str()), 0);
  EXPECT_EQ(ReadWhole("folder"), "(false)");
}

TEST_P(FileStreamsTest, WholeFilesKeepEveryByte) {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  // Around the size of one read, and a file of many.
  for (const size_t size : {0u, 1u, 511u, 512u, 513u, 1024u, 300'000u}) {
    SCOPED_TRACE(size);
    std::string bytes;
    while (bytes.size() < size) bytes += all;
    bytes.resize(size);
    EXPECT_TRUE(files->WriteWholeFile(bytes.data(), bytes.size(), Path("f").c_str()));
    EXPECT_EQ(GetFile("f"), bytes);
    EXPECT_EQ(ReadWhole("f"), bytes);
    EXPECT_EQ(files->FileSize(Path("f").c_str()), static_cast<int64_t>(size));
  }
  EXPECT_TRUE(files->WriteWholeFile("xyz", 3, Path("f").c_str())) << "replaces what was there";
  EXPECT_EQ(GetFile("f"), "xyz");
}

TEST_P(FileStreamsTest, WriteWholeFileRefusesFourGiB) {
  const char three[] = "abc";
  EXPECT_FALSE(files->WriteWholeFile(three, uint64_t{1} << 32, Path("f").c_str()));
  EXPECT_EQ(GetFile("f"), "");
  EXPECT_FALSE(files->WriteWholeFile(three, (uint64_t{1} << 32) + 3, Path("f").c_str()));
  EXPECT_EQ(GetFile("f"), "abc");
  EXPECT_FALSE(files->WriteWholeFile(nullptr, 3, Path("f").c_str()));
  EXPECT_TRUE(files->WriteWholeFile(nullptr, 0, Path("f").c_str()));
}

TEST_P(FileStreamsTest, CreateFileOfSizeCutsAndFillsWithZeros) {
  PutFile("f", "old content that is long");
  EXPECT_TRUE(files->CreateFileOfSize(Path("f").c_str(), 5));
  EXPECT_EQ(GetFile("f"), std::string(5, '\0'));
  EXPECT_TRUE(files->CreateFileOfSize(Path("f").c_str(), 0));
  EXPECT_EQ(GetFile("f"), "");
  EXPECT_FALSE(files->CreateFileOfSize(Path("f").c_str(), ~uint64_t{0}));
  EXPECT_FALSE(files->CreateFileOfSize(Path("f").c_str(), uint64_t{1} << 63));
}

TEST_P(FileStreamsTest, FiveGiBHaveA64BitSizeAndAreTooLongForARecord) {
  ASSERT_TRUE(files->CreateFileOfSize(Path("huge").c_str(), kFiveGiB));
  EXPECT_EQ(files->FileSize(Path("huge").c_str()), static_cast<int64_t>(kFiveGiB));
  EXPECT_EQ(std::filesystem::file_size(FilePath("huge")), kFiveGiB);
  EXPECT_EQ(ReadWhole("huge"), "(false)");
  if (sizeof(void*) == 4) {
    ASSERT_TRUE(files->CreateFileOfSize(Path("large").c_str(), kFiveGiB / 2));
    EXPECT_EQ(ReadWhole("large"), "(false)") << "no string of a 32-bit process is as long";
    ASSERT_TRUE(files->RemoveFile(Path("large").c_str()));
  }
  EXPECT_EQ(files->DirectorySize(Path().c_str(), 1), kFiveGiB + 1);
}

class FileSearchTest : public WorkFolderTest {
 protected:
  int32_t Search(const std::string& content, const char* text) {
    PutFile("f.txt", content);
    return files->FileContainsText(Path("f.txt").c_str(), text);
  }
};
TEMVAR_IN_EVERY_PLACE(FileSearchTest);

TEST_P(FileSearchTest, FindsTextWithinALine) {
  const std::tuple<const char*, const char*, int32_t> cases[] = {
      {"one\nTWO words", "two W", 1},
      {"one\nlast", "last", 1},
      {"1\n2\n", "1\n2", 0},
      {"1\n2\n", "\n", 0},
      {"aa\nab", "aab", 0},
      {"abababac", "ababac", 1},
      {"aabaabaaab", "aabaaab", 1},  // Two borders back, one within the other.
      {"aabaabaab", "aabaaab", 0},
      {"Γειά", "Γειά", 1},
      {"\n", "", 1},
      {"", "", 0},
      {"", "x", 0},
  };
  for (const auto& [content, text, expected] : cases) {
    EXPECT_EQ(Search(content, text), expected) << text;
  }
  EXPECT_EQ(files->FileContainsText(Path("missing").c_str(), ""), -1);
  EXPECT_EQ(files->FileContainsText(Path().c_str(), "x"), -1) << "a directory";
}

TEST_P(FileSearchTest, ReadsBesideAStreamThatWrites) {
  FILE* const writer = files->OpenFile(Path("log.txt").c_str(), "ab");
  ASSERT_NE(writer, nullptr);
  std::fputs("first entry\n", writer);
  std::fflush(writer);
  EXPECT_EQ(files->FileContainsText(Path("log.txt").c_str(), "Entry"), 1);
  std::fclose(writer);
}

TEST_P(FileSearchTest, FindsTextAcrossTheBlocksItReads) {
  for (const size_t before : {4090u, 8190u, 16380u, 65530u, 1'000'000u}) {
    const std::string content = std::string(before, 'x') + "a needle in it" + std::string(50, 'y');
    EXPECT_EQ(Search(content, "A Needle In It"), 1) << before;
    EXPECT_EQ(Search(content, "a needle in us"), 0) << before;
  }
}

}  // namespace
