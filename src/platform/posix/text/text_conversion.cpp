// Conversions between UTF-8, Windows-1252 and UTF-16. Each runs twice for one text, to measure and
// to write, so both passes are made for long texts: measuring has no branches and writing takes
// runs of ASCII eight at a time.
#include "platform/posix/text/text_conversion.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>
#include <iterator>
#include <string>

#include "platform/posix/errors.h"

namespace {

constexpr char32_t kReplacement = 0xFFFD;

constexpr bool IsSurrogate(char32_t code) { return code >= 0xD800 && code <= 0xDFFF; }

// What a conversion came to. `length` counts the units or bytes of the whole result, so that a
// measuring pass and a writing pass share one code.
struct Outcome {
  size_t length = 0;
  bool wellFormed = true;
  bool fits = true;
};

// Appends to a buffer, or just counts when it has none.
template <typename Unit, bool kWrites>
class Sink {
 public:
  Sink(Unit* target, size_t capacity) : target_(target), capacity_(capacity) {}

  bool HasRoomFor(size_t count) const { return !kWrites || capacity_ - length_ >= count; }

  // REQUIRES: HasRoomFor(1)
  void Put(char32_t unit) {
    if constexpr (kWrites) target_[length_] = static_cast<Unit>(unit);
    ++length_;
  }

  // Appends the first `count` of eight units.
  // REQUIRES: HasRoomFor(8)
  template <typename Source>
  void PutSomeOfEight(const Source* source, size_t count) {
    // Writing all eight takes no branch; a byte beyond `count` is overwritten by what follows.
    if constexpr (kWrites) {
      for (size_t i = 0; i < 8; ++i) target_[length_ + i] = static_cast<Unit>(source[i]);
    }
    length_ += count;
  }

  size_t length() const { return length_; }

 private:
  Unit* target_;
  size_t capacity_;
  size_t length_ = 0;
};

// Number of ASCII units at the start of eight. The masks below count on the order of the bytes.
static_assert(std::endian::native == std::endian::little);

size_t CountAscii(const unsigned char* eight) {
  uint64_t word;
  std::memcpy(&word, eight, sizeof(word));
  return static_cast<size_t>(std::countr_zero(word & 0x8080808080808080u)) / 8;
}

size_t CountAscii(const char16_t* eight) {
  uint64_t words[2];
  std::memcpy(words, eight, sizeof(words));
  const uint64_t others[2] = {words[0] & 0xFF80FF80FF80FF80u, words[1] & 0xFF80FF80FF80FF80u};
  if (others[0] != 0) return static_cast<size_t>(std::countr_zero(others[0])) / 16;
  return 4 + static_cast<size_t>(std::countr_zero(others[1])) / 16;
}

constexpr bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// The number of bytes at `at` that could have become a character but didn't: one U+FFFD replaces
// them. At least 1.
// REQUIRES: at < end, and no well-formed character at `at`.
size_t MalformedSize(const unsigned char* at, const unsigned char* end) {
  const unsigned char lead = at[0];
  const auto available = static_cast<size_t>(end - at);
  if (lead < 0xE0 || lead > 0xF4 || available < 2 || !IsContinuation(at[1])) return 1;
  // Overlong forms, surrogates and values beyond U+10FFFF show in the second byte already.
  if ((lead == 0xE0 && at[1] < 0xA0) || (lead == 0xED && at[1] > 0x9F)) return 1;
  if ((lead == 0xF0 && at[1] < 0x90) || (lead == 0xF4 && at[1] > 0x8F)) return 1;
  const bool hasThird = available >= 3 && IsContinuation(at[2]);
  return lead >= 0xF0 && hasThird ? 3 : 2;
}

// The value of a sequence of `size` bytes, without the bits that mark its length.
template <size_t size>
char32_t Value(const unsigned char* at) {
  char32_t value = at[0] & (0xFFu >> (size + 1));
  for (size_t i = 1; i < size; ++i) value = (value << 6) | (at[i] & 0x3Fu);
  return value;
}

// Whether `byte` is wrong after the three bytes before it, as 1 or 0.
unsigned char IsMisplaced(unsigned char third, unsigned char second, unsigned char before,
                          unsigned char byte) {
  // Each byte of a character of two, three or four bytes is announced by its lead, and only those.
  const bool announced = (before >= 0xC0) | (second >= 0xE0) | (third >= 0xF0);
  const bool unknown = (byte == 0xC0) | (byte == 0xC1) | (byte >= 0xF5);
  // Overlong forms, surrogates and values beyond U+10FFFF.
  const bool outOfRange = ((before == 0xE0) & (byte < 0xA0)) | ((before == 0xED) & (byte > 0x9F)) |
                          ((before == 0xF0) & (byte < 0x90)) | ((before == 0xF4) & (byte > 0x8F));
  return (announced != IsContinuation(byte)) | unknown | outOfRange;
}

// The units that well-formed UTF-8 needs. Without a branch for a byte, so that the compiler can
// look at many bytes at a time.
Outcome Utf16Size(const unsigned char* bytes, size_t size) {
  constexpr size_t kBlock = 64;  // So few that their units can be counted in a byte.
  const auto at = [=](size_t i, size_t back) { return i < back ? uint8_t{0} : bytes[i - back]; };
  size_t units = 0;
  unsigned char misplaced = 0;
  for (size_t i = 0; i < size && i < 3; ++i) {
    misplaced |= IsMisplaced(at(i, 3), at(i, 2), at(i, 1), bytes[i]);
  }
  for (size_t start = 0; start < size; start += kBlock) {
    const size_t end = std::min(start + kBlock, size);
    unsigned char count = 0;
    for (size_t i = start; i < end; ++i) {
      count = static_cast<unsigned char>(count + !IsContinuation(bytes[i]) + (bytes[i] >= 0xF0));
    }
    for (size_t i = std::max<size_t>(start, 3); i < end; ++i) {
      misplaced |= IsMisplaced(bytes[i - 3], bytes[i - 2], bytes[i - 1], bytes[i]);
    }
    units += count;
  }
  // A sequence that the end cuts off lacks a byte where a letter would then be.
  misplaced |= IsMisplaced(at(size, 3), at(size, 2), at(size, 1), 'x');
  misplaced |= IsMisplaced(at(size, 2), at(size, 1), 'x', 'x');
  misplaced |= IsMisplaced(at(size, 1), 'x', 'x', 'x');
  return {units, misplaced == 0, true};
}

template <bool kWrites>
Outcome Utf8ToUtf16(const char* source, size_t size, char16_t* target, size_t capacity,
                    bool strict) {
  Sink<char16_t, kWrites> sink(target, capacity);
  const auto* at = reinterpret_cast<const unsigned char*>(source);
  const auto* const end = at + size;
  while (at != end) {
    const auto available = static_cast<size_t>(end - at);
    if (*at < 0x80) {
      if (available >= 8 && sink.HasRoomFor(8)) {
        const size_t count = CountAscii(at);
        sink.PutSomeOfEight(at, count);
        at += count;
      } else {
        if (!sink.HasRoomFor(1)) return {sink.length(), true, false};
        sink.Put(*at++);
      }
      continue;
    }
    if (*at < 0xE0) {
      if (*at >= 0xC2 && available >= 2 && IsContinuation(at[1])) {
        if (!sink.HasRoomFor(1)) return {sink.length(), true, false};
        sink.Put(Value<2>(at));
        at += 2;
        continue;
      }
    } else if (*at < 0xF0) {
      if (available >= 3 && IsContinuation(at[1]) && IsContinuation(at[2])) {
        const char32_t value = Value<3>(at);
        if (value >= 0x800 && !IsSurrogate(value)) {
          if (!sink.HasRoomFor(1)) return {sink.length(), true, false};
          sink.Put(value);
          at += 3;
          continue;
        }
      }
    } else if (*at < 0xF5 && available >= 4 && IsContinuation(at[1]) && IsContinuation(at[2]) &&
               IsContinuation(at[3])) {
      const char32_t value = Value<4>(at);
      if (value >= 0x10000 && value <= 0x10FFFF) {
        if (!sink.HasRoomFor(2)) return {sink.length(), true, false};
        sink.Put(0xD800 + ((value - 0x10000) >> 10));
        sink.Put(0xDC00 + ((value - 0x10000) & 0x3FF));
        at += 4;
        continue;
      }
    }
    if (strict) return {sink.length(), false, true};
    if (!sink.HasRoomFor(1)) return {sink.length(), true, false};
    sink.Put(kReplacement);
    at += MalformedSize(at, end);
  }
  return {sink.length(), true, true};
}

// The bytes that a text needs in UTF-8. Without a branch, so that the compiler can count many units
// at a time.
size_t Utf8Size(const char16_t* units, size_t size) {
  size_t bytes = size;
  size_t pairs = 0;
  for (size_t i = 0; i < size; ++i) bytes += (units[i] >= 0x80) + (units[i] >= 0x800);
  // A pair takes four bytes, its halves were counted as three each.
  for (size_t i = 1; i < size; ++i) {
    pairs += static_cast<unsigned>((units[i - 1] & 0xFC00) == 0xD800) &
             static_cast<unsigned>((units[i] & 0xFC00) == 0xDC00);
  }
  return bytes - 2 * pairs;
}

Outcome Utf16ToUtf8(const char16_t* source, size_t size, char* target, size_t capacity) {
  Sink<char, true> sink(target, capacity);
  const char16_t* at = source;
  const char16_t* const end = source + size;
  while (at != end) {
    if (*at < 0x80) {
      if (end - at >= 8 && sink.HasRoomFor(8)) {
        const size_t count = CountAscii(at);
        sink.PutSomeOfEight(at, count);
        at += count;
      } else {
        if (!sink.HasRoomFor(1)) return {sink.length(), true, false};
        sink.Put(*at++);
      }
      continue;
    }
    char32_t code = *at++;
    if (IsSurrogate(code)) {
      const bool paired = code < 0xDC00 && at != end && (*at & 0xFC00) == 0xDC00;
      code = paired ? 0x10000 + ((code - 0xD800) << 10) + (*at++ - 0xDC00u) : kReplacement;
    }
    if (code < 0x800) {
      if (!sink.HasRoomFor(2)) return {sink.length(), true, false};
      sink.Put(0xC0 | (code >> 6));
    } else if (code < 0x10000) {
      if (!sink.HasRoomFor(3)) return {sink.length(), true, false};
      sink.Put(0xE0 | (code >> 12));
      sink.Put(0x80 | ((code >> 6) & 0x3F));
    } else {
      if (!sink.HasRoomFor(4)) return {sink.length(), true, false};
      sink.Put(0xF0 | (code >> 18));
      sink.Put(0x80 | ((code >> 12) & 0x3F));
      sink.Put(0x80 | ((code >> 6) & 0x3F));
    }
    sink.Put(0x80 | (code & 0x3F));
  }
  return {sink.length(), true, true};
}

// Windows-1252 from 0x80 to 0x9F; all other bytes encode the character of the same number. The
// five bytes that the code page leaves undefined pass as control characters, as on Windows.
constexpr char16_t kAnsiUpperControls[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char16_t AnsiToUnit(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return value >= 0x80 && value < 0xA0 ? kAnsiUpperControls[value - 0x80]
                                       : static_cast<char16_t>(value);
}

char UnitToAnsi(char16_t unit) {
  if (unit < 0x80 || (unit >= 0xA0 && unit <= 0xFF)) return static_cast<char>(unit);
  for (size_t i = 0; i < std::size(kAnsiUpperControls); ++i) {
    if (kAnsiUpperControls[i] == unit) return static_cast<char>(0x80 + i);
  }
  return '?';
}

int Fail(DWORD error) {
  SetLastError(error);
  return 0;
}

int ResultOf(const Outcome& outcome) {
  if (!outcome.wellFormed) return Fail(ERROR_NO_UNICODE_TRANSLATION);
  if (!outcome.fits) return Fail(ERROR_INSUFFICIENT_BUFFER);
  if (outcome.length > INT_MAX) return Fail(ERROR_INVALID_PARAMETER);
  return static_cast<int>(outcome.length);
}

// Converts texts of which each unit becomes one unit of the other kind.
template <typename From, typename To, typename Convert>
int ConvertEach(const From* source, size_t size, To* target, size_t capacity, Convert convert) {
  if (size > INT_MAX) return Fail(ERROR_INVALID_PARAMETER);
  if (capacity != 0) {
    if (capacity < size) return Fail(ERROR_INSUFFICIENT_BUFFER);
    for (size_t i = 0; i < size; ++i) target[i] = convert(source[i]);
  }
  return static_cast<int>(size);
}

template <typename Unit>
bool AreArgumentsGood(const Unit* source, int sourceSize, const void* target, int capacity) {
  return source != nullptr && sourceSize != 0 && capacity >= 0 &&
         (target != nullptr || capacity == 0);
}

template <typename Unit>
size_t SourceSize(const Unit* source, int sourceSize) {
  return sourceSize < 0 ? std::char_traits<Unit>::length(source) + 1
                        : static_cast<size_t>(sourceSize);
}

}  // namespace

int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int sourceSize, LPWSTR target,
                        int targetCapacity) {
  if (!AreArgumentsGood(source, sourceSize, target, targetCapacity)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const size_t size = SourceSize(source, sourceSize);
  const auto capacity = static_cast<size_t>(targetCapacity);
  if (codePage == CP_ACP) return ConvertEach(source, size, target, capacity, AnsiToUnit);
  if (codePage != CP_UTF8) return Fail(ERROR_INVALID_PARAMETER);
  const bool strict = (flags & MB_ERR_INVALID_CHARS) != 0;
  if (strict && capacity == 0) {
    return ResultOf(Utf16Size(reinterpret_cast<const unsigned char*>(source), size));
  }
  return ResultOf(capacity == 0 ? Utf8ToUtf16<false>(source, size, nullptr, 0, strict)
                                : Utf8ToUtf16<true>(source, size, target, capacity, strict));
}

int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR source, int sourceSize, LPSTR target,
                        int targetCapacity, LPCSTR defaultChar, BOOL* usedDefaultChar) {
  if (!AreArgumentsGood(source, sourceSize, target, targetCapacity) || flags != 0 ||
      defaultChar != nullptr || usedDefaultChar != nullptr) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const size_t size = SourceSize(source, sourceSize);
  const auto capacity = static_cast<size_t>(targetCapacity);
  if (codePage == CP_ACP) return ConvertEach(source, size, target, capacity, UnitToAnsi);
  if (codePage != CP_UTF8) return Fail(ERROR_INVALID_PARAMETER);
  return ResultOf(capacity == 0 ? Outcome{Utf8Size(source, size), true, true}
                                : Utf16ToUtf8(source, size, target, capacity));
}

int _wtoi(const WCHAR* text) {
  if (text == nullptr) return 0;
  while (*text == u' ' || (*text >= u'\t' && *text <= u'\r')) ++text;
  const bool negative = *text == u'-';
  if (*text == u'-' || *text == u'+') ++text;
  int64_t value = 0;
  for (; *text >= u'0' && *text <= u'9'; ++text) {
    value = value * 10 + (*text - u'0');
    if (value > INT_MAX) return negative ? INT_MIN : INT_MAX;
  }
  return static_cast<int>(negative ? -value : value);
}

namespace {

constexpr size_t kMaxDrive = 3;
// Terminators included: the caller's buffers have the sizes that the runtime's header names.
constexpr size_t kMaxPart = 256;

void CopyPart(WCHAR* target, size_t capacity, const WCHAR* from, const WCHAR* to) {
  if (target == nullptr) return;
  size_t length = static_cast<size_t>(to - from);
  if (length > capacity - 1) length = capacity - 1;
  for (size_t i = 0; i < length; ++i) target[i] = from[i];
  target[length] = 0;
}

}  // namespace

void _wsplitpath(const WCHAR* path, WCHAR* drive, WCHAR* directory, WCHAR* fileName,
                 WCHAR* extension) {
  const WCHAR* const afterDrive = path[0] != 0 && path[1] == u':' ? path + 2 : path;
  const WCHAR* name = afterDrive;
  const WCHAR* dot = nullptr;
  const WCHAR* at = afterDrive;
  for (; *at != 0; ++at) {
    if (*at == u'/' || *at == u'\\') {
      name = at + 1;
      dot = nullptr;
    } else if (*at == u'.') {
      dot = at;
    }
  }
  const WCHAR* const end = at;
  if (dot == nullptr) dot = end;
  CopyPart(drive, kMaxDrive, path, afterDrive);
  CopyPart(directory, kMaxPart, afterDrive, name);
  CopyPart(fileName, kMaxPart, name, dot);
  CopyPart(extension, kMaxPart, dot, end);
}
