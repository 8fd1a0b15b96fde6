// Streams, and files read, written or made as a whole.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "support/work_folder.h"
#include "temvar/temvar.h"

namespace {

constexpr uint64_t kFiveGiB = uint64_t{5} << 30;

class FileStreamsTest : public temvar_test::WorkFolderTest {
 protected:
  // Reads `name` whole and checks the record; "(false)" if the operation fails.
  std::string ReadWhole(std::string_view name) {
    BinaryDataResult result{};
    if (!file_->ReadWholeFile(&result, Path(name).c_str())) return "(false)";
    EXPECT_NE(result.Owner, nullptr);
    EXPECT_EQ(result.Reserved, 0u);
    EXPECT_EQ(result.Data[result.Size], '\0');
    const std::string bytes(result.Data, result.Size);
    FreeBinayDataResult(&result);
    return bytes;
  }

  TMVUtilityFile* const file_ = TmvUtilityFile();
};
TEMVAR_IN_EVERY_PLACE(FileStreamsTest);

TEST_P(FileStreamsTest, OpenFileTakesTheModesOfFopen) {
  const auto write = [this](const char* mode, const char* text) {
    FILE* const stream = file_->OpenFile(Path("ä 字.txt").c_str(), mode);
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

  FILE* const reader = file_->OpenFile(Path("ä 字.txt").c_str(), "r");
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
    EXPECT_EQ(file_->OpenFile(Path("folder").c_str(), mode), nullptr) << mode;
  }
  for (const char* mode : {"", "\xFF", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(file_->OpenFile(Path("a").c_str(), mode), nullptr);
  }
  EXPECT_EQ(GetFile("a"), "a");
  EXPECT_EQ(file_->FileSize(Path("folder").c_str()), 0);
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
    EXPECT_TRUE(file_->WriteWholeFile(bytes.data(), bytes.size(), Path("f").c_str()));
    EXPECT_EQ(GetFile("f"), bytes);
    EXPECT_EQ(ReadWhole("f"), bytes);
    EXPECT_EQ(file_->FileSize(Path("f").c_str()), static_cast<int64_t>(size));
  }
  EXPECT_TRUE(file_->WriteWholeFile("xyz", 3, Path("f").c_str())) << "replaces what was there";
  EXPECT_EQ(GetFile("f"), "xyz");
}

TEST_P(FileStreamsTest, WriteWholeFileRefusesFourGiB) {
  const char three[] = "abc";
  EXPECT_FALSE(file_->WriteWholeFile(three, uint64_t{1} << 32, Path("f").c_str()));
  EXPECT_EQ(GetFile("f"), "");
  EXPECT_FALSE(file_->WriteWholeFile(three, (uint64_t{1} << 32) + 3, Path("f").c_str()));
  EXPECT_EQ(GetFile("f"), "abc");
  EXPECT_FALSE(file_->WriteWholeFile(nullptr, 3, Path("f").c_str()));
  EXPECT_TRUE(file_->WriteWholeFile(nullptr, 0, Path("f").c_str()));
}

TEST_P(FileStreamsTest, CreateFileOfSizeCutsAndFillsWithZeros) {
  PutFile("f", "old content that is long");
  EXPECT_TRUE(file_->CreateFileOfSize(Path("f").c_str(), 5));
  EXPECT_EQ(GetFile("f"), std::string(5, '\0'));
  EXPECT_TRUE(file_->CreateFileOfSize(Path("f").c_str(), 0));
  EXPECT_EQ(GetFile("f"), "");
  EXPECT_FALSE(file_->CreateFileOfSize(Path("f").c_str(), ~uint64_t{0}));
  EXPECT_FALSE(file_->CreateFileOfSize(Path("f").c_str(), uint64_t{1} << 63));
}

TEST_P(FileStreamsTest, FiveGiBHaveA64BitSizeAndAreTooLongForARecord) {
  ASSERT_TRUE(file_->CreateFileOfSize(Path("huge").c_str(), kFiveGiB));
  EXPECT_EQ(file_->FileSize(Path("huge").c_str()), static_cast<int64_t>(kFiveGiB));
  EXPECT_EQ(std::filesystem::file_size(FilePath("huge")), kFiveGiB);
  EXPECT_EQ(ReadWhole("huge"), "(false)");
  EXPECT_EQ(file_->DirectorySize(Path().c_str(), 1), kFiveGiB + 1);
}

TEST(FreeBinayDataResult, PassesOverARecordWithoutOwner) {
  char byte = 0;
  BinaryDataResult result{nullptr, &byte, 1, 0};
  FreeBinayDataResult(&result);
  EXPECT_EQ(result.Data, &byte);
}

}  // namespace
