#include "android/android_manifest.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "android/manifest_text.h"

namespace temvar {
namespace {

constexpr size_t kValueGap = 2;  // the equals sign and the opening quotation mark

char* HeapCopy(const char* text, size_t size) {
  auto* copy = static_cast<char*>(std::malloc(size + 1));
  if (copy == nullptr) {
    throw std::bad_alloc();
  }
  std::memcpy(copy, text, size);
  copy[size] = '\0';
  return copy;
}

}  // namespace

bool TMVAndroidManifestImpl::Decode(const uint8_t* data, int32_t length) {
  AppendManifestText(BinaryXml(data, length), text_);
  return true;
}

char* TMVAndroidManifestImpl::GetAttributeValue(const char* name) {
  const size_t match = name == nullptr ? std::string::npos : text_.find(name);
  if (match == std::string::npos) {
    return HeapCopy("", 0);
  }
  const size_t start = std::min(match + std::strlen(name) + kValueGap, text_.size());
  const size_t end = std::min(text_.find('"', start), text_.size());
  return HeapCopy(text_.data() + start, end - start);
}

}  // namespace temvar

TMV_API TMVAndroidManifest* CreateTmvAndroidManifest() {
  return new temvar::TMVAndroidManifestImpl;
}

TMV_API void DestroyTmvAndroidManifest(TMVAndroidManifest* manifest) {
  delete dynamic_cast<temvar::TMVAndroidManifestImpl*>(manifest);
}
