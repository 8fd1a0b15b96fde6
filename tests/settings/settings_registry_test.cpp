#include <gtest/gtest.h>

#include <string>

#include "support/settings_store.h"

namespace {

using SettingsRegistry = temvar_test::SettingsTest;
INSTANTIATE_TEST_SUITE_P(, SettingsRegistry, testing::Values(temvar_test::FolderKind::kPlain),
                         temvar_test::NameOfFolderKind);

TEST_P(SettingsRegistry, IsEmptyAtFirst) {
  EXPECT_EQ(GetUserDefaults("test"), nullptr);
  EXPECT_EQ(StandardUserDefaults(), nullptr);
  Load("{}");
  EXPECT_EQ(GetUserDefaults("Test"), nullptr);
  EXPECT_EQ(StandardUserDefaults(), nullptr);
}

TEST_P(SettingsRegistry, KnowsStoresByName) {
  PutFile("one.json", "{\"a\":1}");
  EXPECT_TRUE(InitUserDefaults("one", Path("one.json").c_str()));
  EXPECT_FALSE(InitUserDefaults("two", Path("two.json").c_str()));
  EXPECT_TRUE(InitStandardUserDefaults(Path("one.json").c_str()));
  EXPECT_NE(GetUserDefaults("one"), GetUserDefaults("two"));
  EXPECT_EQ(StandardUserDefaults(), GetUserDefaults("UserDefault"));
  EXPECT_EQ(GetUserDefaults("one"), GetUserDefaults("one"));

  // Two stores over one file have a document each.
  GetUserDefaults("one")->SetInt("a", 2, nullptr);
  EXPECT_EQ(StandardUserDefaults()->GetInt("a", nullptr), 1);
}

TEST_P(SettingsRegistry, CopiesNameAndPath) {
  std::string name = "name", path = Path(kFile);
  InitUserDefaults(name.c_str(), path.c_str());
  const std::string kept = path;
  name.assign(name.size(), 'x');
  path.assign(path.size(), 'x');
  ASSERT_NE(GetUserDefaults("name"), nullptr);
  EXPECT_EQ(GetUserDefaults("name")->GetFilePath(), kept);
}

TEST_P(SettingsRegistry, LetsTheLaterStoreAnswer) {
  TMVUserDefaults* first = Load("{\"a\":1}");
  TMVUserDefaults* second = Load("{\"a\":2}");
  EXPECT_NE(first, second);
  EXPECT_EQ(GetUserDefaults("test"), second);
  EXPECT_EQ(first->GetInt("a", nullptr), 1);
  first->SetInt("a", 3, nullptr);
  EXPECT_EQ(Saved(first), "{\n    \"a\": 3\n}");
  EXPECT_EQ(Saved(second), "{\n    \"a\": 2\n}");

  // A store that doesn't load takes the name too.
  EXPECT_FALSE(InitUserDefaults("test", Path("none.json").c_str()));
  EXPECT_FALSE(GetUserDefaults("test")->IsLoaded());
  EXPECT_FALSE(GetUserDefaults("test")->HasKey("a", nullptr));
}

TEST_P(SettingsRegistry, TakesAnyName) {
  for (const char* name : {"", "a", "A", "\xFF", "name with blanks"}) {
    InitUserDefaults(name, Path(kFile).c_str());
    GetUserDefaults(name)->SetString("name", name, nullptr);
  }
  for (const char* name : {"", "a", "A", "\xFF", "name with blanks"}) {
    EXPECT_STREQ(GetUserDefaults(name)->GetString("name", nullptr), name);
  }
  EXPECT_EQ(GetUserDefaults(nullptr), GetUserDefaults(""));
}

}  // namespace
