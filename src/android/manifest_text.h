#ifndef TEMVAR_ANDROID_MANIFEST_TEXT_H_
#define TEMVAR_ANDROID_MANIFEST_TEXT_H_

#include <string>

#include "android/binary_xml.h"

namespace temvar {

// The most that a document of `length` bytes adds to the text, give or take one attribute. No real
// manifest comes near (an attribute takes 20 bytes). A forged one can name the same string of
// 65,535 units in each attribute, and would otherwise grow with the square of its size.
inline constexpr size_t MaxManifestText(int64_t length) {
  return (size_t{64} << 20) + 16 * static_cast<size_t>(length);
}

// Appends the document as indented text to `out`; ends at the first record that is no tag.
void AppendManifestText(const BinaryXml& document, std::string& out);

}  // namespace temvar

#endif  // TEMVAR_ANDROID_MANIFEST_TEXT_H_
