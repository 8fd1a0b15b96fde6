// ExtractArchive on names that lead out of the destination, on long ones, and on folders as deep as
// a small archive can make them.
#include <pthread.h>

#include <functional>

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
    const std::string shown = name.c_str();
    const bool isDirectory = name.back() == '/' || name.back() == '\\';
    EXPECT_EQ(
        Extract(false).out,
        Extracts("good") + (isDirectory ? MakesFolder(shown) : Extracts(shown)) + Refuses(shown));
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
    EXPECT_EQ(Extract().out, (isTaken ? Extracts(name) : Refuses(name)) + Extracts("last"));
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
  EXPECT_EQ(Extract().out,
            MakesFolder("d/nul/") + (kWindows ? Refuses("d/nul/") : "") + Extracts("last"));
}

TEST_P(EntryNameTest, NamesMayGoUpInsideTheDestination) {
  PutArchive({{.name = "a/b/../c"}, {.name = "x/../y/"}, {.name = "./a/./d"}, {.name = "a//e"}});
  EXPECT_EQ(Extract().out,
            Extracts("a/b/../c") + MakesFolder("x/../y/") + Extracts("./a/./d") + Extracts("a//e"));
  EXPECT_THAT(Tree("out"), UnorderedElementsAre("a/", "a/c", "a/d", "a/e", "y/"));
}

TEST_P(EntryNameTest, NoLinkIsFollowedBelowADestinationThatMayBeOneItself) {
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
    EXPECT_THAT(Extract().out, testing::EndsWith(Refuses(name) + Extracts("last")));
    EXPECT_THAT(Tree("outside"), UnorderedElementsAre("kept.txt"));
    EXPECT_EQ(GetFile("outside/kept.txt"), "kept");
  }
  EXPECT_EQ(GetFile("out/real/ok"), "1");

  TakeFreshDestination();
  std::filesystem::create_directory_symlink(FilePath("outside"), FromUtf8(Destination()));
  PutArchive({{.name = "a/b", .data = "the host's choice"}});
  Extract();
  EXPECT_EQ(GetFile("outside/a/b"), "the host's choice");
}

TEST_P(EntryNameTest, LongNamesAreWhole) {
  // Around the size of minizip's own name buffer, and as long as a name of a file may be.
  for (const size_t length : {200u, 254u}) {
    const std::string name(length, 'n');
    PutArchive({{.name = name, .data = "long"}, {.name = "b", .data = "2"}});
    EXPECT_EQ(Extract().out, Extracts(name) + Extracts("b"));
  }
  // Too long for any file system: no file, but nothing runs over, and the next entry comes.
  for (const size_t length : {255u, 256u, 257u, 300u, 5000u, 65535u}) {
    SCOPED_TRACE(length);
    const std::string name = "d/" + std::string(length - 2, 'n');
    PutArchive({{.name = name, .data = "long"}, {.name = "b", .data = "2"}});
    EXPECT_THAT(Extract().out, testing::EndsWith(Full(name) + "\n" + Extracts("b")));
  }
}

TEST_P(EntryNameTest, TheArchiveItselfIsNoOutput) {
  PutArchive({{.name = "a.zip", .data = "2"}, {.name = "b", .data = "3"}});
  const std::string archive = GetFile("a.zip");
  const std::string folder = Path() + '\\';
  EXPECT_EQ(ExtractTo(Path()).out,
            "error opening " + folder + "a.zip\n extracting: " + folder + "b\n");
  EXPECT_EQ(GetFile("a.zip"), archive);
}

class DeepArchivesTest : public ArchiveTest {
 protected:
  static std::string Deep(int depth, const std::string& file) {
    std::string name;
    for (int i = 0; i < depth; ++i) name += "a/";
    return name + file;
  }

  // Folder by folder from the top: no runtime removes this by itself.
  void TearDown() override {
    while (Exists("out/a/a")) {
      std::filesystem::rename(FilePath("out/a/a"), FilePath("out/next"));
      std::filesystem::remove_all(FilePath("out/a"));
      std::filesystem::rename(FilePath("out/next"), FilePath("out/a"));
    }
  }
};
TEMVAR_IN_A_PLAIN_PLACE(DeepArchivesTest);

// Each level was tried from the top again, with all below it: 36 s on the machine that found it.
TEST_P(DeepArchivesTest, AFileInTheWayEndsTheLook) {
  const std::string deep = Deep(1900, "f");
  PutArchive({{.name = "a", .data = "x"}, {.name = deep}, {.name = "last"}});
  for (int i = 0; i < 2; ++i) {
    EXPECT_THAT(Extract().out, testing::EndsWith(Refuses(deep) + Extracts("last")));
  }
}

#ifndef _WIN32  // Wine takes a minute for so many levels.
TEST_P(DeepArchivesTest, AFolderEntryMakesAllThatIsMissing) {
  const std::string deep = Deep(1010, "");
  PutArchive({{.name = deep}});
  EXPECT_EQ(Extract().out, MakesFolder(deep));
  EXPECT_TRUE(TmvUtilityFile()->IsDirectory(Full(deep).c_str()));
}
#endif

void* AddAndWrite(void* test) {
  (*static_cast<std::function<void()>*>(test))();
  return nullptr;
}

TEST_P(DeepArchivesTest, ADeepTreeIsPackedOnASmallStack) {
  PutArchive({{.name = Deep(400, "f"), .data = "deep"}, {.name = Deep(400, "g"), .data = "too"}});
  Extract();
  size_t entries = 0;
  std::function<void()> pack = [&] {
    const tmv::Zip zip = tmv::MakeZip();
    zip->AddDirectory(Destination().c_str(), nullptr);
    EXPECT_TRUE(zip->WriteArchive(Path("b.zip").c_str(), nullptr));
    entries = ReadZip(GetFile("b.zip")).size();
  };
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 192 << 10), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, AddAndWrite, &pack), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(entries, 2u);
}

}  // namespace
