// ExtractArchive: what is unpacked, what is printed, what a damaged archive does.
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
  const Extraction run = Extract();
  EXPECT_TRUE(run.result);
  EXPECT_EQ(run.output.out, " extracting: " + Full("a.txt") + "\n extracting: " + Full("empty") +
                                "\ncreating directory: " + Full("sub/") +
                                "\n extracting: " + Full("no/entry/of/its/own.bin") +
                                "\n extracting: " + Full("back\\slash.txt") + "\n");
  EXPECT_EQ(run.output.err, "");
  EXPECT_THAT(Tree("out"),
              UnorderedElementsAre("a.txt", "empty", "sub/", "no/", "no/entry/", "no/entry/of/",
                                   "no/entry/of/its/", "no/entry/of/its/own.bin", "back/",
                                   "back/slash.txt"));
  EXPECT_EQ(GetFile("out/a.txt"), "stored");
  EXPECT_EQ(GetFile("out/no/entry/of/its/own.bin"), large);
}

TEST_P(ExtractionTest, ReplacesWhatIsThereAndTakesTheLastOfTwoEqualNames) {
  MakeFolder("out");
  PutFile("out/a.txt", "something longer that was there before");
  PutArchive({{.name = "a.txt", .data = "first"}, {.name = "a.txt", .data = "2nd"}});
  EXPECT_TRUE(Extract().result);
  EXPECT_EQ(GetFile("out/a.txt"), "2nd");
}

TEST_P(ExtractionTest, TheDestinationIsMadeAndMayEndInASeparator) {
  PutArchive({});
  const Extraction run = Extract();
  EXPECT_TRUE(run.result);
  EXPECT_EQ(run.output.out + run.output.err, "");
  EXPECT_TRUE(Exists("out"));
  PutArchive({{.name = "f", .data = "x"}});
  EXPECT_EQ(ExtractTo(Destination() + "\\").output.out, " extracting: " + Destination() + "\\f\n");
  EXPECT_EQ(ExtractTo(Destination() + "/").output.out, " extracting: " + Destination() + "/\\f\n");
  EXPECT_EQ(GetFile("out/f"), "x");
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
      const Extraction run = Extract();
      EXPECT_FALSE(run.result);
      EXPECT_EQ(run.output.out, "");
      // The line goes to the wide stream, which may know no letters beyond ASCII.
      const bool isAscii = GetParam() != FolderKind::kInternational;
      EXPECT_THAT(run.output.err,
                  testing::StartsWith("Cannot open " + (isAscii ? Archive() + "\n" : "")));
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
    const Extraction run = ExtractTo(destination);
    EXPECT_FALSE(run.result);
    EXPECT_EQ(run.output.out + run.output.err, "");
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
  const Extraction run = Extract();
  EXPECT_TRUE(run.result);
  EXPECT_EQ(run.output.out, "error opening " + Full("taken.txt") + "\nerror opening " +
                                Full("file/below.txt") + "\nerror opening " +
                                Full("not UTF-8 \xE4") + "\n extracting: " + Full("last.txt") +
                                "\n");
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
    const Extraction run = Extract();
    EXPECT_FALSE(run.result);
    EXPECT_THAT(run.output.out, testing::EndsWith(ErrorLine(code, where)));
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
  EXPECT_TRUE(Extract().result);
  EXPECT_EQ(GetFile("out/stored"), "data");
  EXPECT_EQ(GetFile("out/deflated"), "more");
}

// In whole blocks of 8192 bytes.
TEST_P(ExtractionTest, WhatComesBeforeTheDamageIsOnDisk) {
  const std::string text = NoisyBytes(200'000);
  const std::string packed = Deflated(text, -15);
  PutArchive({{.name = "bad", .data = text, .method = 8, .packed = packed.substr(0, 100'000)}});
  EXPECT_FALSE(Extract().result);
  const std::string left = GetFile("out/bad");
  EXPECT_EQ(left.size() % 8192, 0u);
  EXPECT_NEAR(static_cast<double>(left.size()), 96'000, 8192);
  EXPECT_EQ(left, text.substr(0, left.size()));
}

TEST_P(ExtractionTest, ADamagedDirectoryEndsTheExtraction) {
  PutArchive({{.name = "only", .data = "x"}}, {.count = 3});
  Extraction run = Extract();
  EXPECT_FALSE(run.result);
  EXPECT_EQ(run.output.out,
            " extracting: " + Full("only") + "\n" + ErrorLine(-103, "unzGoToNextFile"));

  PutArchive({}, {.count = 1});
  run = Extract();
  EXPECT_FALSE(run.result);
  EXPECT_EQ(run.output.out, ErrorLine(-103, "unzGetCurrentFileInfo"));
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
    EXPECT_TRUE(Extract().result);
    EXPECT_THAT(Tree(Out("")), UnorderedElementsAre(name, "extra", "broken extra", "last"));
    EXPECT_EQ(GetFile(Out("last")), "2");
    TakeFreshDestination();
  }
}

}  // namespace
