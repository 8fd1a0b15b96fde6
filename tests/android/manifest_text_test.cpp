// The text that the decoder makes, whole, which hosts never see: well-formed documents, forged
// ones, and both against a second decoder.
#include "android/manifest_text.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>

#include "manifest_data.h"
#include "manifest_model.h"
#include "support/manifest_builder.h"

namespace {

using temvar_test::Bytes;
using temvar_test::kNone;
using temvar_test::ManifestBuilder;
using temvar_test::ManifestModel;
using temvar_test::SetWord;

// The decoder's text. The bytes stand in a block of their own size, for the sanitizers.
std::string Decode(const Bytes& document) {
  const Bytes exact(document);
  std::string text;
  temvar::AppendManifestText(temvar::BinaryXml(exact.data(), static_cast<int32_t>(exact.size())),
                             text);
  return text;
}

template <size_t size>
Bytes Data(const unsigned char (&bytes)[size]) {
  return Bytes(bytes, bytes + size - 1);
}

// A small document that the forged ones start from: its first record stands at kFirst.
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

TEST(ManifestText, KeepsTheLowByteOfEachUnit) {
  Bytes document = ManifestBuilder({"caf\xE9", "abc"}).Start(0).Start(1).Build();
  const size_t strings = 36 + 2 * 4;
  document[strings + 2 + 1] = 0x4E;       // U+4E63: its low byte is a letter
  document[strings + 12 + 2 + 2] = 0x00;  // U+0100: its low byte ends the string
  document[strings + 12 + 2 + 3] = 0x01;
  EXPECT_EQ(Decode(document), "<caf\xE9>\n  <a>\n");
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
}

TEST(ManifestText, StopsAtWhatIsNoTag) {
  ManifestBuilder builder({"e"});
  builder.Start(0).Words({temvar_test::kTextCode, 28, 1, kNone, 0, 8, 0});
  const size_t offset = builder.FirstRecord() + 36;
  EXPECT_EQ(Decode(builder.Build()),
            "<e>\n  Unrecognized tag code '100104' at offset " + std::to_string(offset));

  // A document without any tag begins at the scan start, whatever stands there.
  Bytes no_tag = ManifestBuilder({"e"}).Build();
  SetWord(no_tag, 12, 4);
  EXPECT_EQ(Decode(no_tag).substr(0, 25), "  Unrecognized tag code '");
  SetWord(no_tag, 12, static_cast<uint32_t>(no_tag.size()));
  EXPECT_EQ(Decode(no_tag), "");
  SetWord(no_tag, 12, static_cast<uint32_t>(no_tag.size() - 3));
  EXPECT_EQ(Decode(no_tag),
            "  Unrecognized tag code '0' at offset " + std::to_string(no_tag.size() - 3));
}

// One word of the plain document changed.
TEST(ManifestText, HarmsNothingOnForgedDocuments) {
  const size_t first = Plain().FirstRecord();
  const struct {
    const char* what;
    size_t offset;
    uint32_t word;
  } table[] = {
      {"no attribute", first + 28, 0},
      {"a negative count", first + 28, 0x80000000},
      {"an endless count, read to the end of the buffer", first + 28, 0x7FFFFFFF},
      {"name beyond the pool: its entry reads 0", first + 20, 0x01000000},
      {"name at the largest index", first + 20, 0x7FFFFFFF},
      {"name at an index whose entry wraps to the pool", first + 20, 0x40000000},
      {"negative name", first + 20, 0xFFFFFFFE},
      {"negative value", first + 36 + 8, 0xFFFFFFFE},
      {"string count of none puts the strings over the index", 16, 0},
      {"string count of the most", 16, 0x7FFFFFFF},
      {"string count of the least", 16, 0x80000000},
      {"string far behind", 36, 0x7FFFFFFF},
      {"string far in front", 36, 0x80000000},
      {"scan from far in front", 12, 0x80000000},
      {"scan from in front, off the words", 12, 0xFFFFFFFF},
  };
  for (const auto& [what, offset, word] : table) {
    Bytes document = Plain().Build();
    SetWord(document, offset, word);
    EXPECT_EQ(Decode(document), ManifestModel(document).Text()) << what;
  }
}

TEST(ManifestText, EndsAtTheEndOfTheBuffer) {
  const Bytes whole = Plain().Build();
  for (size_t size = 0; size <= whole.size(); ++size) {
    const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_EQ(Decode(cut), ManifestModel(cut).Text()) << size;
  }
  // An end tag with nothing open; a string that runs out of the buffer, to half a unit.
  EXPECT_EQ(Decode(ManifestBuilder({"e"}).Start(0).End(0).End(0).End(0).Start(0).Build()),
            "<e>\n</e>\n</e>\n</e>\n<e>\n");
  Bytes open = Plain().Build();
  for (const int byte : {0xFF, 0xFF, int{'x'}, 0, int{'y'}, 0, int{'z'}}) {
    open.push_back(static_cast<uint8_t>(byte));
  }
  SetWord(open, 36, static_cast<uint32_t>(open.size() - 7 - 36 - 4 * 6));
  EXPECT_EQ(Decode(open).substr(0, 4), "<xy ");
}

TEST(ManifestText, BoundsWhatAForgedDocumentCosts) {
  // 4,000 attributes name one string of 65,535 units twice: 500 MB if nothing stopped it.
  const std::string longest(65535, 'x');
  ManifestBuilder builder({longest});
  builder.Words({temvar_test::kStartTagCode, 0, 0, 0, 0, 0, 0, 4000, 0});
  for (int i = 0; i < 4000; ++i) builder.Words({0, 0, 0, 0, 0});
  const Bytes document = builder.Build();
  const size_t text = Decode(document).size();
  const size_t bound = temvar::MaxManifestText(static_cast<int64_t>(document.size()));
  EXPECT_GE(text, bound);
  EXPECT_LT(text, bound + 3 * longest.size());
}

TEST(ManifestText, AgreesWithTheSecondDecoderOnChangedDocuments) {
  std::mt19937 random(20261124);
  const Bytes sources[] = {Data(k_small_bin), Data(k_application_bin), Plain().Build()};
  const uint32_t words[] = {0,          1,          kNone,      0x7FFFFFFF, 0x80000000,
                            0x00100101, 0x00100102, 0x00100103, 0x00100104, 36};
  for (int round = 0; round < 3000; ++round) {
    Bytes document = sources[random() % 3];
    for (int changes = 1 + static_cast<int>(random() % 4); changes > 0; --changes) {
      const size_t at = random() % (document.size() - 3);
      const auto kind = random() % 4;
      if (kind == 0) document[at] = static_cast<uint8_t>(random());
      if (kind == 1) SetWord(document, at & ~size_t{3}, words[random() % std::size(words)]);
      if (kind == 2) SetWord(document, at & ~size_t{3}, static_cast<uint32_t>(random() % 300));
      if (kind == 3) document.resize(std::max<size_t>(at, 40));
    }
    ASSERT_EQ(Decode(document), ManifestModel(document).Text()) << "round " << round;
  }
}

// What the text of a document must be, made from the packager's own view of it.
class PackagerView {
 public:
  explicit PackagerView(const std::string& dump) {
    std::istringstream lines(dump);
    for (std::string line; std::getline(lines, line);) {
      const size_t indent = line.find_first_not_of(' ');
      const std::string item = line.substr(indent + 3);
      if (line[indent] == 'E') {
        Close(indent);
        open_.push_back({indent, item.substr(0, item.find(' '))});
        text_ += Indent() + "<" + open_.back().second + ">\n";
      } else if (line[indent] == 'A') {
        text_.resize(text_.size() - 2);
        text_.append(" ").append(Name(item)).append("=\"").append(Value(item)).append("\">\n");
      }
    }
    Close(0);
  }

  const std::string& text() const { return text_; }

 private:
  void Close(size_t indent) {
    while (!open_.empty() && open_.back().first >= indent) {
      text_ += Indent() + "</" + open_.back().second + ">\n";
      open_.pop_back();
    }
  }

  std::string Indent() const { return std::string(2 * (open_.size() - 1), ' '); }

  // `android:name(0x01010003)=...`
  static std::string Name(const std::string& item) {
    const std::string left = item.substr(0, item.find_first_of("(="));
    return left.substr(left.find(':') + 1);
  }

  // `"text" (Raw: "text")`, `(type 0x10)0x1d (Raw: "29")`, `(type 0x10)0x1d` or `@0x0103000c`
  static std::string Value(const std::string& item) {
    const std::string mark = "(Raw: \"";
    const size_t raw = item.rfind(mark);
    if (raw == std::string::npos) {
      const unsigned long typed = std::stoul(item.substr(item.rfind("0x")), nullptr, 16);
      std::ostringstream value;
      value << "resourceID 0x" << std::hex << typed;
      return value.str();
    }
    return LowBytes(item.substr(raw + mark.size(), item.size() - raw - mark.size() - 2));
  }

  // From escaped UTF-8 to the low bytes of its UTF-16 units (no text here leaves the first plane).
  static std::string LowBytes(const std::string& utf8) {
    std::string low;
    for (size_t i = 0; i < utf8.size(); ++i) {
      unsigned point = static_cast<uint8_t>(utf8[i]);
      if (point == '\\') {
        point = static_cast<uint8_t>(utf8[++i]);
      } else if (point >= 0xC0) {
        const int more = point >= 0xE0 ? 2 : 1;
        point &= more == 2 ? 0x0F : 0x1F;
        for (int k = 0; k < more; ++k)
          point = point << 6 | (static_cast<uint8_t>(utf8[++i]) & 0x3F);
      }
      low += static_cast<char>(point & 0xFF);
    }
    return low;
  }

  std::vector<std::pair<size_t, std::string>> open_;
  std::string text_;
};

void ExpectPackagerView(const Bytes& document, const Bytes& dump) {
  EXPECT_EQ(Decode(document), PackagerView(std::string(dump.begin(), dump.end())).text());
  EXPECT_EQ(Decode(document), ManifestModel(document).Text());
}

TEST(ManifestText, ShowsCompiledDocumentsAsThePackagerDoes) {
  ExpectPackagerView(Data(k_small_bin), Data(k_small_xmltree));
  ExpectPackagerView(Data(k_application_bin), Data(k_application_xmltree));
}

TEST(ManifestText, ShowsTheFrameworksDocumentAsThePackagerDoes) {
  const Bytes document = Data(k_framework_bin);
  if (document.empty()) GTEST_SKIP() << "aapt and android-framework-res were not there";
  ExpectPackagerView(document, Data(k_framework_xmltree));
}

}  // namespace
