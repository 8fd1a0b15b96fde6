#include "platform/posix/files/narrow_path.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "platform/posix/errors.h"

namespace temvar::posix {
namespace {

constexpr char32_t kInvalid = 0xFFFFFFFF;
constexpr char32_t kReplacement = 0xFFFD;

bool HasDriveLetter(LPCWSTR wide) {
  const char16_t letter = static_cast<char16_t>(wide[0] | 0x20);
  return letter >= u'a' && letter <= u'z' && wide[1] == u':';
}

// The code point at `wide`, which moves past it; kInvalid for half a surrogate pair.
char32_t NextCodePoint(LPCWSTR& wide) {
  const char32_t first = *wide++;
  if (first < 0xD800 || first > 0xDFFF) return first;
  const char32_t second = *wide;
  if (first > 0xDBFF || second < 0xDC00 || second > 0xDFFF) return kInvalid;
  ++wide;
  return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

// Writes `point` as UTF-8 to `bytes`, which has room for 4, and returns their number.
size_t EncodeUtf8(char32_t point, char* bytes) {
  const auto continuation = [point](unsigned shift) {
    return static_cast<char>(0x80 | ((point >> shift) & 0x3F));
  };
  if (point < 0x80) {
    bytes[0] = static_cast<char>(point);
    return 1;
  }
  if (point < 0x800) {
    bytes[0] = static_cast<char>(0xC0 | (point >> 6));
    bytes[1] = continuation(0);
    return 2;
  }
  if (point < 0x10000) {
    bytes[0] = static_cast<char>(0xE0 | (point >> 12));
    bytes[1] = continuation(6);
    bytes[2] = continuation(0);
    return 3;
  }
  bytes[0] = static_cast<char>(0xF0 | (point >> 18));
  bytes[1] = continuation(12);
  bytes[2] = continuation(6);
  bytes[3] = continuation(0);
  return 4;
}

// The code point at `bytes`, which moves past it; of malformed text one byte goes as U+FFFD.
char32_t DecodeUtf8(const unsigned char*& bytes) {
  const unsigned char lead = *bytes++;
  if (lead < 0x80) return lead;
  const int more = lead >= 0xC2 && lead <= 0xDF   ? 1
                   : lead >= 0xE0 && lead <= 0xEF ? 2
                   : lead >= 0xF0 && lead <= 0xF4 ? 3
                                                  : 0;
  if (more == 0) return kReplacement;
  char32_t point = lead & (0x3Fu >> more);
  for (int i = 0; i < more; ++i) {
    if ((bytes[i] & 0xC0) != 0x80) return kReplacement;
    point = (point << 6) | (bytes[i] & 0x3Fu);
  }
  constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
  const bool surrogate = point >= 0xD800 && point <= 0xDFFF;
  if (point < kSmallest[more] || point > 0x10FFFF || surrogate) return kReplacement;
  bytes += more;
  return point;
}

}  // namespace

NarrowPath::NarrowPath(LPCWSTR wide) {
  bytes_[0] = '\0';
  ok_ = Convert(wide);
}

bool NarrowPath::Convert(LPCWSTR wide) {
  if (wide != nullptr && HasDriveLetter(wide)) wide += 2;
  if (wide == nullptr || *wide == u'\0') {
    errno = ENOENT;
    SetLastError(ERROR_PATH_NOT_FOUND);
    return false;
  }
  while (*wide != u'\0') {
    const char32_t point = NextCodePoint(wide);
    char encoded[4];
    if (point == kInvalid) {
      errno = EILSEQ;
      SetLastError(ERROR_INVALID_NAME);
      return false;
    }
    const size_t count = EncodeUtf8(point == U'\\' ? U'/' : point, encoded);
    if (length_ + count >= sizeof(bytes_)) {
      errno = ENAMETOOLONG;
      SetLastError(ERROR_FILENAME_EXCED_RANGE);
      return false;
    }
    std::memcpy(bytes_ + length_, encoded, count);
    length_ += count;
  }
  bytes_[length_] = '\0';
  return true;
}

void NarrowPath::StripTrailingSeparators() {
  while (length_ > 1 && bytes_[length_ - 1] == '/') bytes_[--length_] = '\0';
}

void NarrowPath::CutToParent() {
  while (length_ > 0 && bytes_[length_ - 1] != '/') --length_;
  if (length_ == 0) bytes_[length_++] = '.';
  bytes_[length_] = '\0';
  StripTrailingSeparators();
}

const char* NarrowPath::LastComponent() const {
  size_t start = length_;
  while (start > 0 && bytes_[start - 1] != '/') --start;
  return bytes_ + start;
}

void SetLastErrorForPath(const NarrowPath& path) {
  const int error = errno;
  if (error == ENOENT) {
    NarrowPath parent(path);
    parent.StripTrailingSeparators();
    parent.CutToParent();
    struct stat info;
    if (stat(parent.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) {
      errno = error;
      SetLastError(ERROR_PATH_NOT_FOUND);
      return;
    }
    errno = error;
  }
  SetLastErrorFromErrno();
}

void WideFileName(const char* name, LPWSTR wide, size_t capacity) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(name);
  size_t length = 0;
  while (*bytes != 0 && length + 2 < capacity) {
    char32_t point = DecodeUtf8(bytes);
    if (point == U'\\') point = kReplacement;
    if (point >= 0x10000) {
      wide[length++] = static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10));
      wide[length++] = static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FF));
    } else {
      wide[length++] = static_cast<char16_t>(point);
    }
  }
  wide[length] = u'\0';
}

}  // namespace temvar::posix
