#include "platform/ways.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "platform/win32.h"

namespace temvar {
namespace {

// Why there is nothing to look at: no such name, or a name that nothing can have.
bool MeansMissing(DWORD error) {
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ||
         error == ERROR_INVALID_NAME;
}

// In doubt a link: callers refuse to go through one.
ComponentKind KindOf(const wchar_t* path) {
  const DWORD attributes = GetFileAttributesW(path);
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    return MeansMissing(GetLastError()) ? ComponentKind::kMissing : ComponentKind::kLink;
  }
  const bool isFolder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  const ComponentKind kind = isFolder ? ComponentKind::kFolder : ComponentKind::kFile;
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return kind;
  // Files of cloud stores and deduplicated files are reparse points too, but they lead nowhere
  // else.
  WIN32_FIND_DATAW data;
  const HANDLE find = FindFirstFileW(path, &data);
  if (find == INVALID_HANDLE_VALUE) return ComponentKind::kLink;
  FindClose(find);
  return IsReparseTagNameSurrogate(data.dwReserved0) ? ComponentKind::kLink : kind;
}

// By the 128-bit number of the file, the only one that ReFS keeps unique. Windows 7 and some
// network drives don't have it; their 64-bit index is unique.
bool IdentifyHandle(HANDLE handle, FileIdentity* identity) {
  FILE_ID_INFO id;
  if (GetFileInformationByHandleEx(handle, FileIdInfo, &id, sizeof(id))) {
    identity->volume = id.VolumeSerialNumber;
    std::memcpy(identity->file.data(), &id.FileId, sizeof(identity->file));
    return true;
  }
  BY_HANDLE_FILE_INFORMATION information;
  if (!GetFileInformationByHandle(handle, &information)) return false;
  *identity = {information.dwVolumeSerialNumber,
               {uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow}};
  return true;
}

}  // namespace

Way LookAlong(const TmvWideChar* path, size_t count) {
  constexpr wchar_t kSeparators[] = L"\\/";
  const std::wstring text(path);
  size_t end = text.size();
  for (size_t i = 0; i < count && end != std::wstring::npos && end > 0; ++i) {
    end = text.find_last_of(kSeparators, end - 1);
  }
  end = end == std::wstring::npos ? 0 : end + 1;
  for (size_t i = 0; i < count; ++i, ++end) {
    end = std::min(text.find_first_of(kSeparators, end), text.size());
    const ComponentKind kind = KindOf(text.substr(0, end).c_str());
    if (kind != ComponentKind::kFolder) return {i, kind};
  }
  return {count, ComponentKind::kFolder};
}

bool IdentifyFile(const TmvWideChar* path, FileIdentity* identity) {
  // FILE_FLAG_BACKUP_SEMANTICS is what opens a folder.
  const HANDLE handle = CreateFileW(path, 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return false;
  const bool isKnown = IdentifyHandle(handle, identity);
  CloseHandle(handle);
  return isKnown;
}

}  // namespace temvar
