// Folders as deep as a small archive can make them.
#include <pthread.h>

#include <functional>

#include "archives/archive_test.h"

namespace {

using namespace test;

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
    EXPECT_THAT(Extract().output.out, testing::EndsWith("error opening " + Full(deep) +
                                                        "\n extracting: " + Full("last") + "\n"));
  }
}

#ifndef _WIN32  // Wine takes a minute for so many levels.
TEST_P(DeepArchivesTest, AFolderEntryMakesAllThatIsMissing) {
  const std::string deep = Deep(1010, "");
  PutArchive({{.name = deep}});
  const Extraction extraction = Extract();
  EXPECT_TRUE(extraction.result);
  EXPECT_EQ(extraction.output.out, "creating directory: " + Full(deep) + "\n");
  EXPECT_TRUE(TmvUtilityFile()->IsDirectory(Full(deep).c_str()));
}
#endif

void* AddAndWrite(void* test) {
  (*static_cast<std::function<void()>*>(test))();
  return nullptr;
}

TEST_P(DeepArchivesTest, ADeepTreeIsPackedOnASmallStack) {
  PutArchive({{.name = Deep(400, "f"), .data = "deep"}, {.name = Deep(400, "g"), .data = "too"}});
  EXPECT_TRUE(Extract().result);
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
