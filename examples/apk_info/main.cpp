// Prints what an Android package says of itself: its name and its version.
//
// Everything that is read here comes from a stranger. The library reads it safely; what it means is
// for the reader to judge, for nothing in a manifest is escaped.
#include <temvar/handles.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "support/terminal.h"

namespace {

// A look-up searches for the bytes of a name wherever they are. The blank before the name makes it
// the whole name of an attribute; the first element, of which the question is, comes first.
std::string Attribute(TMVAndroidManifest* manifest, const char* name) {
  const std::string attribute = std::string(" ") + name;
  return tmv::Text(manifest->GetAttributeValue(attribute.c_str())).c_str();
}

// A number is written as "resourceID 0x2a".
std::string Number(const std::string& value) {
  const std::string prefix = "resourceID 0x";
  if (value.compare(0, prefix.size(), prefix) != 0) return value;
  return std::to_string(std::strtoul(value.c_str() + prefix.size(), nullptr, 16));
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments = support::Utf8Arguments(argc, argv);
  if (arguments.size() != 1 || arguments[0] == "--help") {
    std::printf(
        "usage: apk_info FILE.apk\n"
        "Prints the name and the version of an Android package.\n"
        "Exit status: 0 printed, 1 no manifest that can be read, 2 wrong usage.\n");
    return arguments.size() == 1 ? 0 : 2;
  }
  const std::string& file = arguments[0];
  tmv::Bytes bytes;
  if (!TmvUtilityUnzip()->ExtractEntry(bytes.Out(), file.c_str(), "AndroidManifest.xml")) {
    std::printf("%s has no manifest\n", file.c_str());
    return 1;
  }
  const tmv::Manifest manifest = tmv::MakeManifest();
  manifest->Decode(reinterpret_cast<const uint8_t*>(bytes.Data()),
                   static_cast<int32_t>(bytes.Size()));
  const std::string name = Attribute(manifest.get(), "package");
  if (name.empty()) {
    std::printf("%s has a manifest that can't be read\n", file.c_str());
    return 1;
  }
  std::printf("package  %s\n", name.c_str());
  std::printf("version  %s (%s)\n", Attribute(manifest.get(), "versionName").c_str(),
              Number(Attribute(manifest.get(), "versionCode")).c_str());
  return 0;
}
