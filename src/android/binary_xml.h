// Reading of Android's binary XML as a table of 32-bit little-endian words and a pool of strings.
//
//   offset  0            12 bytes that are not read (magic, sizes)
//          12            scan start: where the search for the first start tag begins
//          16            number of entries in the string index
//          20            16 bytes that are not read (styles, flags: every pool is read as UTF-16)
//          36            string index: for each string its offset in the string data
//          36 + 4 * n    string data: each string a 16-bit count and that many 16-bit units
//
// 1. A word outside the buffer, also in part, reads as 0; so does one at a negative offset.
// 2. A string outside the buffer is empty; one that runs past its end stops there.
// 3. Offsets come from the document and can be any 32-bit number; sums are made in 64 bits.
#ifndef TEMVAR_ANDROID_BINARY_XML_H_
#define TEMVAR_ANDROID_BINARY_XML_H_

#include <cstdint>
#include <string>

namespace temvar {

class BinaryXml {
 public:
  // Refers to `data`, which must outlive this object. A null buffer and a negative length are
  // empty.
  BinaryXml(const uint8_t* data, int32_t length);

  int64_t length() const { return length_; }

  // The word at `offset`, read as signed.
  int32_t Word(int64_t offset) const;

  // Offset of the first record: the first start tag at or after the scan start, in steps of a
  // word, or the scan start itself if there is none.
  int64_t FirstRecord() const;

  // Appends string `index` to `out`: the low byte of each unit, up to the first that is zero.
  void AppendString(int32_t index, std::string& out) const;

 private:
  const uint8_t* data_;
  int64_t length_;
  int64_t strings_;  // offset of the string data
};

inline constexpr uint32_t kEndNamespace = 0x00100101;
inline constexpr uint32_t kStartTag = 0x00100102;
inline constexpr uint32_t kEndTag = 0x00100103;

}  // namespace temvar

#endif  // TEMVAR_ANDROID_BINARY_XML_H_
