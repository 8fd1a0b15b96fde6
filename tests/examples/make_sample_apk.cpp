// Writes a small Android package with a compiled manifest.
//   make_sample_apk FILE.apk
#include <temvar/handles.h>

#include <algorithm>
#include <string>

#include "support/manifest_builder.h"

namespace {

using temvar_test::kNone;

const std::initializer_list<std::string_view> kStrings = {"manifest",
                                                          "versionCode",
                                                          "versionName",
                                                          "2.1",
                                                          "package",
                                                          "org.example.notes",
                                                          "uses-sdk",
                                                          "minSdkVersion",
                                                          "uses-permission",
                                                          "name",
                                                          "android.permission.INTERNET",
                                                          "application",
                                                          "label",
                                                          "Notes",
                                                          "org.example.notes.App",
                                                          "maxSdkVersion",
                                                          "android.permission.CAMERA"};

uint32_t At(std::string_view text) {
  return static_cast<uint32_t>(std::find(kStrings.begin(), kStrings.end(), text) -
                               kStrings.begin());
}

temvar_test::Bytes Manifest() {
  return temvar_test::ManifestBuilder(kStrings)
      .Start(At("manifest"), {{At("versionCode"), kNone, 42},
                              {At("versionName"), At("2.1")},
                              {At("package"), At("org.example.notes")}})
      .Start(At("uses-sdk"), {{At("minSdkVersion"), kNone, 21}})
      .End(At("uses-sdk"))
      .Start(At("uses-permission"), {{At("name"), At("android.permission.INTERNET")}})
      .End(At("uses-permission"))
      .Start(At("application"),
             {{At("label"), At("Notes")}, {At("name"), At("org.example.notes.App")}})
      .End(At("application"))
      .Start(At("uses-permission"),
             {{At("maxSdkVersion"), kNone, 30}, {At("name"), At("android.permission.CAMERA")}})
      .End(At("uses-permission"))
      .End(At("manifest"))
      .Build();
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) return 2;
  const temvar_test::Bytes document = Manifest();
  const std::string file = std::string(arguments[1]) + ".manifest";
  if (!TmvUtilityFile()->WriteWholeFile(document.data(), document.size(), file.c_str())) return 1;
  const tmv::Zip zip = tmv::MakeZip();
  zip->AddFile(file.c_str(), "AndroidManifest.xml");
  return zip->WriteArchive(arguments[1], nullptr) ? 0 : 1;
}
