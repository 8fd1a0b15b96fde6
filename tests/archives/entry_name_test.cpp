// ExtractArchive on names that lead out of the destination, and on long ones.
#include <algorithm>

#include "archives/archive_test.h"

namespace {

using namespace test;
using testing::UnorderedElementsAre;

constexpr bool kWindows = std::filesystem::path::preferred_separator == '\\';

class EntryNameTest : public ArchiveTest {
 protected:
  // What an archive with a hostile entry between two good ones may do: all up to it, and nothing
  // outside of "out".
  void ExpectRefused(const std::string& name) const {
    PutArchive(
        {{.name = "good", .data = "1"}, {.name = name, .data = "!"}, {.name = "x", .data = "2"}});
    const std::set<std::string> before = Tree("");
    const Extraction run = Extract();
    EXPECT_FALSE(run.result);
    const std::string shown = Full(name.c_str());
    const bool isDirectory = name.back() == '/' || name.back() == '\\';
    EXPECT_EQ(run.output.out, " extracting: " + Full("good") + "\n" +
                                  (isDirectory ? "creating directory: " : " extracting: ") + shown +
                                  "\nerror opening " + shown + "\n");
    EXPECT_THAT(Tree("out"), UnorderedElementsAre("good"));
    std::filesystem::remove_all(FilePath("out"));
    EXPECT_EQ(Tree(""), before);
  }
};
TEMVAR_IN_A_PLAIN_PLACE(EntryNameTest);

TEST_P(EntryNameTest, NamesThatLeadOutAreRefused) {
  using namespace std::string_literals;
  std::vector<std::string> names = {// Up, also after some way down.
                                    "../x", "..\\x", "a/../../x", "a/../../out/x", "./../x",
                                    "a//../../x", "..", "a/..\\..", "../", "NUL/../../x",
                                    // Absolute, drives, servers.
                                    "/x", "\\x", "\\\\server\\share\\x", "//server/share/x",
                                    "\\\\?\\C:\\x", "\\\\.\\NUL", "C:\\x", "c:/x",
                                    // A NUL cuts the path after the name that was looked at.
                                    "x\0/../y"s, "x\0"s};
  if (kWindows) {
    // Up, with what the system drops from the end of a component; drives without a separator.
    names.insert(names.end(),
                 {".. /x", "../. ./x", "... /x", "..../x", "..\\ .\\x", ". ", "C:x", "a:b"});
  }
  for (const std::string& name : names) {
    SCOPED_TRACE(testing::PrintToString(name));
    ExpectRefused(name);
  }
}

// Devices, streams, and names of nothing: none is a file on Windows, and most are ones elsewhere.
TEST_P(EntryNameTest, ReservedNamesCostTheirEntryAlone) {
  const char* const nowhere[] = {"a/..", "a/.", "."};
  const char* const reserved[] = {
      "NUL",     "nul",           "con",         "PRN",       "aux.c",   "LPT1",       "conout$",
      "com9",    "LPT0",          "COM\xC2\xB9", "CONIN$",    "NUL.txt", "NUL .txt",   "NUL.",
      "d/nul/x", "d\\Con.tar.gz", "COM1 ",       "xy:stream", "d/C:x",   "d/x::$DATA", " /x"};
  const auto expect = [this](const char* name, bool isTaken) {
    SCOPED_TRACE(name);
    PutArchive({{.name = name, .data = "1"}, {.name = "last", .data = "2"}});
    const Extraction run = Extract();
    EXPECT_TRUE(run.result);
    EXPECT_EQ(run.output.out, (isTaken ? " extracting: " : "error opening ") + Full(name) +
                                  "\n extracting: " + Full("last") + "\n");
    std::string place = name;
    std::replace(place.begin(), place.end(), '\\', '/');
    // Windows drops dots from the end of a name.
    if (kWindows && isTaken) place.erase(place.find_last_not_of('.') + 1);
    EXPECT_EQ(Tree("out").count(place), isTaken ? 1u : 0u);
    std::filesystem::remove_all(FilePath("out"));
  };
  const char* const likeIt[] = {"..a",   "a..",    "a..b/c", ".hidden", "...a/...b",
                                "NULL",  "CONS/1", "COM10",  "COM",     "LPTA",
                                "x.NUL", "~/a",    "$a",     "%TEMP%",  " leading"};
  for (const char* name : nowhere) expect(name, false);
  for (const char* name : reserved) expect(name, !kWindows);
  for (const char* name : likeIt) expect(name, true);
  if (!kWindows) {
    for (const char* name : {"a:b", "C:x", "...", ". ", "d/.. /x"}) expect(name, true);
  }
  PutArchive({{.name = "d/nul/"}, {.name = "last"}});
  EXPECT_THAT(Extract().output.out,
              testing::HasSubstr("creating directory: " + Full("d/nul/") + "\n" +
                                 (kWindows ? "error opening " + Full("d/nul/") + "\n" : "")));
}

TEST_P(EntryNameTest, NamesMayGoUpInsideTheDestination) {
  PutArchive({{.name = "a/b/../c"}, {.name = "x/../y/"}, {.name = "./a/./d"}, {.name = "a//e"}});
  const Extraction run = Extract();
  EXPECT_TRUE(run.result);
  EXPECT_EQ(run.output.out,
            " extracting: " + Full("a/b/../c") + "\ncreating directory: " + Full("x/../y/") +
                "\n extracting: " + Full("./a/./d") + "\n extracting: " + Full("a//e") + "\n");
  EXPECT_THAT(Tree("out"), UnorderedElementsAre("a/", "a/c", "a/d", "a/e", "y/"));
}

TEST_P(EntryNameTest, LinksInTheDestinationAreNotFollowed) {
  MakeFolder("out/real");
  MakeFolder("outside");
  PutFile("outside/kept.txt", "kept");
  std::error_code noLinks;
  std::filesystem::create_directory_symlink(FilePath("outside"), FilePath("out/link"), noLinks);
  if (noLinks) GTEST_SKIP() << "this system lets the user make no links: " << noLinks.message();
  std::filesystem::create_directory_symlink(FilePath("outside"), FilePath("out/real/deep"));
  std::filesystem::create_symlink(FilePath("outside/kept.txt"), FilePath("out/file.txt"));
  std::filesystem::create_symlink(FilePath("outside/new.txt"), FilePath("out/dangling.txt"));
  for (const char* name :
       {"link/new.txt", "link/kept.txt", "link\\new.txt", "link/", "link/sub/", "real/deep/new.txt",
        "real/../link/x", "none/../link/x", "file.txt", "dangling.txt"}) {
    SCOPED_TRACE(name);
    PutArchive({{.name = "real/ok", .data = "1"},
                {.name = name, .data = "overwritten"},
                {.name = "last", .data = "2"}});
    const Extraction run = Extract();
    EXPECT_TRUE(run.result);
    EXPECT_THAT(run.output.out, testing::EndsWith("error opening " + Full(name) +
                                                  "\n extracting: " + Full("last") + "\n"));
    EXPECT_THAT(Tree("outside"), UnorderedElementsAre("kept.txt"));
    EXPECT_EQ(GetFile("outside/kept.txt"), "kept");
  }
  EXPECT_EQ(GetFile("out/real/ok"), "1");
}

TEST_P(EntryNameTest, ADestinationThatIsALinkItselfIsTheHostsChoice) {
  MakeFolder("real");
  std::error_code noLinks;
  std::filesystem::create_directory_symlink(FilePath("real"), FilePath("out"), noLinks);
  if (noLinks) GTEST_SKIP() << "this system lets the user make no links: " << noLinks.message();
  PutArchive({{.name = "a/b", .data = "x"}});
  EXPECT_TRUE(Extract().result);
  EXPECT_EQ(GetFile("real/a/b"), "x");
}

TEST_P(EntryNameTest, LongNamesAreWhole) {
  // Around the size of minizip's own name buffer, and as long as a name of a file may be.
  for (const size_t length : {200u, 254u}) {
    const std::string name(length, 'n');
    PutArchive({{.name = name, .data = "long"}, {.name = "b", .data = "2"}});
    const Extraction run = Extract();
    EXPECT_EQ(run.output.out, " extracting: " + Full(name) + "\n extracting: " + Full("b") + "\n");
  }
  // Too long for any file system: no file, but nothing runs over, and the next entry comes.
  for (const size_t length : {255u, 256u, 257u, 300u, 5000u, 65535u}) {
    SCOPED_TRACE(length);
    const std::string name = "d/" + std::string(length - 2, 'n');
    PutArchive({{.name = name, .data = "long"}, {.name = "b", .data = "2"}});
    const Extraction run = Extract();
    EXPECT_TRUE(run.result);
    EXPECT_THAT(run.output.out, testing::HasSubstr(Full(name) + "\n"));
    EXPECT_THAT(run.output.out, testing::EndsWith(" extracting: " + Full("b") + "\n"));
  }
}

TEST_P(EntryNameTest, TheArchiveItselfIsNoOutput) {
  PutArchive({{.name = "a.zip", .data = "2"}, {.name = "b", .data = "3"}});
  const std::string archive = GetFile("a.zip");
  const Extraction run = ExtractTo(Path());
  EXPECT_TRUE(run.result);
  const std::string folder = Path() + '\\';
  EXPECT_EQ(run.output.out, "error opening " + folder + "a.zip\n extracting: " + folder + "b\n");
  EXPECT_EQ(GetFile("a.zip"), archive);
}

}  // namespace
