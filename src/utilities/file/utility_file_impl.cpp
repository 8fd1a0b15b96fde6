// Single files and directories as a whole, sizes for people, free space.
#include "utilities/file/utility_file_impl.h"
#include "platform/win32.h"
#include "utilities/file/system_path.h"
#include "utilities/string/text.h"

namespace temvar {
namespace {

constinit TMVUtilityFileImpl utilityFile;

}  // namespace

bool TMVUtilityFileImpl::CopyFileTo(const char* source, const char* destination) {
  return CopyFileW(SystemPath(source).get(), SystemPath(destination).get(), FALSE) != FALSE;
}

bool TMVUtilityFileImpl::MoveFileTo(const char* source, const char* destination) {
  // Never onto an existing file, unlike CopyFileTo, which replaces one.
  return MoveFileW(SystemPath(source).get(), SystemPath(destination).get()) != FALSE;
}

bool TMVUtilityFileImpl::RemoveFile(const char* path) {
  return DeleteFileW(SystemPath(path).get()) != FALSE;
}

char* TMVUtilityFileImpl::FormatSize(uint64_t bytes) {
  // A power of two, so that no step rounds.
  constexpr double kStep = 0.0009765625;  // 1/1024
  constexpr const char* kLargerUnits[] = {"KB", "MB", "GB"};
  double value = static_cast<double>(bytes);
  const char* unit = "B";
  for (const char* larger : kLargerUnits) {
    if (value * kStep < 1.0) break;
    value *= kStep;
    unit = larger;
  }
  return TmvUtilityString()->FormatString("%.2f %s", value, unit);
}

bool TMVUtilityFileImpl::PathExists(const char* path) {
  return _waccess(SystemPath(path).get(), 0) == 0;
}

bool TMVUtilityFileImpl::GetFreeDiskSpace(uint64_t* result, const char* path) {
  const WideText wide = ToWide(path);
  // The first backslash and no slash: `C:\` of a path with a drive, `\` of a server's share,
  // which the system then takes for the current drive.
  TmvWideChar* end = wide.get();
  while (*end != TMV_WIDE('\0') && *end != TMV_WIDE('\\')) ++end;
  if (*end == TMV_WIDE('\0')) return false;
  // Inside the block: the wide text ends in two terminators.
  end[1] = TMV_WIDE('\0');
  ULARGE_INTEGER freeToCaller;
  if (!GetDiskFreeSpaceExW(wide.get(), &freeToCaller, nullptr, nullptr)) return false;
  *result = freeToCaller.QuadPart;
  return true;
}

bool TMVUtilityFileImpl::IsDirectory(const char* path) {
  return PathIsDirectoryW(SystemPath(path).get()) != FALSE;
}

}  // namespace temvar

TMVUtilityFile* TmvUtilityFile() { return &temvar::utilityFile; }
