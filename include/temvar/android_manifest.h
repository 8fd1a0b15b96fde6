#ifndef TEMVAR_ANDROID_MANIFEST_H_
#define TEMVAR_ANDROID_MANIFEST_H_

#include "temvar/export.h"
#include "temvar/types.h"

// Reads the compiled manifest of an Android package (AndroidManifest.xml as it is in the .apk,
// a document in Android's binary XML) and answers questions about its attributes.
//
// The document becomes an indented XML-like text, which the object keeps and searches:
//
//   <manifest package="a.b">
//     <uses-sdk minSdkVersion="resourceID 0x9">
//     </uses-sdk>
//   </manifest>
//
// An attribute with a text shows it as it is, nothing escaped; any other (number, boolean,
// colour, reference) shows as `resourceID 0x` and its 32 bits in hexadecimal. Namespaces are left
// out. Strings are read as UTF-16 of which the low bytes are kept: Latin-1 survives, the rest not,
// and the pools in UTF-8 that newer packagers write come out as garbage. Reading ends at the first
// text record and at the first end of a namespace.
//
// One object serves one document and one thread at a time; separate objects are independent.
class TMVAndroidManifest {
 public:
  // Appends the text of the document `data` of `length` bytes, which is not kept. Always true: what
  // is damaged shows in the text alone, by elements that are missing or by a last line
  // `  Unrecognized tag code '...' at offset ...`. Nothing beyond the buffer is ever read; what a
  // document refers to there reads as 0 or as the empty string.
  // One call appends about 64 MiB and 16 times `length` at most and then stops, which bounds time
  // and memory: only a forged document comes near (many attributes that name one huge string).
  // Throws std::bad_alloc, and appends nothing then.
  virtual bool Decode(const uint8_t* data, int32_t length) = 0;

  // The value after the first place where the bytes of `name` occur in the text: two bytes (`="`)
  // are passed over, and the value runs to the next quotation mark or to the end of the text. This
  // is a search and no look-up of a key: `name` is found inside longer names and in values too.
  // The caller frees the result with FreeString. It is never null: the empty string when `name`
  // isn't found or is null, or when the text ends before the value. Throws std::bad_alloc.
  virtual char* GetAttributeValue(const char* name) = 0;

 protected:
  ~TMVAndroidManifest() = default;
};

// A new decoder with an empty text, owned by the caller. Throws std::bad_alloc.
TMV_API TMVAndroidManifest* CreateTmvAndroidManifest();

// Frees the decoder. Null does nothing.
TMV_API void DestroyTmvAndroidManifest(TMVAndroidManifest* manifest);

#endif  // TEMVAR_ANDROID_MANIFEST_H_
