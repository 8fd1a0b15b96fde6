// TMVUtilityZip: which files go in, under which names, and what the archive holds.
#include <algorithm>

#include "archives/archive_test.h"

namespace {

using namespace test;
using namespace testing;

class CreationTest : public ArchiveTest {
 protected:
  // Writes "a.zip" and returns its entries.
  std::vector<ZipEntry> Write(const char* exclusions = nullptr) {
    output_ = OutputOf([&] { result_ = zip_->WriteArchive(Archive().c_str(), exclusions); });
    EXPECT_EQ(output_.err, "");
    return ReadZip(GetFile("a.zip"));
  }

  std::vector<std::string> Names(const char* exclusions = nullptr) {
    std::vector<std::string> names;
    for (const ZipEntry& entry : Write(exclusions)) names.push_back(entry.name);
    return names;
  }

  void AddFile(const std::string& file, const std::string& name) {
    zip_->AddFile(Path(file).c_str(), name.c_str());
  }

  void MakeTree() const {
    MakeFolder("data/sub/deeper");
    MakeFolder("data/empty");
    PutFile("data/b.txt", "b");
    PutFile("data/sub/a.txt", "a");
    PutFile("data/sub/deeper/c.txt", "c");
  }

  tmv::Zip zip_ = tmv::MakeZip();
  bool result_ = false;
  Output output_;
};
TEMVAR_IN_EVERY_PLACE(CreationTest);

TEST_P(CreationTest, EntriesHoldWhatTheFormatAsks) {
  const std::string large = NoisyBytes(200'000) + std::string(200'000, 'a');
  PutFile("large.bin", large);
  PutFile("nothing", "");
  AddFile("large.bin", "in/large.bin");
  AddFile("nothing", "");
  const auto entries = Write();
  EXPECT_TRUE(result_);
  EXPECT_EQ(output_.out, "");
  ASSERT_THAT(entries, ElementsAre(Field(&ZipEntry::name, "in/large.bin"),
                                   Field(&ZipEntry::name, "nothing")));
  EXPECT_EQ(entries[0].data, large);
  EXPECT_EQ(entries[0].packed, Deflated(large, -15));
  EXPECT_EQ(entries[1].data, "");
  for (const ZipEntry& entry : entries) {
    EXPECT_EQ(entry.method, 8);
    EXPECT_EQ(entry.flags, 0);
    EXPECT_EQ(entry.externalAttributes, 0u);
    EXPECT_EQ(entry.centralExtra, "");
  }
}

TEST_P(CreationTest, APathIsPackedOnceWithItsLastName) {
  PutFile("a.zip", NoisyBytes(5000));
  EXPECT_THAT(Names(), ElementsAre());
  EXPECT_EQ(GetFile("a.zip").size(), 22u) << "an empty archive replaces what was there";
  PutFile("f.txt", "data");
  AddFile("f.txt", "first");
  AddFile("f.txt", "second");
  EXPECT_THAT(Names(), ElementsAre("second"));
  // Adding goes on from the same list.
  PutFile("g.txt", "more");
  AddFile("g.txt", "third");
  EXPECT_THAT(Names(), ElementsAre("second", "third"));
}

TEST_P(CreationTest, NamesAreInTheByteOrderOfTheirPathsAndInTheAnsiCodePage) {
  for (const char* file : {"b", "a.b", "a", "B", "a.a"}) {
    PutFile(file, file);
    AddFile(file, "");
  }
  AddFile("a.a", "caf\xC3\xA9/\xE2\x82\xAC");
  AddFile("b", "\xE6\xBC\xA2.txt");
  EXPECT_THAT(Names(), ElementsAre("B", "a", "caf\xE9/\x80", "a.b", "?.txt"));
}

TEST_P(CreationTest, ExclusionsGoByTheExtensionOnDisk) {
  for (const char* file : {"a.ZIP", "b.zip", "c.txt", "d.tmp", "e"}) PutFile(file, "x");
  AddFile("a.ZIP", "kept.name");
  AddFile("b.zip", "");
  AddFile("c.txt", "in.zip");
  AddFile("d.tmp", "");
  AddFile("e", "");
  EXPECT_THAT(Names(";.zip;"), ElementsAre("in.zip", "d.tmp", "e"));
  EXPECT_THAT(Names(";.zip;.tmp;"), ElementsAre("in.zip", "e"));
  EXPECT_EQ(Names("").size(), 5u);
}

TEST_P(CreationTest, AFileThatCantBeReadIsReportedAndPackedEmpty) {
  PutFile("there", "data");
  AddFile("gone", "name");
  AddFile("there", "");
  const auto entries = Write();
  EXPECT_TRUE(result_);
  EXPECT_EQ(output_.out, "error in opening " + Path("gone") + " for reading\n");
  ASSERT_THAT(entries,
              ElementsAre(Field(&ZipEntry::name, "name"), Field(&ZipEntry::name, "there")));
  EXPECT_EQ(entries[0].data, "");
  EXPECT_EQ(entries[1].data, "data");
}

TEST_P(CreationTest, AnArchiveInItsOwnTreeIsPackedEmpty) {
  MakeTree();
  PutFile("data/own.zip", "old");
  zip_->AddDirectory(Path("data").c_str(), nullptr);
  const std::string own = Path("data/own.zip");
  const Output output = OutputOf([&] { EXPECT_TRUE(zip_->WriteArchive(own.c_str(), nullptr)); });
  EXPECT_EQ(output.out, "error in opening " + Path("data") + "/own.zip for reading\n");
  EXPECT_EQ(ReadZip(GetFile("data/own.zip")).size(), 4u);
}

TEST_P(CreationTest, AnArchiveThatCantBeMadeIsFalse) {
  for (const std::string& archive : {Path("no/such/folder/a.zip"), Path(), std::string()}) {
    const Output output =
        OutputOf([&] { EXPECT_FALSE(zip_->WriteArchive(archive.c_str(), nullptr)); });
    EXPECT_EQ(output.out, "error opening " + archive + "\n");
  }
  EXPECT_FALSE(zip_->WriteArchive(nullptr, nullptr));
  DestroyTmvUtilityZip(nullptr);
}

TEST_P(CreationTest, AddDirectoryNamesFilesRelativeToTheRoot) {
  MakeTree();
  const auto namesWith = [&](const std::string& directory, const char* root) {
    zip_ = tmv::MakeZip();
    zip_->AddDirectory(directory.c_str(), root);
    return Names();
  };
  const std::string data = Path("data"), parent = Path();
  const std::string longer = data + std::string(1000, 'x');
  std::string slashed = data;
  std::replace(slashed.begin(), slashed.end(), '\\', '/');
  EXPECT_THAT(namesWith(data, ""), ElementsAre("b.txt", "sub/a.txt", "sub/deeper/c.txt"));
  for (const char* ending : {"", "/", "\\"}) {
    EXPECT_THAT(namesWith(data + ending, nullptr),
                ElementsAre("b.txt", "sub/a.txt", "sub/deeper/c.txt"));
  }
  EXPECT_THAT(namesWith(data, parent.c_str()),
              ElementsAre("data/b.txt", "data/sub/a.txt", "data/sub/deeper/c.txt"));
  // A root that no path goes beyond leaves the bare names.
  EXPECT_THAT(namesWith(slashed, longer.c_str()), ElementsAre("b.txt", "a.txt", "c.txt"));
  for (const std::string& nothing : {std::string(), Path("missing"), Path("data/b.txt")}) {
    EXPECT_THAT(namesWith(nothing, nullptr), ElementsAre());
  }
}

TEST_P(CreationTest, LinksThatLeadBackEndTheWalk) {
  MakeTree();
  std::error_code noLinks;
  std::filesystem::create_directory_symlink(FilePath("data"), FilePath("data/sub/back"), noLinks);
  if (noLinks) GTEST_SKIP() << "this system lets the user make no links: " << noLinks.message();
  std::filesystem::create_directory_symlink(FilePath("data/sub"), FilePath("data/sub/self"));
  MakeFolder("elsewhere");
  PutFile("elsewhere/d.txt", "d");
  std::filesystem::create_directory_symlink(FilePath("elsewhere"), FilePath("data/there"));
  zip_->AddDirectory(Path("data").c_str(), nullptr);
  EXPECT_THAT(Names(), ElementsAre("b.txt", "sub/a.txt", "sub/deeper/c.txt", "there/d.txt"));
}

// Each way through the links would be a path of its own: some 100,000 here.
TEST_P(CreationTest, ALinkedFolderIsWalkedOnce) {
  const std::string letters = "abcdefgh";
  std::error_code noLinks;
  for (const char name : letters) {
    const std::string folder = std::string("data/") + name + "/";
    MakeFolder(folder);
    PutFile(folder + "file", "x");
    for (const char to : letters) {
      std::filesystem::create_directory_symlink(FilePath(std::string("data/") + to),
                                                FilePath(folder + to), noLinks);
      if (noLinks) GTEST_SKIP() << "this system lets the user make no links: " << noLinks.message();
    }
  }
  zip_->AddDirectory(Path("data").c_str(), nullptr);
  EXPECT_THAT(Names(), SizeIs(AllOf(Ge(8u), Le(16u))));
}

}  // namespace
