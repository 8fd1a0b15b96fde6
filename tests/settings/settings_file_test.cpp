// What is accepted as a settings file and what isn't, in the manner of the public suites for JSON
// parsers, how stores are found by name, and the exact bytes of a saved file.
#include <clocale>

#include "support/settings_store.h"

namespace {

using namespace test;

class SettingsFile : public SettingsTest {};
TEMVAR_IN_A_PLAIN_PLACE(SettingsFile);

class SettingsPlace : public SettingsTest {};
TEMVAR_IN_EVERY_PLACE(SettingsPlace);

std::string Nested(size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }

TEST_P(SettingsFile, TakesValidTexts) {
  const std::string deep = Nested(500);
  // A text, and what it is when it is written back.
  const std::pair<std::string_view, std::string_view> table[] = {
      // Structure and white space.
      {"{}", "{}"},
      {"[]", "[]"},
      {" \t\r\n{ \"\\u0061\" : [ 1 ,\nnull ] } \r\t", "{\"a\":[1,null]}"},
      {"[[],[[]],{\"\":0}]", "[[],[[]],{\"\":0}]"},
      {"{\"a\":1,\"a\":2}", "{\"a\":1,\"a\":2}"},
      {deep, deep},
      // Integers, to the last bit of 64.
      {"[0,-0,-1,1234567890]", "[0,0,-1,1234567890]"},
      {"[2147483647,2147483648,-2147483648,-2147483649,4294967295,4294967296]",
       "[2147483647,2147483648,-2147483648,-2147483649,4294967295,4294967296]"},
      {"[9223372036854775807,-9223372036854775808,18446744073709551615]",
       "[9223372036854775807,-9223372036854775808,18446744073709551615]"},
      // Doubles, six digits.
      {"[0.0,-0.0,1.0,1.5,-2.25,3.14159265358979]", "[0,-0,1,1.5,-2.25,3.14159]"},
      {"[1e5,1E6,1e+6,1e-4,1e-5,123456789.0]", "[100000,1e+06,1e+06,0.0001,1e-05,1.23457e+08]"},
      {"[18446744073709551616,-9223372036854775809]", "[1.84467e+19,-9.22337e+18]"},
      {"[1e100,1.7976931348623157e308,1e-100,0.1e309,1e-400]",
       "[1e+100,1.79769e+308,1e-100,1e+308,0]"},
      // Texts: escapes, surrogates, bytes that pass as they stand.
      {R"(["\"\\\/\b\f\n\r\t"])", R"(["\"\\/\b\f\n\r\t"])"},
      {R"(["\u0000\u001f\u007F\u00e9\u20AC\ud83d\uDE00"])",
       "[\"\\u0000\\u001F\x7F\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\"]"},
      {"[\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\"]", "[\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\"]"},
      // Left open by the grammar: bytes that are no UTF-8, a lone low surrogate.
      {"[\"\xFF\xC3\"]", "[\"\xFF\xC3\"]"},
      {R"(["\uDC00"])", "[\"\xED\xB0\x80\"]"},
      // A NUL ends the text.
      {std::string_view("{\"a\":1}\0{\"b\":", 12), "{\"a\":1}"},
  };
  for (const auto& [text, compact] : table) {
    TMVUserDefaults* store = Load(text);
    EXPECT_TRUE(store->IsLoaded()) << text;
    EXPECT_EQ(Compact(store), compact) << text;
  }
}

TEST_P(SettingsFile, CountsAnythingElseAsDamaged) {
  using namespace std::string_view_literals;
  const std::string_view table[] = {
      "", "\0"sv, "\xEF\xBB\xBF{}", "\xEF\xBB\xBF", "\xFF\xFE{\0}\0"sv,
      // The root is an object or an array, and nothing follows.
      "1", "true", "null", "\"text\"", "{}x", "{},", "{}{}", "[]]", "{} /* */", "{\"a\":1}\x01",
      // Objects and arrays that are not whole.
      "{", "[", "{\"a\"", "{\"a\":", "{\"a\":1", "{\"a\":1,", "[1", "[1,", "[{]", "]", "[1,]",
      "[,1]", "[1 2]", "{\"a\":1,}", "{,}", "{\"a\"}", "{a:1}", "{'a':1}", "[\"a\":1]",
      "{\"a\":1\0}"sv,
      // Words and numbers.
      "[nul]", "[NULL]", "[NaN]", "[Infinity]", "[+1]", "[01]", "[-]", "[.5]", "[1.]", "[1e]",
      "[0x10]", "[\xEF\xBC\x91]",
      // Too large for a double: by its exponent, by its digits, and just so.
      "[1e309]", "[1e999999999999]", "[1.8e308]", "[-1.8e308]",
      // Texts.
      "[\"a]", "[\"\\\"]", "[\"\\a\"]", "[\"\\u12\"]", "[\"\\u12g4\"]", "[\"\n\"]", "[\"\x1F\"]",
      "[\"a\0b\"]"sv, "['a']", "[\"\\ud800\"]", "[\"\\ud800a\"]", "[\"\\ud800\\ud800\"]",
      // White space that JSON doesn't know, comments.
      "[\f1]", "[\xC2\xA0]", "[1/**/]", "// c\n[]"};
  for (const std::string_view text : table) {
    TMVUserDefaults* store = Load(text);
    EXPECT_FALSE(store->IsLoaded()) << text;
    EXPECT_EQ(Compact(store), "{}") << text;
    EXPECT_EQ(GetFile(kFile), text);
  }
}

TEST_P(SettingsPlace, StartsEmptyWithoutAFile) {
  TMVUserDefaults* store = Load();
  EXPECT_FALSE(store->IsLoaded());
  EXPECT_EQ(store->GetFilePath(), Path(kFile));
  EXPECT_FALSE(Exists(kFile));
  EXPECT_EQ(Saved(store), "{}");
  EXPECT_FALSE(store->IsLoaded());
  EXPECT_TRUE(Load()->IsLoaded());

  MakeFolder("folder");
  EXPECT_FALSE(InitUserDefaults("folder", Path("folder").c_str()));
  EXPECT_FALSE(InitUserDefaults("none", Path("none/settings.json").c_str()));
  EXPECT_FALSE(InitUserDefaults("empty path", ""));
  EXPECT_FALSE(InitUserDefaults("no path", nullptr));
  EXPECT_FALSE(InitUserDefaults("no UTF-8", "\xFF"));
  for (const char* name : {"folder", "none", "empty path", "no path", "no UTF-8"}) {
    GetUserDefaults(name)->Save();
    EXPECT_EQ(Compact(GetUserDefaults(name)), "{}");
  }
}

// Deeper than any thread's stack lets a parser or writer descend.
TEST_P(SettingsFile, SurvivesDepth) {
  const std::string deep = Nested(1000000);
  EXPECT_TRUE(Compact(Load(deep)) == deep);
  EXPECT_FALSE(Load(deep.substr(1))->IsLoaded());
  EXPECT_FALSE(Load(std::string(100000, '['))->IsLoaded());
  EXPECT_FALSE(Load(std::string(100000, '[') + "\"")->IsLoaded());
}

TEST_P(SettingsFile, KnowsStoresByName) {
  EXPECT_EQ(GetUserDefaults("test"), nullptr);
  PutFile("one.json", "{\"a\":1}");
  std::string path = Path("one.json");
  const std::string kept = path;
  for (std::string name : {"one", "One", "", "\xFF", "name with blanks"}) {
    EXPECT_TRUE(InitUserDefaults(name.empty() ? nullptr : name.c_str(), path.c_str()));
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

TEST_P(SettingsFile, LetsTheLaterStoreAnswer) {
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

TEST_P(SettingsFile, IndentsByFourBlanksALevel) {
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

TEST_P(SettingsFile, EscapesWhatMustBeEscaped) {
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

TEST_P(SettingsFile, KeepsPlacesAndDoublets) {
  TMVUserDefaults* store = Load(R"({"x":1,"y":{"z":2},"x":3,"w":[4]})");
  EXPECT_EQ(store->GetInt("x", nullptr), 1);
  store->SetString("y", "text", nullptr);
  store->SetInt("new", -1, nullptr);
  store->SetInt("x", 10, nullptr);
  store->SetInt("w", 4, nullptr);
  EXPECT_EQ(Compact(store), R"({"x":10,"y":"text","x":3,"w":4,"new":-1})");
  EXPECT_EQ(Compact(store), Compact((Saved(store), Load())));
}

TEST_P(SettingsFile, WritesOnlyWhenAsked) {
  const char text[] = "{\"a\":1}";
  TMVUserDefaults* store = Load(text);
  store->SetInt("a", 2, nullptr);
  store->SetString("b", "c", nullptr);
  EXPECT_EQ(GetFile(kFile), text);
  store->ReleaseDocument();
  store->Save();
  EXPECT_EQ(GetFile(kFile), text);
}

TEST_P(SettingsFile, HasADecimalPointInEveryLocale) {
  const char* comma = nullptr;
  for (const char* name : {"de_DE.UTF-8", "de_DE", "German", "fr_FR.UTF-8"}) {
    comma = comma != nullptr ? comma : std::setlocale(LC_ALL, name);
  }
  if (comma == nullptr) GTEST_SKIP() << "no locale with a decimal comma is installed";
  EXPECT_EQ(Compact(Load("[1.5,1234567.5]")), "[1.5,1.23457e+06]");
}

// 20,000 levels are 1.6 GB of indentation: treated as a file that can't be written.
TEST_P(SettingsFile, LeavesTheFileOfATextThatIsTooLarge) {
  const std::string deep = std::string(20000, '[') + std::string(20000, ']');
  TMVUserDefaults* store = Load(deep);
  EXPECT_NO_THROW(store->Save());
  EXPECT_TRUE(GetFile(kFile) == deep);
  EXPECT_TRUE(Compact(store) == deep);
}

}  // namespace
