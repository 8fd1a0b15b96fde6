#ifndef TEMVAR_ANDROID_ANDROID_MANIFEST_IMPL_H_
#define TEMVAR_ANDROID_ANDROID_MANIFEST_IMPL_H_

#include <string>

#include "temvar/android_manifest.h"

namespace temvar {

class TMVAndroidManifestImpl final : public TMVAndroidManifest {
 public:
  bool Decode(const uint8_t* data, int32_t length) override;
  char* GetAttributeValue(const char* name) override;

 private:
  std::string text_;
};

}  // namespace temvar

#endif  // TEMVAR_ANDROID_ANDROID_MANIFEST_IMPL_H_
