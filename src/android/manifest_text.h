#ifndef TEMVAR_ANDROID_MANIFEST_TEXT_H_
#define TEMVAR_ANDROID_MANIFEST_TEXT_H_

#include <string>

#include "android/binary_xml.h"

namespace temvar {

// What a document of `length` bytes may add to the text, more or less one attribute: far beyond any
// real manifest (an attribute takes 20 bytes), and a bound for a forged one, each attribute of
// which names the same string of 65,535 units.
inline constexpr size_t MaxManifestText(int64_t length) {
  return (size_t{64} << 20) + 16 * static_cast<size_t>(length);
}

// Appends the document as indented text to `out`; ends at the first record that is no tag.
void AppendManifestText(const BinaryXml& document, std::string& out);

}  // namespace temvar

#endif  // TEMVAR_ANDROID_MANIFEST_TEXT_H_
