// Writes a small Android package with a compiled manifest of the public layout.
//   make_sample_apk FILE.apk
#include <temvar/handles.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr uint32_t kNone = 0xFFFFFFFF;

// Builds the document's words and its string pool side by side.
class ManifestBuilder {
 public:
  struct Attribute {
    std::string name;
    std::string text;
    uint32_t number = 0;
  };

  void Start(const std::string& element, const std::vector<Attribute>& attributes) {
    const auto count = static_cast<uint32_t>(attributes.size());
    Words({0x00100102, 36 + 20 * count, 1, kNone, kNone, String(element), 0x00140014, count, 0});
    for (const Attribute& attribute : attributes) {
      const bool isText = !attribute.text.empty();
      const uint32_t text = isText ? String(attribute.text) : kNone;
      Words({kNone, String(attribute.name), text, isText ? 0x03000008u : 0x10000008u,
             isText ? text : attribute.number});
    }
  }

  void End(const std::string& element) {
    Words({0x00100103, 24, 1, kNone, kNone, String(element)});
  }

  std::string Document() {
    std::string data;
    std::vector<uint32_t> index;
    for (const std::string& text : strings_) {
      index.push_back(static_cast<uint32_t>(data.size()));
      data += static_cast<char>(text.size());
      data += '\0';
      for (const char c : text) {
        data += c;
        data += '\0';
      }
      data += std::string(2, '\0');
    }
    data.resize((data.size() + 3) / 4 * 4);
    const auto count = static_cast<uint32_t>(index.size());
    const auto poolSize = static_cast<uint32_t>(28 + 4 * count + data.size());
    std::vector<uint32_t> head = {0x001C0001, poolSize, count, 0, 0, 28 + 4 * count, 0};
    head.insert(head.end(), index.begin(), index.end());
    const std::vector<uint32_t> nameSpace = {0x00100100, 24, 1, kNone, kNone, kNone};
    const std::vector<uint32_t> end = {0x00100101, 24, 1, kNone, kNone, kNone};
    const std::string rest = Bytes(head) + data + Bytes(nameSpace) + Bytes(words_) + Bytes(end);
    return Bytes({0x00080003, static_cast<uint32_t>(rest.size() + 8)}) + rest;
  }

 private:
  uint32_t String(const std::string& text) {
    const auto found = std::find(strings_.begin(), strings_.end(), text);
    const auto position = static_cast<uint32_t>(found - strings_.begin());
    if (found == strings_.end()) {
      strings_.push_back(text);
    }
    return position;
  }

  void Words(const std::vector<uint32_t>& words) {
    words_.insert(words_.end(), words.begin(), words.end());
  }

  static std::string Bytes(const std::vector<uint32_t>& words) {
    std::string bytes;
    for (const uint32_t word : words) {
      for (int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>(word >> shift & 0xFF);
      }
    }
    return bytes;
  }

  std::vector<std::string> strings_;
  std::vector<uint32_t> words_;
};

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    return 2;
  }
  ManifestBuilder builder;
  builder.Start(
      "manifest",
      {{"versionCode", "", 42}, {"versionName", "2.1"}, {"package", "org.example.notes"}});
  builder.Start("uses-sdk", {{"minSdkVersion", "", 21}});
  builder.End("uses-sdk");
  builder.Start("uses-permission", {{"name", "android.permission.INTERNET"}});
  builder.End("uses-permission");
  builder.Start("application", {{"label", "Notes"}, {"name", "org.example.notes.App"}});
  builder.End("application");
  builder.Start("uses-permission",
                {{"maxSdkVersion", "", 30}, {"name", "android.permission.CAMERA"}});
  builder.End("uses-permission");
  builder.End("manifest");

  const std::string document = builder.Document();
  const std::string file = std::string(arguments[1]) + ".manifest";
  if (!TmvUtilityFile()->WriteWholeFile(document.data(), document.size(), file.c_str())) {
    return 1;
  }
  const tmv::Zip zip = tmv::MakeZip();
  zip->AddFile(file.c_str(), "AndroidManifest.xml");
  return zip->WriteArchive(arguments[1], nullptr) ? 0 : 1;
}
