// The operations that work by key: typed reads, setters, parents. Walking a document by handles,
// and what handles return where there is nothing.
#include <vector>

#include "support/settings_store.h"

namespace {

using namespace test;
using SettingsMembers = SettingsTest;
TEMVAR_IN_A_PLAIN_PLACE(SettingsMembers);

constexpr char kAllTypes[] =
    R"({"text":"abc","empty":"","int":-7,"big":4294967298,"huge":18446744073709551614,)"
    R"("low":-9223372036854775807,"double":2.5,"whole":3.0,"yes":true,"no":false,"null":null,)"
    R"("object":{"int":8,"inner":{"text":"x"}},"array":[1,"two"]})";

TEST_P(SettingsMembers, ReadsAndConvertsNothing) {
  TMVUserDefaults* store = Load(kAllTypes);
  const std::tuple<const char*, const char*, int32_t> table[] = {
      {"text", "abc", 0}, {"empty", "", 0},  {"int", "", -7},  {"big", "", 2},    {"huge", "", -2},
      {"low", "", 1},     {"double", "", 0}, {"whole", "", 0}, {"yes", "", 0},    {"no", "", 0},
      {"null", "", 0},    {"object", "", 0}, {"array", "", 0}, {"absent", "", 0}, {"TEXT", "", 0},
      {"", "", 0},        {nullptr, "", 0},
  };
  for (const auto& [key, text, number] : table) {
    const std::string name = key == nullptr ? "null" : key;
    EXPECT_STREQ(store->GetString(key, nullptr), text) << name;
    EXPECT_EQ(store->GetInt(key, nullptr), number) << name;
    const bool there = key != nullptr && name != "absent" && name != "TEXT" && !name.empty();
    EXPECT_EQ(store->HasKey(key, nullptr), there) << name;
    EXPECT_STREQ(store->GetValueString(store->GetValue(key, nullptr)), text) << name;
    EXPECT_EQ(store->GetValueInt(store->GetValue(key, nullptr)), number) << name;
  }
}

TEST_P(SettingsMembers, SetsWhateverWasThere) {
  for (const char* key :
       {"text", "empty", "int", "double", "yes", "null", "object", "array", "new"}) {
    TMVUserDefaults* store = Load(kAllTypes);
    store->SetString(key, "changed", nullptr);
    EXPECT_STREQ(store->GetString(key, nullptr), "changed") << key;
    EXPECT_EQ(store->GetInt(key, nullptr), 0);
    for (const int32_t number : {0, -1, INT32_MAX, INT32_MIN}) {
      store->SetInt(key, number, nullptr);
      EXPECT_EQ(store->GetInt(key, nullptr), number) << key;
      EXPECT_STREQ(store->GetString(key, nullptr), "");
    }
  }
  TMVUserDefaults* store = Load("{}");
  store->SetString("", "empty key", nullptr);
  store->SetString("null", nullptr, nullptr);
  store->SetString(nullptr, "x", nullptr);
  store->SetInt(nullptr, 1, nullptr);
  EXPECT_EQ(Compact(store), R"({"":"empty key","null":""})");
}

TEST_P(SettingsMembers, WorksOnAnyObject) {
  TMVUserDefaults* store = Load(kAllTypes);
  TMVUserDefaults::Value* object = store->GetValue("object", nullptr);
  TMVUserDefaults::Value* inner = store->GetValue("inner", object);
  EXPECT_EQ(store->GetInt("int", object), 8);
  EXPECT_STREQ(store->GetString("text", inner), "x");
  store->SetString("text", "y", inner);
  store->SetInt("more", 1, inner);
  EXPECT_EQ(Compact(store, object), R"({"int":8,"inner":{"text":"y","more":1}})");
  EXPECT_STREQ(store->GetString("text", store->GetRootValue()), "abc");
}

// What is no object has no members and takes none: neither the shared null value, which is
// everybody's, nor a root that is an array.
TEST_P(SettingsMembers, FindsAndSetsNothingOutsideObjects) {
  TMVUserDefaults* store = Load(kAllTypes);
  const std::string before = Compact(store);
  for (const char* key : {"text", "int", "yes", "null", "array", "absent"}) {
    TMVUserDefaults::Value* parent = store->GetValue(key, nullptr);
    store->SetString("a", "b", parent);
    store->SetInt("a", 1, parent);
    EXPECT_FALSE(store->HasKey("a", parent)) << key;
    EXPECT_STREQ(store->GetString("a", parent), "");
    EXPECT_EQ(Compact(store, store->GetValue("a", parent)), "null");
  }
  EXPECT_EQ(Compact(store), before);

  store = Load("[{\"a\":1}]");
  store->SetInt("b", 2, nullptr);
  EXPECT_FALSE(store->HasKey("a", nullptr));
  EXPECT_EQ(Compact(store), "[{\"a\":1}]");
  EXPECT_EQ(store->GetInt("a", store->GetArrayElement(store->GetRootValue(), 0)), 1);
}

TEST_P(SettingsMembers, ComparesKeysByTheirBytes) {
  TMVUserDefaults* store = Load(R"({"a\u0000b":1,"a":2,"ab":3,"\u00e9":4})");
  EXPECT_EQ(store->GetInt("a", nullptr), 2);
  EXPECT_EQ(store->GetInt("ab", nullptr), 3);
  EXPECT_EQ(store->GetInt("\xC3\xA9", nullptr), 4);
  EXPECT_FALSE(store->HasKey("\xE9", nullptr));
}

TEST_P(SettingsMembers, SplitsTriples) {
  TMVUserDefaults* store = Load("{\"number\":789}");
  const auto tripleOf = [store](const char* text) {
    store->SetString("key", text, nullptr);
    const IntTriple triple = store->GetIntTriple("key", nullptr);
    EXPECT_STREQ(store->GetString("key", nullptr), text);
    return std::vector<int64_t>{triple.First, triple.Second, triple.Third};
  };
  using Numbers = std::vector<int64_t>;
  const std::pair<const char*, Numbers> table[] = {
      {"7,8,9", {7, 8, 9}},   {"7, x,9z", {7, 0, 9}},      {"-1,+2, \t3", {-1, 2, 3}},
      {"1,2,3,4", {1, 2, 3}}, {"1,2,3 4", {1, 2, 3}},      {",5", {0, 5, 0}},
      {"1", {1, 0, 0}},       {"1.9,0x10,1e3", {1, 0, 1}}, {"", {0, 0, 0}},
  };
  for (const auto& [text, numbers] : table) EXPECT_EQ(tripleOf(text), numbers) << text;
  EXPECT_EQ(tripleOf("2147483648,-2147483649,99999999999999999999"),
            (Numbers{INT32_MAX, INT32_MIN, INT32_MAX}));
  EXPECT_EQ(store->GetIntTriple("number", nullptr).First, 0);
  EXPECT_EQ(store->GetIntTriple("absent", nullptr).Third, 0);
}

TEST_P(SettingsMembers, KeepsTextsUntilTheRelease) {
  TMVUserDefaults* store = Load(R"({"short":"abc","long":"a text that is longer than a value"})");
  const char* loaded = store->GetString("short", nullptr);
  const char* longer = store->GetString("long", nullptr);
  const char* name =
      store->GetValueString(store->GetMemberName(store->GetMemberBegin(store->GetRootValue())));
  store->SetString("short", "xyz", nullptr);
  const char* set = store->GetString("short", nullptr);
  store->SetString("short", loaded, nullptr);  // a text of the document itself
  store->SetInt("long", 1, nullptr);
  for (int i = 0; i < 100; ++i) store->SetInt(std::to_string(i).c_str(), i, nullptr);
  EXPECT_STREQ(loaded, "abc");
  EXPECT_STREQ(longer, "a text that is longer than a value");
  EXPECT_STREQ(name, "short");
  EXPECT_STREQ(set, "xyz");
  EXPECT_STREQ(store->GetString("short", nullptr), "abc");
}

TEST_P(SettingsMembers, WalksMembersInTheirOrder) {
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

TEST_P(SettingsMembers, ReachesElements) {
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

TEST_P(SettingsMembers, ReturnsNothingForNothing) {
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

TEST_P(SettingsMembers, ReadsEmptyAfterTheRelease) {
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
