#include "settings/settings_file.h"

#include <cstdint>
#include <cstdio>

#include "temvar/utility_file.h"
#include "utilities/file/owned_handles.h"

namespace temvar {
namespace {

// The parser counts in 32 bits, so a file of more bytes can't be valid. Where a directory can be
// opened as a file, its size is far beyond that too.
constexpr int64_t kMaxFileSize = UINT32_MAX - 1;

}  // namespace

std::optional<std::string> ReadSettingsFile(const char* path) {
  const Stream file(TmvUtilityFile()->OpenFile(path, "rb"));
  if (file == nullptr || std::fseek(file.get(), 0, SEEK_END) != 0) return std::nullopt;
  const int64_t size = std::ftell(file.get());
  if (size < 0 || size > kMaxFileSize || std::fseek(file.get(), 0, SEEK_SET) != 0) {
    return std::nullopt;
  }
  std::string text(static_cast<size_t>(size), '\0');
  // A file that has shrunk meanwhile leaves NULs at the end, and the text ends there.
  static_cast<void>(std::fread(text.data(), 1, text.size(), file.get()));
  return text;
}

void WriteSettingsFile(const char* path, const char* text, size_t size) {
  // Binary, so that lines end in LF on Windows too. A failure has no way to the host.
  if (const Stream file(TmvUtilityFile()->OpenFile(path, "wb")); file != nullptr) {
    static_cast<void>(std::fwrite(text, 1, size, file.get()));
  }
}

}  // namespace temvar
