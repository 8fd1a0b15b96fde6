#include "platform/links.h"

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

}  // namespace temvar
