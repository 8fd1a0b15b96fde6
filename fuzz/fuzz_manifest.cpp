// Decodes the input as a compiled manifest, then asks for attributes: with a name taken from the
// input, so that look-ups hit what the document holds, and with the names that hosts ask for.
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "temvar/android_manifest.h"

namespace {

void Ask(TMVAndroidManifest* manifest, const char* name) {
  char* value = manifest->GetAttributeValue(name);
  if (value == nullptr || std::strchr(value, '"') != nullptr) {
    std::abort();
  }
  std::free(value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // A block of exactly the input's size: a read past it is a finding.
  const std::vector<uint8_t> document(data, data + size);
  TMVAndroidManifest* manifest = CreateTmvAndroidManifest();
  if (!manifest->Decode(document.data(), static_cast<int32_t>(document.size()))) {
    std::abort();
  }
  for (const char* name : {"", "package", "versionName", ">", "'"}) {
    Ask(manifest, name);
  }
  const size_t tail = size < 12 ? size : 12;
  Ask(manifest, std::string(document.end() - static_cast<long>(tail), document.end()).c_str());
  DestroyTmvAndroidManifest(manifest);
  return 0;
}
