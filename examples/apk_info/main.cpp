// Tells what an Android package says of itself: name, version and the permissions that it asks for.
//   apk_info FILE.apk
//
// Everything that is read here comes from a stranger. The library reads it safely; what it means is
// for the reader to judge, for nothing in a manifest is escaped.
#include <temvar/handles.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

// The decoded manifest as text. The decoder has only a look-up, which gives what stands from two
// bytes behind the text that is looked for to the next quotation mark. Looked for is therefore all
// that is known so far, less two bytes: the answer is the next piece. Behind the end every answer
// is empty; within the text two empty answers in a row are rare, and three don't occur.
std::string ReadText(TMVAndroidManifest* manifest) {
  std::string text = "<m";
  std::size_t length = 0;
  for (int emptyAnswers = 0; emptyAnswers < 3;) {
    const tmv::Text piece(manifest->GetAttributeValue(text.substr(0, text.size() - 2).c_str()));
    text.append(piece.View());
    if (piece.View().empty()) {
      ++emptyAnswers;
    } else {
      emptyAnswers = 0;
      length = text.size();
    }
    text += '"';
  }
  text.resize(length);
  return text;
}

// The value of an attribute in one line of the text, or nothing.
std::string_view Attribute(std::string_view line, std::string_view name) {
  std::string start = " ";
  start.append(name).append("=\"");
  const std::size_t found = line.find(start);
  if (found == std::string_view::npos) {
    return {};
  }
  line.remove_prefix(found + start.size());
  return line.substr(0, line.find('"'));
}

std::vector<std::string_view> LinesOf(std::string_view text, std::string_view element) {
  std::string start = "<";
  start.append(element).append(" ");
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(line.size() == text.size() ? line.size() : line.size() + 1);
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    if (line.substr(0, start.size()) == start) {
      lines.push_back(line);
    }
  }
  return lines;
}

// A number stands as "resourceID 0x2a".
std::string Number(std::string_view value) {
  constexpr std::string_view kPrefix = "resourceID 0x";
  if (value.substr(0, kPrefix.size()) != kPrefix) {
    return std::string(value);
  }
  const std::string digits(value.substr(kPrefix.size()));
  return std::to_string(std::strtoul(digits.c_str(), nullptr, 16));
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::printf("usage: apk_info FILE.apk\n");
    return 2;
  }
  tmv::Bytes bytes;
  if (!TmvUtilityUnzip()->ExtractEntry(bytes.Out(), arguments[1], "AndroidManifest.xml")) {
    std::printf("%s has no manifest\n", arguments[1]);
    return 1;
  }
  const tmv::Manifest manifest = tmv::MakeManifest();
  manifest->Decode(reinterpret_cast<const uint8_t*>(bytes.Data()),
                   static_cast<int32_t>(bytes.Size()));

  const std::string text = ReadText(manifest.get());
  const std::vector<std::string_view> roots = LinesOf(text, "manifest");
  if (roots.empty()) {
    std::printf("%s has a manifest that cannot be read\n", arguments[1]);
    return 1;
  }
  const std::string_view root = roots.front();
  std::printf("package     %s\n", std::string(Attribute(root, "package")).c_str());
  std::printf("version     %s (%s)\n", std::string(Attribute(root, "versionName")).c_str(),
              Number(Attribute(root, "versionCode")).c_str());
  for (const std::string_view line : LinesOf(text, "uses-permission")) {
    std::printf("permission  %s\n", std::string(Attribute(line, "name")).c_str());
  }
  if (text.size() < 12 || text.compare(text.size() - 12, 12, "</manifest>\n") != 0) {
    std::printf("the manifest is damaged: there may be more than what stands here\n");
    return 1;
  }
  return 0;
}
