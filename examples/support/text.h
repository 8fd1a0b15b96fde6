#ifndef EXAMPLES_SUPPORT_TEXT_H_
#define EXAMPLES_SUPPORT_TEXT_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace support {

// Paths and UTF-8, which is what the library and the screen take.
inline std::filesystem::path PathFromUtf8(const std::string& text) {
  return std::filesystem::path(std::u8string(text.begin(), text.end()));
}
// A folder that the library reports: with backslashes on every system.
inline std::filesystem::path PathFromFolder(std::string text) {
  std::replace(text.begin(), text.end(), '\\', '/');
  return PathFromUtf8(text);
}
inline std::string Utf8FromPath(const std::filesystem::path& path) {
  const std::u8string text = path.generic_u8string();
  return std::string(text.begin(), text.end());
}

// A number of bytes for people: "812 B", "3.4 MB".
std::string FormatBytes(uint64_t bytes);

// The columns that a terminal takes for a text: two for a character of East Asia or an emoji, none
// for an accent that joins the character before it.
size_t Columns(const std::string& text);

// `text` in exactly `width` columns: padded, or with its front cut off and "..." in its place.
std::string FitColumns(const std::string& text, size_t width);

}  // namespace support

#endif  // EXAMPLES_SUPPORT_TEXT_H_
