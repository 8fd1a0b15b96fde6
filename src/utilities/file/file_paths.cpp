// Paths as text: parts, extensions, free names.
#include <cctype>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "platform/win32.h"
#include "utilities/file/system_path.h"
#include "utilities/file/utility_file_impl.h"
#include "utilities/string/text.h"

namespace temvar {
namespace {

using WideString = std::basic_string<TmvWideChar>;
using WideView = std::basic_string_view<TmvWideChar>;

NarrowText Utf8Of(WideView text) { return ToUtf8(WideString(text).c_str()); }

// The text from `start` up to `end`; the rest if `end` lies before it, as a dot in the name of a
// directory does.
WideView Between(WideView text, size_t start, size_t end) {
  return end < start ? text.substr(start) : text.substr(start, end - start);
}

}  // namespace

PathParts TMVUtilityFileImpl::SplitPath(const char* path) {
  // Null parts, where a path that lacks one part has an empty text for it.
  if (path == nullptr || *path == '\0') return {nullptr, nullptr, nullptr};
  const WideText wide = ToWide(path);
  const WideView text(wide.get());
  // The later of the two separators cuts here. MakeUniquePath prefers the backslash, wherever it
  // is.
  const size_t separator = text.find_last_of(TMV_WIDE("/\\"));
  const size_t nameStart = separator == WideView::npos ? 0 : separator + 1;
  const size_t dot = text.rfind(TMV_WIDE('.'));
  const bool hasDot = dot != WideView::npos;
  // All three are made before one is released, so that none leaks if memory runs out.
  NarrowText directory = Utf8Of(text.substr(0, nameStart));
  NarrowText name = Utf8Of(hasDot ? Between(text, nameStart, dot) : text.substr(nameStart));
  NarrowText extension = Utf8Of(hasDot ? text.substr(dot) : WideView());
  return {directory.release(), name.release(), extension.release()};
}

void TMVUtilityFileImpl::FreePathParts(PathParts* parts) {
  if (parts == nullptr) return;
  TMVUtilityString* const strings = TmvUtilityString();
  strings->FreeString(parts->Directory);
  strings->FreeString(parts->Extension);
  strings->FreeString(parts->Name);
}

bool TMVUtilityFileImpl::ExtensionInList(const char* path, const char* list) {
  const char* const dot = path == nullptr ? nullptr : std::strrchr(path, '.');
  if (dot == nullptr || list == nullptr) return false;
  // With both semicolons, so that ".gz" isn't found within ".gzip". Only the key is folded to lower
  // case: an entry of the list with capitals never matches.
  std::string key = std::string(";") + dot + ";";
  for (char& c : key) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return std::strstr(list, key.c_str()) != nullptr;
}

char* TMVUtilityFileImpl::MakeUniquePath(const char* path) {
  if (path == nullptr) return nullptr;
  if (!PathExists(path)) return NewNarrowText(path);
  const WideText wide = ToWide(path);
  const WideView text(wide.get());
  const size_t dot = text.rfind(TMV_WIDE('.'));
  size_t separator = text.rfind(TMV_WIDE('\\'));
  if (separator == WideView::npos) separator = text.rfind(TMV_WIDE('/'));
  // A taken name without a dot or a separator has no place for the number. The caller must test for
  // null before it uses the result.
  if (dot == WideView::npos || separator == WideView::npos) return nullptr;

  WideString before(text.substr(0, separator + 1));
  before += Between(text, separator + 1, dot);
  before += TMV_WIDE('(');
  const WideString after = TMV_WIDE(")") + WideString(text.substr(dot));
  constexpr int kLastNumber = 999;
  for (int n = 1; n <= kLastNumber; ++n) {
    const std::string digits = std::to_string(n);
    WideString candidate = before;
    candidate.append(digits.begin(), digits.end()).append(after);
    const SystemPath systemPath{WideText(NewText(WideView(candidate)))};
    // Tested and not taken: two callers at a time can get one name.
    if (_waccess(systemPath.get(), 0) != 0) return ToUtf8(candidate.c_str()).release();
  }
  // All numbers are taken. The path itself is documented, and a caller that writes there replaces
  // it.
  return NewNarrowText(path);
}

}  // namespace temvar
