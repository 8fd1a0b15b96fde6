#include "platform/paths.h"

#include <cstdlib>
#include <cwchar>
#include <new>
#include <string>

#include "platform/win32.h"

namespace temvar {

namespace {

bool Identify(const TmvWideChar* path, BY_HANDLE_FILE_INFORMATION* information) {
  // FILE_FLAG_BACKUP_SEMANTICS is what opens a directory.
  const HANDLE handle = CreateFileW(path, 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return false;
  const BOOL known = GetFileInformationByHandle(handle, information);
  CloseHandle(handle);
  return known != FALSE;
}

}  // namespace

PathKind KindOfPath(const TmvWideChar* path) {
  const DWORD attributes = GetFileAttributesW(path);
  if (attributes == INVALID_FILE_ATTRIBUTES) return PathKind::kMissing;
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return PathKind::kOther;
  // Files of cloud stores and deduplicated files are reparse points too, but they lead nowhere
  // else.
  WIN32_FIND_DATAW data;
  const HANDLE find = FindFirstFileW(path, &data);
  if (find == INVALID_HANDLE_VALUE) return PathKind::kLink;
  FindClose(find);
  return IsReparseTagNameSurrogate(data.dwReserved0) ? PathKind::kLink : PathKind::kOther;
}

bool IsSameFile(const TmvWideChar* first, const TmvWideChar* second) {
  BY_HANDLE_FILE_INFORMATION a;
  BY_HANDLE_FILE_INFORMATION b;
  return Identify(first, &a) && Identify(second, &b) &&
         a.dwVolumeSerialNumber == b.dwVolumeSerialNumber && a.nFileIndexHigh == b.nFileIndexHigh &&
         a.nFileIndexLow == b.nFileIndexLow;
}

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

// The absolute form of a path; empty if the system can't tell.
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
  if (IsAbsolute(path) && length < kShortLimit) return nullptr;
  const std::wstring full = FullPath(path);
  if (full.size() > kLongLimit) return NewBlock({});
  if (full.size() < kShortLimit) return nullptr;
  if (full.starts_with(L"\\\\?\\") || full.starts_with(L"\\\\.\\")) return nullptr;
  if (full.starts_with(L"\\\\")) return NewBlock(L"\\\\?\\UNC" + full.substr(1));
  return NewBlock(L"\\\\?\\" + full);
}

TmvWideChar* NewShellPath(const TmvWideChar* path) {
  if (*path == L'\0') return nullptr;
  const std::wstring full = FullPath(path);
  return full.empty() ? nullptr : NewBlock(full);
}

bool FitsShell(const TmvWideChar* absolute_path) {
  return std::wcslen(absolute_path) < kShortLimit;
}

}  // namespace temvar
