// ExtractArchive: what is unpacked, what is printed, what a damaged archive does. ExtractEntry: one
// entry into memory.
#include <iostream>

#include "archives/archive_test.h"

namespace {

using namespace test;
using testing::UnorderedElementsAre;

using ExtractionTest = ArchiveTest;
TEMVAR_IN_EVERY_PLACE(ExtractionTest);

TEST_P(ExtractionTest, UnpacksFilesAndDirectoriesAndPrintsEach) {
  const std::string large = NoisyBytes(100'000);
  PutArchive({{.name = "a.txt", .data = "stored"},
              {.name = "empty", .data = ""},
              {.name = "sub/", .data = ""},
              {.name = "no/entry/of/its/own.bin", .data = large, .method = 8},
              {.name = "back\\slash.txt", .data = "both separators"}});
  const Output output = Extract();
  EXPECT_EQ(output.out, Extracts("a.txt") + Extracts("empty") + MakesFolder("sub/") +
                            Extracts("no/entry/of/its/own.bin") + Extracts("back\\slash.txt"));
  EXPECT_EQ(output.err, "");
  EXPECT_THAT(Tree("out"),
              UnorderedElementsAre("a.txt", "empty", "sub/", "no/", "no/entry/", "no/entry/of/",
                                   "no/entry/of/its/", "no/entry/of/its/own.bin", "back/",
                                   "back/slash.txt"));
  EXPECT_EQ(GetFile("out/a.txt"), "stored");
  EXPECT_EQ(GetFile("out/no/entry/of/its/own.bin"), large);
}

TEST_P(ExtractionTest, TheDestinationIsMadeOrFilledOverWhatIsThereAndMayEndInASeparator) {
  PutArchive({});
  const Output output = Extract();
  EXPECT_EQ(output.out + output.err, "");
  EXPECT_TRUE(Exists("out"));
  PutArchive({{.name = "f", .data = "x"}});
  EXPECT_EQ(ExtractTo(Destination() + "\\").out, " extracting: " + Destination() + "\\f\n");
  EXPECT_EQ(ExtractTo(Destination() + "/").out, " extracting: " + Destination() + "/\\f\n");
  EXPECT_EQ(GetFile("out/f"), "x");
  PutFile("out/f", "something longer that was there before");
  PutArchive({{.name = "f", .data = "first"}, {.name = "f", .data = "2nd"}});
  Extract();
  EXPECT_EQ(GetFile("out/f"), "2nd");
}

TEST_P(ExtractionTest, AnArchiveThatCantBeOpenedIsReportedOnStandardError) {
  const std::string noArchives[] = {"", "no archive at all", std::string(100, 'P'),
                                    ZipBytes({{.name = "f", .data = "x"}}).substr(40)};
  for (const std::string& bytes : noArchives) {
    if (bytes.empty()) {
      std::filesystem::remove(FilePath("a.zip"));
    } else {
      PutFile("a.zip", bytes);
    }
    // Twice: the first line must not close the stream for what follows.
    for (int i = 0; i < 2; ++i) {
      const Output output = Extract(false);
      EXPECT_EQ(output.out, "");
      // The line goes to the wide stream, which may know no letters beyond ASCII.
      const bool isAscii = GetParam() != FolderKind::kInternational;
      const std::string shown = isAscii ? Archive() + "\n" : "";
      EXPECT_THAT(output.err, testing::StartsWith("Cannot open " + shown));
      EXPECT_FALSE(Exists("out"));
      EXPECT_EQ(TmvUtilityUnzip()->OpenArchive(Archive().c_str()), nullptr);
    }
  }
  EXPECT_EQ(TmvUtilityUnzip()->OpenArchive(nullptr), nullptr);
  // The record at the end must be whole.
  for (const std::string& whole : {ZipBytes({}), ZipBytes({{.name = "f", .data = "x"}})}) {
    for (size_t cut = 1; cut <= 22; ++cut) {
      PutFile("a.zip", whole.substr(0, whole.size() - cut));
      EXPECT_EQ(TmvUtilityUnzip()->OpenArchive(Archive().c_str()), nullptr) << cut;
    }
  }
}

TEST_P(ExtractionTest, AnEmptyDestinationIsRefused) {
  PutArchive({{.name = "f", .data = "x"}});
  for (const char* destination : {"", "\xFF not UTF-8"}) {
    const Output output = ExtractTo(destination, false);
    EXPECT_EQ(output.out + output.err, "");
  }
  EXPECT_FALSE(TmvUtilityUnzip()->ExtractArchive(Archive().c_str(), nullptr));
}

TEST_P(ExtractionTest, AnOutputThatCantBeOpenedCostsThatEntryAlone) {
  MakeFolder("out/taken.txt");
  PutFile("out/file", "no directory");
  PutArchive({{.name = "taken.txt", .data = "a directory has this name"},
              {.name = "file/below.txt", .data = "a file is in the way"},
              {.name = "not UTF-8 \xE4", .data = "no name"},
              {.name = "last.txt", .data = "comes out"}});
  EXPECT_EQ(Extract().out, Refuses("taken.txt") + Refuses("file/below.txt") +
                               Refuses("not UTF-8 \xE4") + Extracts("last.txt"));
  EXPECT_EQ(GetFile("out/last.txt"), "comes out");
}

// Each is between two good entries: the one before stays, the one after isn't reached.
TEST_P(ExtractionTest, DamagedEntriesEndTheExtraction) {
  const char* const kOpen = "unzOpenCurrentFilePassword";
  const char* const kRead = "unzReadCurrentFile";
  const char* const kClose = "unzCloseCurrentFile";
  const std::string text = std::string(9999, 'x') + "y";
  const std::tuple<const char*, ZipEntry, int, const char*> damages[] = {
      {"a wrong CRC of stored data", {.data = "data", .crc = 1}, -105, kClose},
      {"a wrong CRC of deflated data", {.data = "data", .method = 8, .crc = 1}, -105, kClose},
      {"no deflated data", {.data = "data", .method = 8, .packed = "\xFF\xFF\xFF"}, -3, kRead},
      {"deflated data cut short",
       {.data = text, .method = 8, .packed = Deflated(text, -15).substr(0, 9)},
       -5,
       kRead},
      {"stored data longer than stated", {.data = "data", .size = 2}, -105, kClose},
      {"stored data shorter than stated, and a wrong CRC",
       {.data = "data", .crc = 1, .size = 100},
       -105,
       kClose},
      {"an unknown method", {.data = "data", .method = 99}, -103, kOpen},
      {"encrypted", {.data = "data", .flags = 1, .packed = "twelve bytesdata"}, -105, kClose},
  };
  for (const auto& [what, entry, code, where] : damages) {
    SCOPED_TRACE(what);
    ZipEntry bad = entry;
    bad.name = "bad";
    PutArchive({{.name = "before", .data = "b"}, bad, {.name = "after", .data = "b"}});
    EXPECT_THAT(Extract(false).out, testing::EndsWith(ErrorLine(code, where)));
    EXPECT_TRUE(Exists(Out("before")));
    EXPECT_FALSE(Exists(Out("after")));
    // The file is on disk before its CRC is known.
    EXPECT_EQ(Exists(Out("bad")), where != kOpen);
    TakeFreshDestination();
  }
}

// The CRC decides, as it does for other readers.
TEST_P(ExtractionTest, AnEntryMayHoldLessThanItStates) {
  PutArchive({{.name = "stored", .data = "data", .size = 100},
              {.name = "deflated", .data = "more", .method = 8, .size = 0xFFFFFFFE}});
  Extract();
  EXPECT_EQ(GetFile("out/stored"), "data");
  EXPECT_EQ(GetFile("out/deflated"), "more");
}

// In whole blocks of 8192 bytes.
TEST_P(ExtractionTest, WhatComesBeforeTheDamageIsOnDisk) {
  const std::string text = NoisyBytes(200'000);
  const std::string packed = Deflated(text, -15);
  PutArchive({{.name = "bad", .data = text, .method = 8, .packed = packed.substr(0, 100'000)}});
  Extract(false);
  const std::string left = GetFile("out/bad");
  EXPECT_EQ(left.size() % 8192, 0u);
  EXPECT_NEAR(static_cast<double>(left.size()), 96'000, 8192);
  EXPECT_EQ(left, text.substr(0, left.size()));
}

TEST_P(ExtractionTest, ADamagedDirectoryEndsTheExtraction) {
  PutArchive({{.name = "only", .data = "x"}}, {.count = 3});
  EXPECT_EQ(Extract(false).out, Extracts("only") + ErrorLine(-103, "unzGoToNextFile"));
  PutArchive({}, {.count = 1});
  EXPECT_EQ(Extract(false).out, ErrorLine(-103, "unzGetCurrentFileInfo"));
}

// 64-bit end records, a program before the archive, the flag of UTF-8, extra fields.
TEST_P(ExtractionTest, ReadsArchivesInOtherShapes) {
  const std::string name = "\xC3\xA9t\xC3\xA9 \xE6\xBC\xA2.txt";
  const std::string extra("\x55\x54\x05\0\1TIME", 9);
  const ZipFrame frames[] = {{.zip64End = true}, {.prefix = NoisyBytes(5000)}};
  for (const auto& frame : frames) {
    SCOPED_TRACE(frame.zip64End);
    PutArchive({{.name = name, .flags = 0x800},
                {.name = "extra", .centralExtra = extra, .comment = std::string(3000, 'c')},
                {.name = "broken extra", .centralExtra = "\x01\x02\xFF\xFFx"},
                {.name = "last", .data = "2"}},
               frame);
    Extract();
    EXPECT_THAT(Tree(Out("")), UnorderedElementsAre(name, "extra", "broken extra", "last"));
    EXPECT_EQ(GetFile(Out("last")), "2");
    TakeFreshDestination();
  }
}

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
