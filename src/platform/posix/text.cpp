#include <climits>
#include <cstring>
#include <iterator>
#include <string>

#include "platform/win32.h"

namespace {

constexpr char32_t kReplacement = 0xFFFD;

// What a conversion came to. `length` counts the units or bytes of the whole result, so that a
// measuring pass and a writing pass share one code.
struct Outcome {
  size_t length = 0;
  bool well_formed = true;
  bool fits = true;
};

// Appends to a buffer, or just counts when it has none.
template <typename Unit, bool kWrites>
class Sink {
 public:
  Sink(Unit* target, size_t capacity) : target_(target), capacity_(capacity) {}

  bool HasRoomFor(size_t count) const { return !kWrites || capacity_ - length_ >= count; }

  // REQUIRES: HasRoomFor(1)
  void Put(Unit unit) {
    if constexpr (kWrites) target_[length_] = unit;
    ++length_;
  }

  // REQUIRES: HasRoomFor(8)
  template <typename Source>
  void PutEight(const Source* source) {
    if constexpr (kWrites) {
      for (size_t i = 0; i < 8; ++i) target_[length_ + i] = static_cast<Unit>(source[i]);
    }
    length_ += 8;
  }

  size_t length() const { return length_; }

 private:
  Unit* target_;
  size_t capacity_;
  size_t length_ = 0;
};

constexpr bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// One character read from UTF-8. For an ill-formed sequence `size` covers its longest start that
// could have become a character, at least one byte, and `valid` is false.
struct Utf8Character {
  char32_t code;
  unsigned size;
  bool valid;
};

constexpr Utf8Character Malformed(unsigned size) { return {kReplacement, size, false}; }

// REQUIRES: at < end, and *at is not ASCII.
Utf8Character ReadUtf8(const unsigned char* at, const unsigned char* end) {
  const unsigned char lead = at[0];
  const auto available = static_cast<size_t>(end - at);
  if (lead < 0xC2 || lead > 0xF4) return Malformed(1);
  if (available < 2 || !IsContinuation(at[1])) return Malformed(1);
  if (lead < 0xE0) {
    return {(static_cast<char32_t>(lead & 0x1F) << 6) | (at[1] & 0x3Fu), 2, true};
  }
  if (lead < 0xF0) {
    // Overlong forms and surrogates show in the second byte already.
    if ((lead == 0xE0 && at[1] < 0xA0) || (lead == 0xED && at[1] > 0x9F)) return Malformed(1);
    if (available < 3 || !IsContinuation(at[2])) return Malformed(2);
    return {(static_cast<char32_t>(lead & 0x0F) << 12) | ((at[1] & 0x3Fu) << 6) | (at[2] & 0x3Fu),
            3, true};
  }
  if ((lead == 0xF0 && at[1] < 0x90) || (lead == 0xF4 && at[1] > 0x8F)) return Malformed(1);
  if (available < 3 || !IsContinuation(at[2])) return Malformed(2);
  if (available < 4 || !IsContinuation(at[3])) return Malformed(3);
  return {(static_cast<char32_t>(lead & 0x07) << 18) | ((at[1] & 0x3Fu) << 12) |
              ((at[2] & 0x3Fu) << 6) | (at[3] & 0x3Fu),
          4, true};
}

template <bool kWrites>
Outcome Utf8ToUtf16(const char* source, size_t size, char16_t* target, size_t capacity,
                    bool strict) {
  Sink<char16_t, kWrites> sink(target, capacity);
  const auto* at = reinterpret_cast<const unsigned char*>(source);
  const auto* const end = at + size;
  while (at != end) {
    if (*at < 0x80) {
      // Most text is long runs of ASCII: eight bytes at a time.
      uint64_t word = 0;
      while (end - at >= 8 && sink.HasRoomFor(8)) {
        std::memcpy(&word, at, sizeof(word));
        if ((word & 0x8080808080808080u) != 0) break;
        sink.PutEight(at);
        at += 8;
      }
      while (at != end && *at < 0x80) {
        if (!sink.HasRoomFor(1)) return {sink.length(), true, false};
        sink.Put(*at++);
      }
      continue;
    }
    const Utf8Character character = ReadUtf8(at, end);
    if (!character.valid && strict) return {sink.length(), false, true};
    at += character.size;
    if (character.code < 0x10000) {
      if (!sink.HasRoomFor(1)) return {sink.length(), true, false};
      sink.Put(static_cast<char16_t>(character.code));
    } else {
      if (!sink.HasRoomFor(2)) return {sink.length(), true, false};
      const char32_t offset = character.code - 0x10000;
      sink.Put(static_cast<char16_t>(0xD800 + (offset >> 10)));
      sink.Put(static_cast<char16_t>(0xDC00 + (offset & 0x3FF)));
    }
  }
  return {sink.length(), true, true};
}

constexpr bool IsHighSurrogate(char32_t unit) { return (unit & 0xFC00) == 0xD800; }
constexpr bool IsLowSurrogate(char32_t unit) { return (unit & 0xFC00) == 0xDC00; }

bool AreEightAscii(const char16_t* units) {
  uint64_t words[2];
  std::memcpy(words, units, sizeof(words));
  return ((words[0] | words[1]) & 0xFF80FF80FF80FF80u) == 0;
}

template <bool kWrites>
Outcome Utf16ToUtf8(const char16_t* source, size_t size, char* target, size_t capacity) {
  Sink<char, kWrites> sink(target, capacity);
  const char16_t* at = source;
  const char16_t* const end = source + size;
  const auto put = [&sink](char32_t bits) { sink.Put(static_cast<char>(bits)); };
  while (at != end) {
    if (*at < 0x80) {
      while (end - at >= 8 && sink.HasRoomFor(8) && AreEightAscii(at)) {
        sink.PutEight(at);
        at += 8;
      }
      while (at != end && *at < 0x80) {
        if (!sink.HasRoomFor(1)) return {sink.length(), true, false};
        put(*at++);
      }
      continue;
    }
    char32_t code = *at++;
    if (IsHighSurrogate(code) && at != end && IsLowSurrogate(*at)) {
      code = 0x10000 + ((code - 0xD800) << 10) + (static_cast<char32_t>(*at++) - 0xDC00);
    } else if (IsHighSurrogate(code) || IsLowSurrogate(code)) {
      code = kReplacement;
    }
    if (code < 0x800) {
      if (!sink.HasRoomFor(2)) return {sink.length(), true, false};
      put(0xC0 | (code >> 6));
    } else if (code < 0x10000) {
      if (!sink.HasRoomFor(3)) return {sink.length(), true, false};
      put(0xE0 | (code >> 12));
      put(0x80 | ((code >> 6) & 0x3F));
    } else {
      if (!sink.HasRoomFor(4)) return {sink.length(), true, false};
      put(0xF0 | (code >> 18));
      put(0x80 | ((code >> 12) & 0x3F));
      put(0x80 | ((code >> 6) & 0x3F));
    }
    put(0x80 | (code & 0x3F));
  }
  return {sink.length(), true, true};
}

// Windows-1252 from 0x80 to 0x9F; all other bytes stand for the character of the same number. The
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
  if (!outcome.well_formed) return Fail(ERROR_NO_UNICODE_TRANSLATION);
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
bool AreArgumentsGood(const Unit* source, int source_size, const void* target, int capacity) {
  return source != nullptr && source_size != 0 && capacity >= 0 &&
         (target != nullptr || capacity == 0);
}

template <typename Unit>
size_t SourceSize(const Unit* source, int source_size) {
  return source_size < 0 ? std::char_traits<Unit>::length(source) + 1
                         : static_cast<size_t>(source_size);
}

}  // namespace

int MultiByteToWideChar(UINT code_page, DWORD flags, LPCSTR source, int source_size, LPWSTR target,
                        int target_capacity) {
  if (!AreArgumentsGood(source, source_size, target, target_capacity)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const size_t size = SourceSize(source, source_size);
  const auto capacity = static_cast<size_t>(target_capacity);
  if (code_page == CP_ACP) return ConvertEach(source, size, target, capacity, AnsiToUnit);
  if (code_page != CP_UTF8) return Fail(ERROR_INVALID_PARAMETER);
  const bool strict = (flags & MB_ERR_INVALID_CHARS) != 0;
  return ResultOf(capacity == 0 ? Utf8ToUtf16<false>(source, size, nullptr, 0, strict)
                                : Utf8ToUtf16<true>(source, size, target, capacity, strict));
}

int WideCharToMultiByte(UINT code_page, DWORD flags, LPCWSTR source, int source_size, LPSTR target,
                        int target_capacity, LPCSTR default_char, BOOL* used_default_char) {
  if (!AreArgumentsGood(source, source_size, target, target_capacity) || flags != 0 ||
      default_char != nullptr || used_default_char != nullptr) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const size_t size = SourceSize(source, source_size);
  const auto capacity = static_cast<size_t>(target_capacity);
  if (code_page == CP_ACP) return ConvertEach(source, size, target, capacity, UnitToAnsi);
  if (code_page != CP_UTF8) return Fail(ERROR_INVALID_PARAMETER);
  return ResultOf(capacity == 0 ? Utf16ToUtf8<false>(source, size, nullptr, 0)
                                : Utf16ToUtf8<true>(source, size, target, capacity));
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
constexpr size_t kMaxPart = 256;

void CopyPart(WCHAR* target, size_t capacity, const WCHAR* from, const WCHAR* to) {
  if (target == nullptr) return;
  size_t length = static_cast<size_t>(to - from);
  if (length > capacity - 1) length = capacity - 1;
  for (size_t i = 0; i < length; ++i) target[i] = from[i];
  target[length] = 0;
}

}  // namespace

void _wsplitpath(const WCHAR* path, WCHAR* drive, WCHAR* directory, WCHAR* file_name,
                 WCHAR* extension) {
  const WCHAR* const after_drive = path[0] != 0 && path[1] == u':' ? path + 2 : path;
  const WCHAR* name = after_drive;
  const WCHAR* dot = nullptr;
  const WCHAR* at = after_drive;
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
  CopyPart(drive, kMaxDrive, path, after_drive);
  CopyPart(directory, kMaxPart, after_drive, name);
  CopyPart(file_name, kMaxPart, name, dot);
  CopyPart(extension, kMaxPart, dot, end);
}
