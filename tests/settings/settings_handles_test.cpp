// Walking a document by handles, and what handles give where there is nothing.
#include <gtest/gtest.h>

#include <string>

#include "support/settings_store.h"

namespace {

using SettingsHandles = temvar_test::SettingsTest;
INSTANTIATE_TEST_SUITE_P(, SettingsHandles, testing::Values(temvar_test::FolderKind::kPlain),
                         temvar_test::NameOfFolderKind);

TEST_P(SettingsHandles, WalksMembersInTheirOrder) {
  TMVUserDefaults* store = Load(R"({"a":1,"b":"two","c":{"d":[]},"a":4})");
  TMVUserDefaults::Value* root = store->GetRootValue();
  TMVUserDefaults::Member* const end = store->GetMemberEnd(root);
  std::string seen;
  for (auto* member = store->GetMemberBegin(root); member != end;
       member = store->AdvanceMember(member, 1)) {
    seen.append(store->GetValueString(store->GetMemberName(member))).append("=");
    seen.append(Compact(store, store->GetMemberValue(member))).append(";");
  }
  EXPECT_EQ(seen, R"(a=1;b="two";c={"d":[]};a=4;)");

  auto* last = store->AdvanceMember(store->GetMemberBegin(root), 3);
  EXPECT_EQ(store->GetValueInt(store->GetMemberValue(last)), 4);
  EXPECT_EQ(store->AdvanceMember(last, 1), end);
  EXPECT_EQ(store->AdvanceMember(last, 0), last);
}

TEST_P(SettingsHandles, ReachesElements) {
  TMVUserDefaults* store = Load(R"({"list":[10,"x",[30]],"none":[],"text":"abc"})");
  TMVUserDefaults::Value* list = store->GetValue("list", nullptr);
  EXPECT_EQ(store->GetArraySize(list), 3u);
  EXPECT_EQ(store->GetValueInt(store->GetArrayElement(list, 0)), 10);
  EXPECT_STREQ(store->GetValueString(store->GetArrayElement(list, 1)), "x");
  EXPECT_EQ(store->GetArraySize(store->GetArrayElement(list, 2)), 1u);
  for (const uint32_t index : {3u, 4u, 0x10000000u, UINT32_MAX}) {
    EXPECT_EQ(store->GetArrayElement(list, index), nullptr) << index;
  }
  EXPECT_EQ(store->GetArrayElement(store->GetValue("none", nullptr), 0), nullptr);
  for (auto* other : {store->GetRootValue(), store->GetValue("text", nullptr),
                      store->GetValue("absent", nullptr)}) {
    EXPECT_EQ(store->GetArraySize(other), 0u);
    EXPECT_EQ(store->GetArrayElement(other, 0), nullptr);
  }
}

TEST_P(SettingsHandles, GivesNothingForNothing) {
  TMVUserDefaults* store = Load(R"({"object":{},"array":[1],"text":"abc"})");
  EXPECT_EQ(store->GetMemberBegin(store->GetValue("object", nullptr)),
            store->GetMemberEnd(store->GetValue("object", nullptr)));
  for (auto* value :
       {store->GetValue("array", nullptr), store->GetValue("text", nullptr),
        store->GetValue("absent", nullptr), static_cast<TMVUserDefaults::Value*>(nullptr)}) {
    EXPECT_EQ(store->GetMemberBegin(value), nullptr);
    EXPECT_EQ(store->GetMemberEnd(value), nullptr);
    EXPECT_EQ(store->GetValueInt(value), 0);
  }
  EXPECT_EQ(store->AdvanceMember(nullptr, 3), nullptr);
  EXPECT_EQ(store->GetMemberName(nullptr), nullptr);
  EXPECT_EQ(store->GetMemberValue(nullptr), nullptr);
  EXPECT_EQ(store->GetArraySize(nullptr), 0u);
  EXPECT_EQ(store->GetArrayElement(nullptr, 0), nullptr);
  EXPECT_STREQ(store->GetValueString(nullptr), "");
  EXPECT_EQ(Compact(store, nullptr), "null");
}

TEST_P(SettingsHandles, SharesOneNullValue) {
  TMVUserDefaults* store = Load("{\"a\":null}");
  TMVUserDefaults::Value* absent = store->GetValue("absent", nullptr);
  ASSERT_NE(absent, nullptr);
  EXPECT_EQ(store->GetValue("other", nullptr), absent);
  EXPECT_EQ(Load("{}")->GetValue("absent", nullptr), absent);
  EXPECT_NE(store->GetValue("a", nullptr), absent);
  EXPECT_EQ(Compact(store, absent), "null");
}

TEST_P(SettingsHandles, StringifiesAnyValueAnew) {
  TMVUserDefaults* store = Load(R"({"o":{"a": 1, "b": [true, null, 0.5]},"t":"\u0000\n/","i":-3})");
  TMVUserDefaults::Value* object = store->GetValue("o", nullptr);
  char* first = store->StringifyValue(object);
  char* second = store->StringifyValue(object);
  EXPECT_STREQ(first, R"({"a":1,"b":[true,null,0.5]})");
  EXPECT_STREQ(second, first);
  EXPECT_NE(second, first);
  TmvUtilityString()->FreeString(first);
  TmvUtilityString()->FreeString(second);
  EXPECT_EQ(Compact(store, store->GetValue("t", nullptr)), "\"\\u0000\\n/\"");
  EXPECT_EQ(Compact(store, store->GetValue("i", nullptr)), "-3");
  EXPECT_EQ(Compact(store, store->GetMemberName(store->GetMemberBegin(object))), "\"a\"");
}

TEST_P(SettingsHandles, ReadsEmptyAfterTheRelease) {
  TMVUserDefaults* store = Load(R"({"a":1,"t":"x,1","o":{"b":2}})");
  const std::string path = store->GetFilePath();
  store->ReleaseDocument();
  store->ReleaseDocument();
  EXPECT_TRUE(store->IsLoaded());
  EXPECT_EQ(store->GetFilePath(), path);

  store->SetInt("a", 2, nullptr);
  store->SetString("t", "y", nullptr);
  EXPECT_FALSE(store->HasKey("a", nullptr));
  EXPECT_EQ(store->GetInt("a", nullptr), 0);
  EXPECT_STREQ(store->GetString("t", nullptr), "");
  EXPECT_EQ(store->GetIntTriple("t", nullptr).Second, 0);
  TMVUserDefaults::Value* root = store->GetRootValue();
  EXPECT_EQ(root, store->GetValue("a", nullptr));
  EXPECT_EQ(Compact(store, root), "null");
  EXPECT_EQ(store->GetMemberBegin(root), nullptr);
  store->SetInt("a", 2, root);
  EXPECT_EQ(Compact(store), "null");
}

}  // namespace
