#include "android/binary_xml.h"

#include <algorithm>
#include <limits>

namespace temvar {
namespace {

constexpr int64_t kScanStart = 12;
constexpr int64_t kStringCount = 16;
constexpr int64_t kStringIndex = 36;
constexpr int64_t kWord = 4;

}  // namespace

BinaryXml::BinaryXml(const uint8_t* data, int32_t length)
    : data_(data), length_(data == nullptr ? 0 : std::max(length, 0)) {
  strings_ = kStringIndex + kWord * Word(kStringCount);
}

int32_t BinaryXml::Word(int64_t offset) const {
  if (offset < 0 || offset + kWord > length_) return 0;
  const uint8_t* at = data_ + offset;
  const uint32_t value = static_cast<uint32_t>(at[0]) | static_cast<uint32_t>(at[1]) << 8 |
                         static_cast<uint32_t>(at[2]) << 16 | static_cast<uint32_t>(at[3]) << 24;
  return static_cast<int32_t>(value);
}

int64_t BinaryXml::FirstRecord() const {
  const int64_t start = Word(kScanStart);
  // Before the buffer there is nothing to find, so a negative start moves up to the first step
  // inside it.
  const int64_t first = start >= 0 ? start : start + (-start + kWord - 1) / kWord * kWord;
  for (int64_t offset = first; offset < length_ - kWord; offset += kWord) {
    if (static_cast<uint32_t>(Word(offset)) == kStartTag) return offset;
  }
  return start;
}

void BinaryXml::AppendString(int32_t index, std::string& out) const {
  // The index is not compared with the string count: entries beyond it are read like others.
  const int64_t entry = kStringIndex + kWord * index;
  if (index < 0 || entry > std::numeric_limits<int32_t>::max()) return;
  const int64_t start = strings_ + Word(entry);
  if (start < 0 || start + 2 > length_) return;
  const uint8_t* units = data_ + start + 2;
  const int64_t count = data_[start] | data_[start + 1] << 8;
  const int64_t available = std::min(count, (length_ - start - 2) / 2);
  int64_t used = 0;
  while (used < available && units[2 * used] != 0) ++used;
  const size_t end = out.size();
  out.resize(end + static_cast<size_t>(used));
  for (int64_t i = 0; i < used; ++i) {
    out[end + static_cast<size_t>(i)] = static_cast<char>(units[2 * i]);
  }
}

}  // namespace temvar
