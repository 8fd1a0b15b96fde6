// The text that the decoder makes, whole, which hosts never see: well-formed documents and forged
// ones.
#include "android/manifest_text.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "manifest_data.h"
#include "support/manifest_builder.h"

namespace {

using namespace test;

// The decoder's text. The bytes stand in a block of their own size, for the sanitizers.
std::string Decode(const Bytes& document) {
  const Bytes exact(document);
  const temvar::BinaryXml xml(exact.data(), static_cast<int32_t>(exact.size()));
  std::string text;
  temvar::AppendManifestText(xml, text);
  return text;
}

// A small document that the forged ones start from.
const ManifestBuilder& Plain() {
  static const ManifestBuilder builder = [] {
    ManifestBuilder made({"manifest", "package", "a.b", "uses-sdk", "minSdkVersion", ""});
    made.Start(0, {{1, 2}}).Start(3, {{4, kNone, 9}}).End(3).End(0);
    return made;
  }();
  return builder;
}

TEST(ManifestText, PrintsElementsOnLinesOfTheirOwn) {
  EXPECT_EQ(Decode(Plain().Build()),
            "<manifest package=\"a.b\">\n"
            "  <uses-sdk minSdkVersion=\"resourceID 0x9\">\n"
            "  </uses-sdk>\n"
            "</manifest>\n");
  EXPECT_EQ(Decode(ManifestBuilder({"e", "a", ""})
                       .Start(0, {{1, 2}, {1, kNone, 0}, {2, 0, 7}, {1, kNone, 0xFFFFFFFF}})
                       .End(0)
                       .Build()),
            "<e a=\"\" a=\"resourceID 0x0\" =\"e\" a=\"resourceID 0xffffffff\">\n</e>\n");
}

TEST(ManifestText, ShowsWhatThePackagerCompiled) {
  EXPECT_EQ(Decode({std::begin(kApplicationBin), std::end(kApplicationBin)}),
            std::string(std::begin(kApplicationTxt), std::end(kApplicationTxt)));
}

TEST(ManifestText, KeepsTheLowByteOfAsManyUnitsAsStated) {
  Bytes document = ManifestBuilder({"y\xE9ss", "abc"}).Start(0).Start(1).Build();
  const size_t strings = 36 + 2 * 4;
  document[strings] = 2;
  document[strings + 2 + 1] = 0x4E;       // U+4E79: its low byte is a letter
  document[strings + 12 + 2 + 2] = 0x00;  // U+0100: its low byte ends the string
  document[strings + 12 + 2 + 3] = 0x01;
  EXPECT_EQ(Decode(document), "<y\xE9>\n  <a>\n");
}

TEST(ManifestText, IndentsByTwoBlanksUpTo45) {
  ManifestBuilder builder({"e"});
  for (int i = 0; i < 30; ++i) builder.Start(0);
  for (int i = 0; i < 30; ++i) builder.End(0);
  std::istringstream lines(Decode(builder.Build()));
  std::string line;
  for (size_t i = 0; i < 60; ++i) {
    const size_t depth = i < 30 ? i : 59 - i;
    std::getline(lines, line);
    EXPECT_EQ(line, std::string(depth < 23 ? 2 * depth : 45, ' ') + (i < 30 ? "<e>" : "</e>"));
  }
  // An end tag with nothing open.
  EXPECT_EQ(Decode(ManifestBuilder({"e"}).Start(0).End(0).End(0).End(0).Start(0).Build()),
            "<e>\n</e>\n</e>\n</e>\n<e>\n");
}

TEST(ManifestText, StopsAtWhatIsNoTag) {
  ManifestBuilder builder({"e"});
  builder.Start(0).Words({kTextCode, 28, 1, kNone, 0, 8, 0});
  const size_t offset = builder.FirstRecord() + 36;
  EXPECT_EQ(Decode(builder.Build()),
            "<e>\n  Unrecognized tag code '100104' at offset " + std::to_string(offset));

  // A document without any tag begins at the scan start, whatever is there.
  Bytes noTag = ManifestBuilder({"e"}).Build();
  SetWord(noTag, 12, 4);
  EXPECT_EQ(Decode(noTag).substr(0, 25), "  Unrecognized tag code '");
  SetWord(noTag, 12, static_cast<uint32_t>(noTag.size()));
  EXPECT_EQ(Decode(noTag), "");
  SetWord(noTag, 12, static_cast<uint32_t>(noTag.size() - 3));
  EXPECT_EQ(Decode(noTag),
            "  Unrecognized tag code '0' at offset " + std::to_string(noTag.size() - 3));
}

// One word of the plain document changed.
TEST(ManifestText, HarmsNothingOnForgedDocuments) {
  const size_t first = Plain().FirstRecord();
  const std::string rest =
      " package=\"a.b\">\n  <uses-sdk minSdkVersion=\"resourceID 0x9\">\n  "
      "</uses-sdk>\n</manifest>\n";
  const std::string lastUnnamed = "<" + rest.substr(0, rest.size() - 12) + "</>\n";
  const std::string noStrings = "< =\"\">\n  < =\"resourceID 0x9\">\n  </>\n</>\n";
  const std::tuple<const char*, size_t, uint32_t, std::string> table[] = {
      {"a negative count", first + 28, 0x80000000,
       "<manifest>\n  Unrecognized tag code 'ffffffff' at offset 200"},
      {"an endless count, read to the end of the buffer", first + 28, 0x7FFFFFFF,
       "<manifest package=\"a.b\" nifest=\"package\" manifest=\"package\" =\"manifest\""
       " package=\"resourceID 0x3\" =\"package\" manifest=\"\" manifest=\"manifest\">\n"},
      {"name beyond the pool: its entry reads 0", first + 20, 0x01000000, "<manifest" + rest},
      {"name at the largest index", first + 20, 0x7FFFFFFF, "<" + rest},
      {"name at an index whose entry wraps to the pool", first + 20, 0x40000000, "<" + rest},
      {"negative name", first + 20, 0xFFFFFFFE, "<" + rest},
      {"negative value", first + 36 + 8, 0xFFFFFFFE, "<manifest package=\"\"" + rest.substr(14)},
      {"string count of none puts the strings over the index", 16, 0,
       "< =\"t\">\n  <ckage =\"resourceID 0x9\">\n  </ckage>\n</>\n"},
      {"string count of the most", 16, 0x7FFFFFFF, noStrings},
      {"string count of the least", 16, 0x80000000, noStrings},
      {"string far beyond", 36, 0x7FFFFFFF, lastUnnamed},
      {"string at the last byte", 36, static_cast<uint32_t>(Plain().Build().size() - 1 - 60),
       lastUnnamed},
      {"string far in front", 36, 0x80000000, lastUnnamed},
      {"scan from far in front", 12, 0x80000000, "<manifest" + rest},
      {"scan from in front, off the words", 12, 0xFFFFFFFF,
       "  Unrecognized tag code '0' at offset -1"},
  };
  for (const auto& [what, offset, word, text] : table) {
    Bytes document = Plain().Build();
    SetWord(document, offset, word);
    EXPECT_EQ(Decode(document), text) << what;
  }
}

TEST(ManifestText, EndsAtTheEndOfTheBuffer) {
  const Bytes whole = Plain().Build();
  const auto cut = [&whole](size_t size) {
    return Decode({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
  };
  // What is cut off reads as 0: codes, counts, and indices, which name the first string.
  const std::pair<size_t, std::string> table[] = {
      {0, ""},
      {3, "  Unrecognized tag code '0' at offset 0"},
      {4, "  Unrecognized tag code '80003' at offset 0"},
      {15, "  Unrecognized tag code '80003' at offset 0"},
      {16, ""},
      {156, ""},
      {157, "  Unrecognized tag code '0' at offset 156"},
      {168, "  Unrecognized tag code '0' at offset 156"},
      {169, "<manifest>\n"},
      {200, "<manifest>\n"},
      {201, "<manifest manifest=\"manifest\">\n"},
      {208, "<manifest package=\"manifest\">\n"},
      {212, "<manifest package=\"a.b\">\n"},
  };
  for (const auto& [size, text] : table) EXPECT_EQ(cut(size), text) << size;
  for (size_t size = 0; size <= whole.size(); ++size) {
    EXPECT_TRUE(size < 212 || cut(size).rfind("<manifest package=\"a.b\">\n", 0) == 0) << size;
  }
  // A string that runs out of the buffer, to half a unit.
  Bytes open = whole;
  for (const int byte : {0xFF, 0xFF, int{'x'}, 0, int{'y'}, 0, int{'z'}}) {
    open.push_back(static_cast<uint8_t>(byte));
  }
  SetWord(open, 36, static_cast<uint32_t>(whole.size() - 36 - 4 * 6));
  EXPECT_EQ(Decode(open).substr(0, 4), "<xy ");
}

TEST(ManifestText, BoundsWhatAForgedDocumentCosts) {
  // 4,000 attributes name one string of 65,535 units twice: 500 MB if nothing stopped it.
  const std::string longest(65535, 'x');
  ManifestBuilder builder({longest});
  builder.Words({kStartTagCode, 0, 0, 0, 0, 0, 0, 4000, 0});
  for (int i = 0; i < 4000; ++i) builder.Words({0, 0, 0, 0, 0});
  const Bytes document = builder.Build();
  const size_t text = Decode(document).size();
  const size_t bound = temvar::MaxManifestText(static_cast<int64_t>(document.size()));
  EXPECT_GE(text, bound);
  EXPECT_LT(text, bound + 3 * longest.size());
}

}  // namespace
