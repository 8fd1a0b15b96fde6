#include "platform/posix/files/narrow_path.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "platform/posix/errors.h"
#include "platform/posix/text/text_conversion.h"

namespace temvar::posix {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool HasDriveLetter(LPCWSTR wide) {
  const char16_t letter = static_cast<char16_t>(wide[0] | 0x20);
  return letter >= u'a' && letter <= u'z' && wide[1] == u':';
}

bool IsHighSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
bool IsLowSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

// Whether a surrogate of the text lacks its other half.
bool HasHalfPair(LPCWSTR wide) {
  for (; *wide != u'\0'; ++wide) {
    if (IsHighSurrogate(*wide) && IsLowSurrogate(wide[1])) {
      ++wide;
    } else if (IsHighSurrogate(*wide) || IsLowSurrogate(*wide)) {
      return true;
    }
  }
  return false;
}

// The code point at `bytes`, which moves past it; of malformed text one byte goes as U+FFFD. Not
// MultiByteToWideChar, which replaces several bytes at once and refuses a name that is too long for
// the target, where this one is cut.
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
  // The conversion would replace it, and so name another file.
  if (HasHalfPair(wide)) {
    errno = EILSEQ;
    SetLastError(ERROR_INVALID_NAME);
    return false;
  }
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, wide, -1, bytes_, sizeof(bytes_), nullptr, nullptr);
  if (size == 0) {
    bytes_[0] = '\0';
    errno = ENAMETOOLONG;
    SetLastError(ERROR_FILENAME_EXCED_RANGE);
    return false;
  }
  length_ = static_cast<size_t>(size) - 1;
  std::replace(bytes_, bytes_ + length_, '\\', '/');
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
