// Builds compiled manifests from words and strings, the well-formed ones as Android's packager lays
// them out, and the forged ones by changing words afterwards.
#ifndef TESTS_SUPPORT_MANIFEST_BUILDER_H_
#define TESTS_SUPPORT_MANIFEST_BUILDER_H_

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace test {

using Bytes = std::vector<uint8_t>;

inline constexpr uint32_t kStartTagCode = 0x00100102;
inline constexpr uint32_t kEndTagCode = 0x00100103;
inline constexpr uint32_t kTextCode = 0x00100104;
inline constexpr uint32_t kEndNamespaceCode = 0x00100101;
inline constexpr uint32_t kNone = 0xFFFFFFFF;

inline void PutWord(Bytes& out, uint32_t word) {
  for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<uint8_t>(word >> shift));
}

inline void SetWord(Bytes& bytes, size_t offset, uint32_t word) {
  for (size_t i = 0; i < 4; ++i) bytes.at(offset + i) = static_cast<uint8_t>(word >> (8 * i));
}

struct Attribute {
  uint32_t name;
  uint32_t string;  // kNone: the typed value counts
  uint32_t typed = 0;
};

class ManifestBuilder {
 public:
  // Strings of Latin-1 characters; their places in the list are the indices.
  explicit ManifestBuilder(std::initializer_list<std::string_view> strings) {
    for (const std::string_view text : strings) {
      index_.push_back(static_cast<uint32_t>(data_.size()));
      PutUnit(text.size());
      for (const char unit : text) PutUnit(static_cast<uint8_t>(unit));
      PutUnit(0);
    }
    while (data_.size() % 4 != 0) data_.push_back(0);
  }

  ManifestBuilder& Start(uint32_t name, std::initializer_list<Attribute> attributes = {}) {
    const auto count = static_cast<uint32_t>(attributes.size());
    Words({kStartTagCode, 36 + 20 * count, 1, kNone, kNone, name, 0x00140014, count, 0});
    for (const Attribute& attribute : attributes) {
      Words({kNone, attribute.name, attribute.string, 0x10000008, attribute.typed});
    }
    return *this;
  }

  ManifestBuilder& End(uint32_t name) { return Words({kEndTagCode, 24, 1, kNone, kNone, name}); }
  ManifestBuilder& Words(std::initializer_list<uint32_t> words) {
    for (const uint32_t word : words) PutWord(records_, word);
    return *this;
  }

  // The document, with the record that ends a namespace after the last tag.
  Bytes Build() const {
    const auto pool = static_cast<uint32_t>(28 + 4 * index_.size() + data_.size());
    const auto count = static_cast<uint32_t>(index_.size());
    const auto total = static_cast<uint32_t>(8 + pool + records_.size() + 24);
    Bytes out;
    for (const uint32_t word :
         {0x00080003u, total, 0x001C0001u, pool, count, 0u, 0u, 28 + 4 * count, 0u}) {
      PutWord(out, word);
    }
    for (const uint32_t entry : index_) PutWord(out, entry);
    out.insert(out.end(), data_.begin(), data_.end());
    out.insert(out.end(), records_.begin(), records_.end());
    for (const uint32_t word : {kEndNamespaceCode, 24u, 1u, kNone, 0u, 0u}) PutWord(out, word);
    return out;
  }

  // Where the first record is in the document.
  size_t FirstRecord() const { return 36 + 4 * index_.size() + data_.size(); }

 private:
  void PutUnit(size_t unit) {
    data_.push_back(static_cast<uint8_t>(unit));
    data_.push_back(static_cast<uint8_t>(unit >> 8));
  }

  std::vector<uint32_t> index_;
  Bytes data_;
  Bytes records_;
};

}  // namespace test

#endif  // TESTS_SUPPORT_MANIFEST_BUILDER_H_
