// ExtractEntry: one entry into memory.
#include <iostream>

#include "archives/archive_test.h"

namespace {

using namespace test;

class ExtractEntryTest : public ArchiveTest {
 protected:
  // Unpacks the entry into `result_`, which a test begins with as it wants it.
  bool Take(const std::string& entry) {
    bool result = false;
    output_ = OutputOf([&] {
      result = TmvUtilityUnzip()->ExtractEntry(&record_, Archive().c_str(), entry.c_str());
    });
    return result;
  }

  // The record's bytes, which go.
  std::string TakenBytes() {
    EXPECT_NE(record_.Owner, nullptr);
    EXPECT_EQ(record_.Reserved, 0u);
    EXPECT_EQ(record_.Data[record_.Size], '\0');
    const std::string bytes(record_.Data, record_.Size);
    FreeBinayDataResult(&record_);
    record_ = kUntouched;
    return bytes;
  }

  std::string ErrorText(int code, const std::string& where) const {
    return "Error " + std::to_string(code) + " with zipfile " + Archive() + " in " + where + "\n";
  }

  static constexpr BinaryDataResult kUntouched = {nullptr, nullptr, 77, 78};
  BinaryDataResult record_ = kUntouched;
  Output output_;
};
TEMVAR_IN_EVERY_PLACE(ExtractEntryTest);

TEST_P(ExtractEntryTest, ReturnsTheContents) {
  const std::string large = NoisyBytes(300'000) + std::string(100'000, 'z');
  PutArchive({{.name = "a/large.bin", .data = large, .method = 8},
              {.name = "empty", .data = ""},
              {.name = "stored", .data = std::string("nul\0inside", 10)}});
  ASSERT_TRUE(Take("a/large.bin"));
  EXPECT_EQ(TakenBytes(), large);
  EXPECT_EQ(output_.out, "Extracting: a/large.bin from " + Archive() + "\n");
  EXPECT_EQ(output_.err, "");
  ASSERT_TRUE(Take("empty"));
  EXPECT_EQ(TakenBytes(), "");
  ASSERT_TRUE(Take("stored"));
  EXPECT_EQ(TakenBytes(), std::string("nul\0inside", 10));
}

TEST_P(ExtractEntryTest, WhatIsNotThereIsReportedOnStandardError) {
  EXPECT_FALSE(Take("x"));
  EXPECT_EQ(output_.err, "Cannot open " + Archive() + "\n");
  const std::string longName(255, 'n');
  PutArchive({{.name = "Dir/Name", .data = "1"},
              {.name = longName, .data = "2"},
              {.name = longName + "n", .data = "3"},
              {.name = "../up", .data = "nothing is written, so this is no danger"}});
  for (const std::string& name : {std::string("dir/name"), std::string("Dir\\Name"),
                                  std::string("Dir/Nam"), longName + "n", std::string()}) {
    EXPECT_FALSE(Take(name));
    EXPECT_EQ(output_.err, "File " + name + " not found in " + Archive() + "\n");
    EXPECT_EQ(output_.out, "");
    EXPECT_EQ(record_.Owner, nullptr);
    EXPECT_EQ(record_.Size, 77u);
    EXPECT_EQ(record_.Reserved, 78u);
  }
  ASSERT_TRUE(Take(longName));
  EXPECT_EQ(TakenBytes(), "2");
  ASSERT_TRUE(Take("../up"));
  TakenBytes();
}

TEST_P(ExtractEntryTest, ADamagedEntryIsTrueWithoutBytes) {
  PutArchive({{.name = "crc", .data = "data", .crc = 1},
              {.name = "short", .data = "data", .method = 8, .crc = 1, .size = 100},
              {.name = "less", .data = "data", .method = 8, .size = 100},
              {.name = "data", .data = "data", .method = 8, .packed = "\xFF\xFF\xFF"},
              {.name = "method", .data = "data", .method = 12}});
  const std::pair<const char*, std::string> cases[] = {
      {"crc", ErrorText(-105, "unzCloseCurrentFile")},
      {"short", ErrorText(-105, "unzCloseCurrentFile")},
      {"data", ErrorText(-3, "unzReadCurrentFile")}};
  std::cerr << std::hex;  // The host's setting, which codes don't follow.
  for (const auto& [entry, error] : cases) {
    ASSERT_TRUE(Take(entry));
    EXPECT_EQ(TakenBytes(), "");
    EXPECT_EQ(output_.err, error);
  }
  std::cerr << std::dec;
  ASSERT_TRUE(Take("less"));
  EXPECT_EQ(TakenBytes(), "data");
  EXPECT_FALSE(Take("method"));
  EXPECT_EQ(output_.err, ErrorText(-103, "unzOpenCurrentFilePassword."));
  EXPECT_EQ(record_.Size, 77u);
}

}  // namespace
