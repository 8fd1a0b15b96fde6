#ifndef TEMVAR_SETTINGS_SETTINGS_FILE_H_
#define TEMVAR_SETTINGS_SETTINGS_FILE_H_

#include <cstddef>
#include <optional>
#include <string>

namespace temvar {

// The bytes of the file at `path`; none if it can't be opened or isn't a plain file.
std::optional<std::string> ReadSettingsFile(const char* path);

// Replaces the content of the file at `path`. Nothing happens if it can't be opened.
void WriteSettingsFile(const char* path, const char* text, size_t size);

}  // namespace temvar

#endif  // TEMVAR_SETTINGS_SETTINGS_FILE_H_
