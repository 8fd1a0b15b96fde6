#include "support/text.h"

#include <cstdio>
#include <iterator>

namespace support {

namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// The blocks that matter for the names of files; terminals differ in the rest.
constexpr Range kWide[] = {{0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0xA4CF},
                           {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},
                           {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},   {0x1F300, 0x1F64F},
                           {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};
constexpr Range kJoined[] = {
    {0x0300, 0x036F}, {0x200B, 0x200F}, {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}, {0xE0100, 0xE01EF}};

template <size_t count>
bool IsIn(const Range (&ranges)[count], char32_t character) {
  for (const Range& range : ranges) {
    if (character >= range.first && character <= range.last) return true;
  }
  return false;
}

size_t Width(char32_t character) {
  if (IsIn(kJoined, character)) return 0;
  return IsIn(kWide, character) ? 2 : 1;
}

// The character at `at`, which moves on. A byte that is no UTF-8 counts as a character.
char32_t Next(const std::string& text, size_t& at) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(at++);
  const size_t more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
  char32_t character = more == 0 ? lead : lead & (0x3Fu >> more);
  for (size_t i = 0; i < more && at < text.size() && (byte(at) & 0xC0u) == 0x80u; ++i) {
    character = character << 6 | (byte(at++) & 0x3Fu);
  }
  return character;
}

}  // namespace

std::string FormatBytes(uint64_t bytes) {
  static const char* const kUnits[] = {"B", "kB", "MB", "GB", "TB"};
  double value = static_cast<double>(bytes);
  size_t unit = 0;
  while (value >= 999.5 && unit + 1 < std::size(kUnits)) {
    value /= 1000;
    ++unit;
  }
  char text[32];
  std::snprintf(text, sizeof(text), unit == 0 || value >= 99.95 ? "%.0f %s" : "%.1f %s", value,
                kUnits[unit]);
  return text;
}

size_t Columns(const std::string& text) {
  size_t columns = 0;
  for (size_t at = 0; at < text.size();) columns += Width(Next(text, at));
  return columns;
}

std::string FitColumns(const std::string& text, size_t width) {
  size_t columns = Columns(text);
  std::string fitted = text;
  if (columns > width) {
    const size_t dots = std::min<size_t>(3, width);
    size_t from = 0;
    while (from < text.size() && columns > width - dots) columns -= Width(Next(text, from));
    fitted = std::string(dots, '.') + text.substr(from);
    columns += dots;
  }
  return fitted.append(width - columns, ' ');
}

}  // namespace support
