#include "android/android_manifest_impl.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "android/manifest_text.h"
#include "utilities/string/text.h"

namespace temvar {
namespace {

constexpr size_t kValueGap = 2;  // the equals sign and the opening quotation mark

}  // namespace

bool TMVAndroidManifestImpl::Decode(const uint8_t* data, int32_t length) {
  const size_t before = text_.size();
  try {
    AppendManifestText(BinaryXml(data, length), text_);
  } catch (...) {
    text_.resize(before);
    throw;
  }
  return true;
}

// A search for bytes, not a look-up of a key, as the interface documents: a name that is part of a
// longer word, or of a value, is found too.
char* TMVAndroidManifestImpl::GetAttributeValue(const char* name) {
  const std::string_view text = text_;
  const size_t match = name == nullptr ? text.npos : text.find(name);
  if (match == text.npos) return NewNarrowText("");
  const size_t start = std::min(match + std::strlen(name) + kValueGap, text.size());
  const size_t end = std::min(text.find('"', start), text.size());
  return NewNarrowText(text.substr(start, end - start));
}

namespace {

TMVAndroidManifestImpl* ToImpl(TMVAndroidManifest* manifest) {
  return dynamic_cast<TMVAndroidManifestImpl*>(manifest);
}

}  // namespace
}  // namespace temvar

TMV_API TMVAndroidManifest* CreateTmvAndroidManifest() {
  return new temvar::TMVAndroidManifestImpl;
}

TMV_API void DestroyTmvAndroidManifest(TMVAndroidManifest* manifest) {
  delete temvar::ToImpl(manifest);
}
