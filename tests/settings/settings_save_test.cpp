// The exact bytes of a saved file.
#include <clocale>
#include <string>

#include "support/settings_store.h"

namespace {

using namespace test;
using SettingsSave = SettingsTest;
TEMVAR_IN_A_PLAIN_PLACE(SettingsSave);

TEST_P(SettingsSave, IndentsByFourBlanksALevel) {
  TMVUserDefaults* store =
      Load(R"({"a":[1,[],{"b":null}],"c":{},"d":{"e":[[true,-5],false],"f":0.1}})");
  const char expected[] =
      "{\n"
      "    \"a\": [\n"
      "        1,\n"
      "        [],\n"
      "        {\n"
      "            \"b\": null\n"
      "        }\n"
      "    ],\n"
      "    \"c\": {},\n"
      "    \"d\": {\n"
      "        \"e\": [\n"
      "            [\n"
      "                true,\n"
      "                -5\n"
      "            ],\n"
      "            false\n"
      "        ],\n"
      "        \"f\": 0.1\n"
      "    }\n"
      "}";
  EXPECT_EQ(Saved(store), expected);
  EXPECT_EQ(Saved(Load()), expected);
  // Nothing is left of a longer text that was there, whole or damaged.
  store = Load("{\"lost\":1} and more, longer than what replaces it");
  store->SetInt("width", 800, nullptr);
  store->SetString("name", "abc", nullptr);
  EXPECT_EQ(Saved(store), "{\n    \"width\": 800,\n    \"name\": \"abc\"\n}");
  EXPECT_EQ(Saved(Load("[]")), "[]");
  EXPECT_EQ(Saved(Load("[{}]")), "[\n    {}\n]");
}

TEST_P(SettingsSave, EscapesWhatMustBeEscaped) {
  TMVUserDefaults* store = Load();
  std::string all;
  for (int c = 1; c < 256; ++c) all += static_cast<char>(c);
  store->SetString("\"\\/\x01", all.c_str(), nullptr);

  std::string expected = "{\n    \"\\\"\\\\/\\u0001\": \"";
  for (int c = 1; c < 256; ++c) {
    const std::string_view named = "\b\t\n\f\r\"\\", letters = "btnfr\"\\";
    const size_t place = named.find(static_cast<char>(c));
    if (place != named.npos) {
      expected += std::string("\\") + letters[place];
    } else if (c < 0x20) {
      const std::string_view digits = "0123456789ABCDEF";
      expected += std::string("\\u00") + digits[static_cast<size_t>(c) / 16] +
                  digits[static_cast<size_t>(c) % 16];
    } else {
      expected += static_cast<char>(c);
    }
  }
  EXPECT_EQ(Saved(store), expected + "\"\n}");
  EXPECT_EQ(Load()->GetString("\"\\/\x01", nullptr), all);
}

TEST_P(SettingsSave, KeepsPlacesAndDoublets) {
  TMVUserDefaults* store = Load(R"({"x":1,"y":{"z":2},"x":3,"w":[4]})");
  EXPECT_EQ(store->GetInt("x", nullptr), 1);
  store->SetString("y", "text", nullptr);
  store->SetInt("new", -1, nullptr);
  store->SetInt("x", 10, nullptr);
  store->SetInt("w", 4, nullptr);
  EXPECT_EQ(Compact(store), R"({"x":10,"y":"text","x":3,"w":4,"new":-1})");
  EXPECT_EQ(Compact(store), Compact((Saved(store), Load())));
}

TEST_P(SettingsSave, WritesOnlyWhenAsked) {
  const char text[] = "{\"a\":1}";
  TMVUserDefaults* store = Load(text);
  store->SetInt("a", 2, nullptr);
  store->SetString("b", "c", nullptr);
  EXPECT_EQ(GetFile(kFile), text);
  store->ReleaseDocument();
  store->Save();
  EXPECT_EQ(GetFile(kFile), text);
}

TEST_P(SettingsSave, HasADecimalPointInEveryLocale) {
  const char* comma = nullptr;
  for (const char* name : {"de_DE.UTF-8", "de_DE", "German", "fr_FR.UTF-8"}) {
    comma = comma != nullptr ? comma : std::setlocale(LC_ALL, name);
  }
  if (comma == nullptr) GTEST_SKIP() << "no locale with a decimal comma is installed";
  EXPECT_EQ(Compact(Load("[1.5,1234567.5]")), "[1.5,1.23457e+06]");
}

// 20,000 levels are 1.6 GB of indentation: treated as a file that can't be written.
TEST_P(SettingsSave, LeavesTheFileOfATextThatIsTooLarge) {
  const std::string deep = std::string(20000, '[') + std::string(20000, ']');
  TMVUserDefaults* store = Load(deep);
  EXPECT_NO_THROW(store->Save());
  EXPECT_TRUE(GetFile(kFile) == deep);
  EXPECT_TRUE(Compact(store) == deep);
}

}  // namespace
