#include <string>

#include "support/settings_store.h"

namespace {

using namespace test;
using SettingsRegistry = SettingsTest;
TEMVAR_IN_A_PLAIN_PLACE(SettingsRegistry);

TEST_P(SettingsRegistry, KnowsStoresByName) {
  EXPECT_EQ(GetUserDefaults("test"), nullptr);
  PutFile("one.json", "{\"a\":1}");
  std::string path = Path("one.json");
  const std::string kept = path;
  for (std::string name : {"one", "One", "", "\xFF", "name with blanks"}) {
    EXPECT_TRUE(InitUserDefaults(name.c_str(), path.c_str()));
    GetUserDefaults(name.c_str())->SetString("name", name.c_str(), nullptr);
    name.assign(name.size(), 'x');  // Both texts are copied.
  }
  path.assign(path.size(), 'x');
  for (const char* name : {"one", "One", "", "\xFF", "name with blanks"}) {
    EXPECT_STREQ(GetUserDefaults(name)->GetString("name", nullptr), name);
    EXPECT_EQ(GetUserDefaults(name)->GetFilePath(), kept);
  }
  EXPECT_EQ(GetUserDefaults(nullptr), GetUserDefaults(""));

  EXPECT_EQ(StandardUserDefaults(), nullptr);
  EXPECT_TRUE(InitStandardUserDefaults(kept.c_str()));
  EXPECT_EQ(StandardUserDefaults(), GetUserDefaults("UserDefault"));
  // Stores over one file have a document each.
  GetUserDefaults("one")->SetInt("a", 2, nullptr);
  EXPECT_EQ(StandardUserDefaults()->GetInt("a", nullptr), 1);
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

}  // namespace
