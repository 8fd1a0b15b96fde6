// Walking a document by handles, and what handles return where there is nothing.
#include "support/settings_store.h"

namespace {

using namespace test;
using SettingsHandles = SettingsTest;
TEMVAR_IN_A_PLAIN_PLACE(SettingsHandles);

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

  EXPECT_EQ(Compact(store, store->GetMemberName(store->GetMemberBegin(root))), "\"a\"");
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

TEST_P(SettingsHandles, ReturnsNothingForNothing) {
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
  // One null value serves all stores.
  TMVUserDefaults::Value* absent = store->GetValue("absent", nullptr);
  EXPECT_EQ(Compact(store, absent), "null");
  store = Load("{\"a\":null}");
  EXPECT_EQ(store->GetValue("absent", nullptr), absent);
  EXPECT_NE(store->GetValue("a", nullptr), absent);
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
