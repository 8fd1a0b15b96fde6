#include "support/text.h"

#include <cstdio>

namespace support {
namespace {

bool StartsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0u) != 0x80u; }

}  // namespace

std::string FormatBytes(uint64_t bytes) {
  static const char* const kUnits[] = {"B", "kB", "MB", "GB", "TB"};
  double value = static_cast<double>(bytes);
  size_t unit = 0;
  while (value >= 1000 && unit + 1 < std::size(kUnits)) {
    value /= 1000;
    ++unit;
  }
  char text[32];
  std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", value, kUnits[unit]);
  return text;
}

std::string MessageOf(const std::exception_ptr& error) {
  if (!error) return {};
  try {
    std::rethrow_exception(error);
  } catch (const std::exception& exception) {
    return exception.what();
  } catch (...) {
    return "unknown error";
  }
}

std::string FitColumns(const std::string& text, size_t width) {
  size_t columns = 0;
  for (const char byte : text) columns += StartsCharacter(byte) ? 1 : 0;
  std::string fitted = text;
  if (columns > width) {
    size_t from = 0;
    for (size_t drop = columns - (width - 3); drop > 0; --drop) {
      do ++from;
      while (from < text.size() && !StartsCharacter(text[from]));
    }
    fitted = "..." + text.substr(from);
    columns = width;
  }
  return fitted.append(width - columns, ' ');
}

}  // namespace support
