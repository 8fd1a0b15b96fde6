// Wide printf. Numbers go through the C library's own formatter, one conversion at a time; texts,
// which in a wide format of the Windows runtime mean other types than in C, are copied here.
#include "platform/posix/text/text_format.h"

#include <climits>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <string_view>

namespace {

enum class Length { kNone, kChar, kShort, kLong, kLongLong, kMax, kSize, kLongDouble, kWide };

// One conversion of a format: %[flags][width][.precision][length]type
struct Conversion {
  std::string flags;
  int width = 0;
  int precision = -1;  // Negative: not given.
  Length length = Length::kNone;
  char type = 0;

  bool IsLeftAligned() const { return flags.find('-') != std::string::npos; }
  bool TakesNarrowText() const {
    if (length == Length::kShort) return true;
    if (length == Length::kLong || length == Length::kWide) return false;
    return type == 'S' || type == 'C';
  }
};

// Collects the text, or just its length once the target is full or missing.
class Output {
 public:
  Output(WCHAR* target, size_t capacity) : target_(target), capacity_(capacity) {}

  void Put(WCHAR unit) {
    if (length_ < capacity_) target_[length_] = unit;
    ++length_;
  }

  template <typename Unit>
  void PutPadded(std::basic_string_view<Unit> text, const Conversion& conversion) {
    const auto width = static_cast<size_t>(conversion.width);
    const size_t padding = width > text.size() ? width - text.size() : 0;
    if (!conversion.IsLeftAligned()) Pad(padding);
    for (const Unit unit : text) Put(ToWide(unit));
    if (conversion.IsLeftAligned()) Pad(padding);
  }

  size_t length() const { return length_; }

 private:
  static WCHAR ToWide(WCHAR unit) { return unit; }
  static WCHAR ToWide(char byte) { return static_cast<unsigned char>(byte); }

  void Pad(size_t count) {
    for (; count != 0 && length_ < capacity_; --count) Put(u' ');
    length_ += count;  // What lies beyond the target is counted only.
  }

  WCHAR* target_;
  size_t capacity_;
  size_t length_ = 0;
};

class WideFormatter {
 public:
  WideFormatter(Output output, const WCHAR* format, va_list arguments)
      : output_(output), at_(format) {
    va_copy(arguments_, arguments);
  }
  ~WideFormatter() { va_end(arguments_); }
  WideFormatter(const WideFormatter&) = delete;
  WideFormatter& operator=(const WideFormatter&) = delete;

  // The length of the whole text, or -1 for a format that is refused.
  int Run() {
    while (*at_ != 0) {
      if (*at_ != u'%') {
        output_.Put(*at_++);
        continue;
      }
      ++at_;
      Conversion conversion;
      if (!Read(conversion) || !Put(conversion) || output_.length() > INT_MAX) return -1;
    }
    return output_.length() > INT_MAX ? -1 : static_cast<int>(output_.length());
  }

 private:
  bool Read(Conversion& conversion) {
    while (*at_ == u'-' || *at_ == u'+' || *at_ == u' ' || *at_ == u'#' || *at_ == u'0') {
      conversion.flags += static_cast<char>(*at_++);
    }
    if (!ReadCount(conversion.width)) return false;
    if (conversion.width < 0) {  // Only an argument can be negative: it means left alignment.
      if (conversion.width == INT_MIN) return false;
      conversion.flags += '-';
      conversion.width = -conversion.width;
    }
    if (Skip(u".")) {
      conversion.precision = 0;
      if (!ReadCount(conversion.precision)) return false;
    }
    conversion.length = ReadLength();
    // No type is beyond ASCII, and the cast below would make another one of it.
    if (*at_ == 0 || *at_ > 0x7F) return false;
    conversion.type = static_cast<char>(*at_++);
    return true;
  }

  // A number in the format or, for '*', from the arguments. Without either `count` stays.
  bool ReadCount(int& count) {
    if (Skip(u"*")) {
      count = va_arg(arguments_, int);
      return true;
    }
    int64_t value = count;
    if (*at_ >= u'0' && *at_ <= u'9') value = 0;
    for (; *at_ >= u'0' && *at_ <= u'9'; ++at_) {
      value = value * 10 + (*at_ - u'0');
      if (value > INT_MAX) return false;
    }
    count = static_cast<int>(value);
    return true;
  }

  Length ReadLength() {
    // The longer prefixes come first: "h" would match the start of "hh".
    if (Skip(u"hh")) return Length::kChar;
    if (Skip(u"h")) return Length::kShort;
    if (Skip(u"ll") || Skip(u"I64")) return Length::kLongLong;
    if (Skip(u"l")) return Length::kLong;
    if (Skip(u"I32")) return Length::kNone;
    if (Skip(u"I") || Skip(u"z") || Skip(u"t")) return Length::kSize;
    if (Skip(u"j")) return Length::kMax;
    if (Skip(u"L")) return Length::kLongDouble;
    if (Skip(u"w")) return Length::kWide;
    return Length::kNone;
  }

  bool Skip(std::u16string_view token) {
    for (size_t i = 0; i < token.size(); ++i) {
      if (at_[i] != token[i]) return false;
    }
    at_ += token.size();
    return true;
  }

  bool Put(const Conversion& conversion) {
    switch (conversion.type) {
      case '%':
        output_.Put(u'%');
        return true;
      case 'd':
      case 'i':
        return PutNumber(conversion, "j", SignedArgument(conversion.length));
      case 'o':
      case 'u':
      case 'x':
      case 'X':
        return PutNumber(conversion, "j", UnsignedArgument(conversion.length));
      case 'a':
      case 'A':
      case 'e':
      case 'E':
      case 'f':
      case 'F':
      case 'g':
      case 'G':
        if (conversion.length == Length::kLongDouble) {
          return PutNumber(conversion, "L", va_arg(arguments_, long double));
        }
        return PutNumber(conversion, "", va_arg(arguments_, double));
      case 'p':
        return PutPointer(conversion);
      case 'c':
      case 'C':
        PutCharacter(conversion);
        return true;
      case 's':
      case 'S':
        if (conversion.TakesNarrowText()) {
          PutText(conversion, va_arg(arguments_, const char*));
        } else {
          PutText(conversion, va_arg(arguments_, const WCHAR*));
        }
        return true;
      default:
        return false;
    }
  }

  intmax_t SignedArgument(Length length) {
    switch (length) {
      case Length::kChar:
        return static_cast<signed char>(va_arg(arguments_, int));
      case Length::kShort:
        return static_cast<short>(va_arg(arguments_, int));
      case Length::kLong:
        return va_arg(arguments_, long);
      // As in glibc, "L" before an integer type is "ll".
      case Length::kLongLong:
      case Length::kLongDouble:
        return va_arg(arguments_, long long);
      case Length::kMax:
        return va_arg(arguments_, intmax_t);
      case Length::kSize:
        return va_arg(arguments_, ptrdiff_t);
      case Length::kNone:
      case Length::kWide:
        break;
    }
    return va_arg(arguments_, int);
  }

  uintmax_t UnsignedArgument(Length length) {
    switch (length) {
      case Length::kChar:
        return static_cast<unsigned char>(va_arg(arguments_, unsigned));
      case Length::kShort:
        return static_cast<unsigned short>(va_arg(arguments_, unsigned));
      case Length::kLong:
        return va_arg(arguments_, unsigned long);
      case Length::kLongLong:
      case Length::kLongDouble:
        return va_arg(arguments_, unsigned long long);
      case Length::kMax:
        return va_arg(arguments_, uintmax_t);
      case Length::kSize:
        return va_arg(arguments_, size_t);
      case Length::kNone:
      case Length::kWide:
        break;
    }
    return va_arg(arguments_, unsigned);
  }

  // Formats one number with the C library, to which the conversion goes as it was read.
  template <typename Number>
  bool PutNumber(const Conversion& conversion, const char* length, Number number) {
    std::string format = "%";
    format.append(conversion.flags).append("*.*").append(length).push_back(conversion.type);
    // The format is made of checked parts, which the compiler can't see.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    // Twice, since a width or precision of the host can be of any size.
    const int size =
        std::snprintf(nullptr, 0, format.c_str(), conversion.width, conversion.precision, number);
    if (size < 0) return false;
    std::string text(static_cast<size_t>(size), '\0');
    std::snprintf(text.data(), text.size() + 1, format.c_str(), conversion.width,
                  conversion.precision, number);
#pragma GCC diagnostic pop
    for (const char character : text) output_.Put(static_cast<unsigned char>(character));
    return true;
  }

  // The runtime of Windows writes all digits of an address, in upper case and without a prefix.
  bool PutPointer(const Conversion& conversion) {
    Conversion digits;
    digits.precision = 2 * sizeof(void*);
    digits.type = 'X';
    if (conversion.IsLeftAligned()) digits.flags.push_back('-');
    digits.width = conversion.width;
    const uintmax_t address = reinterpret_cast<uintptr_t>(va_arg(arguments_, void*));
    return PutNumber(digits, "j", address);
  }

  void PutCharacter(const Conversion& conversion) {
    const int argument = va_arg(arguments_, int);
    const WCHAR unit = conversion.TakesNarrowText() ? static_cast<unsigned char>(argument)
                                                    : static_cast<WCHAR>(argument);
    output_.PutPadded(std::u16string_view(&unit, 1), conversion);
  }

  template <typename Unit>
  void PutText(const Conversion& conversion, const Unit* text) {
    if (text == nullptr) {
      PutText(conversion, "(null)");
      return;
    }
    // With a precision the text may lack a terminator.
    size_t length = 0;
    const size_t limit =
        conversion.precision < 0 ? SIZE_MAX : static_cast<size_t>(conversion.precision);
    while (length < limit && text[length] != 0) ++length;
    output_.PutPadded(std::basic_string_view<Unit>(text, length), conversion);
  }

  Output output_;
  const WCHAR* at_;
  va_list arguments_;
};

}  // namespace

int _vscwprintf(const WCHAR* format, va_list arguments) {
  return WideFormatter(Output(nullptr, 0), format, arguments).Run();
}

int _vsnwprintf(WCHAR* target, size_t capacity, const WCHAR* format, va_list arguments) {
  const int length = WideFormatter(Output(target, capacity), format, arguments).Run();
  // The Windows runtime's results: -1 for a text that was cut, and no terminator for one that just
  // fits.
  if (length < 0 || static_cast<size_t>(length) > capacity) return -1;
  if (static_cast<size_t>(length) < capacity) target[length] = 0;
  return length;
}

// The formats are the host's, which the compiler can't check here.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"

int _vscprintf(const char* format, va_list arguments) {
  return std::vsnprintf(nullptr, 0, format, arguments);
}

int _vsnprintf(char* target, size_t capacity, const char* format, va_list arguments) {
  return std::vsnprintf(target, capacity, format, arguments);
}

#pragma GCC diagnostic pop
