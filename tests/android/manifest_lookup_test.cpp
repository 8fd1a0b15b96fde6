#include <gtest/gtest.h>
#include <temvar/handles.h>

#include "support/manifest_builder.h"
#include "support/take.h"

namespace {

using namespace test;

class ManifestLookup : public testing::Test {
 protected:
  void Decode(const Bytes& document) {
    EXPECT_TRUE(manifest_->Decode(document.data(), static_cast<int32_t>(document.size())));
  }

  std::string Value(const char* name) { return Take(manifest_->GetAttributeValue(name)); }

  const tmv::Manifest manifest_ = tmv::MakeManifest();
};

Bytes Example() {
  return ManifestBuilder({"manifest", "package", "a.b", "uses-sdk", "minSdkVersion"})
      .Start(0, {{1, 2}})
      .Start(3, {{4, kNone, 9}})
      .End(3)
      .End(0)
      .Build();
}

TEST_F(ManifestLookup, SearchesTheTextAndNoKeys) {
  Decode(Example());
  EXPECT_EQ(Value("package"), "a.b");
  EXPECT_EQ(Value("Package"), "");
  EXPECT_EQ(Value("age"), "a.b");                           // the end of a name
  EXPECT_EQ(Value("uses"), "dk minSdkVersion=");            // an element
  EXPECT_EQ(Value("resourceID"), "x9");                     // a value
  EXPECT_EQ(Value(""), "anifest package=");                 // the third byte of the text
  EXPECT_EQ(Value("9"), "\n  </uses-sdk>\n</manifest>\n");  // no quotation mark follows
  EXPECT_EQ(Value("/manifest"), "");                        // the text ends two bytes on
  EXPECT_EQ(Value("/manifest>"), "");                       // one byte before the end
  EXPECT_EQ(Value("/manifest>\n"), "");                     // at the end
  EXPECT_EQ(Value(nullptr), "");
}

TEST_F(ManifestLookup, IsEmptyBeforeAndAfterNothing) {
  for (const char* name : {"package", ""}) EXPECT_EQ(Value(name), "");
  EXPECT_TRUE(manifest_->Decode(nullptr, 0));
  EXPECT_TRUE(manifest_->Decode(nullptr, 100));
  EXPECT_TRUE(manifest_->Decode(Example().data(), -1));
  EXPECT_EQ(Value(""), "");
  DestroyTmvAndroidManifest(nullptr);
}

TEST_F(ManifestLookup, LetsTheFirstDocumentAnswer) {
  Decode(Example());
  Decode(ManifestBuilder({"manifest", "package", "c.d", "last"})
             .Start(0, {{1, 2}, {3, 2}})
             .Words({kTextCode})
             .Build());
  EXPECT_EQ(Value("package"), "a.b");
  EXPECT_EQ(Value("last"), "c.d");
  EXPECT_EQ(Value("100104").substr(0, 9), "at offset");  // the message of the last line
  Decode(Example());
  EXPECT_EQ(Value("package"), "a.b");
}

}  // namespace
