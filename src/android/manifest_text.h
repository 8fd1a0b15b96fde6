#ifndef TEMVAR_ANDROID_MANIFEST_TEXT_H_
#define TEMVAR_ANDROID_MANIFEST_TEXT_H_

#include <string>

#include "android/binary_xml.h"

namespace temvar {

// What one document may add to the text: far beyond any real manifest, and a bound for a forged one
// that names a string of 65,535 units in each of its attributes.
inline constexpr size_t kMaxManifestText = size_t{256} << 20;

// Appends the document as indented text to `out`; ends at the first record that is no tag.
void AppendManifestText(const BinaryXml& document, std::string& out);

}  // namespace temvar

#endif  // TEMVAR_ANDROID_MANIFEST_TEXT_H_
