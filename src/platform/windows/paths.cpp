#include "platform/paths.h"

#include <cstdlib>
#include <cwchar>
#include <new>
#include <string>
#include <string_view>

#include "platform/win32.h"

namespace temvar {
namespace {

// From this length on some function refuses a path: CreateDirectoryW leaves room for a short name.
constexpr size_t kShortLimit = MAX_PATH - 12;

// The system counts a path's bytes in 16 bits. Wine (seen in 8.0) reads beyond a longer one instead
// of refusing it, so no such path reaches a function of the system; the room is for the prefix.
constexpr size_t kLongLimit = 32767 - 16;

bool IsSeparator(wchar_t unit) { return unit == L'\\' || unit == L'/'; }

// `C:\` or `\\server` or `\\?\`.
bool IsAbsolute(const wchar_t* path) {
  if (IsSeparator(path[0])) return IsSeparator(path[1]);
  return path[0] != L'\0' && path[1] == L':' && IsSeparator(path[2]);
}

// The absolute form of a path; empty if the system has none.
std::wstring FullPath(const wchar_t* path) {
  std::wstring full(GetFullPathNameW(path, 0, nullptr, nullptr), L'\0');
  if (full.empty()) return full;
  const DWORD length =
      GetFullPathNameW(path, static_cast<DWORD>(full.size()), full.data(), nullptr);
  // Another thread can have changed the current directory in between; the path is then left alone.
  full.resize(length < full.size() ? length : 0);
  return full;
}

wchar_t* NewBlock(const std::wstring& text) {
  // Two terminators, which end a list of one path for the shell.
  auto* const block = static_cast<wchar_t*>(std::calloc(text.size() + 2, sizeof(wchar_t)));
  if (block == nullptr) throw std::bad_alloc();
  text.copy(block, text.size());
  return block;
}

}  // namespace

TmvWideChar* NewLongPath(const TmvWideChar* path) {
  if (*path == L'\0') return nullptr;
  const size_t length = std::wcslen(path);
  if (length > kLongLimit) return NewBlock({});
  // The common case costs no look-up and no block.
  if (IsAbsolute(path) && length < kShortLimit) return nullptr;
  const std::wstring full = FullPath(path);
  if (full.size() > kLongLimit) return NewBlock({});
  if (full.size() < kShortLimit) return nullptr;
  // Has its prefix already, or names a device.
  if (full.starts_with(L"\\\\?\\") || full.starts_with(L"\\\\.\\")) return nullptr;
  if (full.starts_with(L"\\\\")) return NewBlock(L"\\\\?\\UNC" + full.substr(1));
  return NewBlock(L"\\\\?\\" + full);
}

TmvWideChar* NewShellPath(const TmvWideChar* path) {
  if (*path == L'\0') return nullptr;
  const std::wstring full = FullPath(path);
  return full.empty() ? nullptr : NewBlock(full);
}

bool IsRootPath(const TmvWideChar* path) {
  // The system's test knows no path after this prefix.
  std::wstring_view text(path);
  if (text.starts_with(L"\\\\?\\UNC\\")) {
    return PathIsRootW((L"\\\\" + std::wstring(text.substr(8))).c_str()) != FALSE;
  }
  if (text.starts_with(L"\\\\?\\") || text.starts_with(L"\\\\.\\")) text.remove_prefix(4);
  return PathIsRootW(text.data()) != FALSE;
}

bool FitsShell(const TmvWideChar* absolutePath) { return std::wcslen(absolutePath) < kShortLimit; }

}  // namespace temvar
