// Functions of the test come before those of ntdll that kernelbase.dll imports: all file functions
// of Windows, of its C runtime and of its shell go through there.
#include <windows.h>
#include <winternl.h>

#include <map>
#include <set>
#include <string>
#include <utility>

#include "faults/file_faults.h"
#include "support/import_patch.h"

namespace test {
namespace {

// A function, how many arguments it takes, and which of them is the status block; 0 if there is
// none.
struct WatchedCall {
  const char* name;
  unsigned kind;
  size_t arguments;
  size_t block;
};

// The first two take a path as their third argument, the next two as their first one.
constexpr WatchedCall kCalls[] = {
    {"NtCreateFile", kCreates, 11, 3},
    {"NtOpenFile", kOpens, 6, 3},
    {"NtQueryAttributesFile", kLooks, 2, 0},
    {"NtQueryFullAttributesFile", kLooks, 2, 0},
    {"NtSetInformationFile", kChanges, 5, 1},
    {"NtQueryInformationFile", kLooks, 5, 1},
    {"NtQueryDirectoryFile", kLooks, 11, 4},
    {"NtFlushBuffersFile", kChanges, 2, 1},
    {"NtReadFile", kReads, 9, 4},
    {"NtWriteFile", kWrites, 9, 4},
    {"NtClose", kCloses, 1, 0},
};

const std::map<int, DWORD> statuses = {{ENOSPC, 0xC000007F}, {EACCES, 0xC0000022},
                                       {EMFILE, 0xC000011F}, {EXDEV, 0xC00000D4},
                                       {EIO, 0xC0000185},    {0, 0}};

thread_local FaultRun* current = nullptr;  // Calls of other threads are not concerned.
std::wstring top;
std::set<ULONG_PTR> open;

bool IsWatched(size_t call, const ULONG_PTR* arguments) {
  if (current == nullptr) return false;
  if (call >= 4) return open.count(arguments[0]) != 0;
  const auto& object = *reinterpret_cast<OBJECT_ATTRIBUTES*>(arguments[call < 2 ? 2 : 0]);
  const std::wstring name(object.ObjectName->Buffer, object.ObjectName->Length / sizeof(wchar_t));
  return name.find(top) != name.npos ||
         open.count(reinterpret_cast<ULONG_PTR>(object.RootDirectory)) != 0;
}

unsigned KindOf(size_t call, const ULONG_PTR* arguments) {
  constexpr ULONG kRenameInformation = 10, kPositionInformation = 14;
  if (call == 0 && arguments[7] == FILE_OPEN) return kOpens;
  if (call == 0 && (arguments[8] & FILE_DIRECTORY_FILE) != 0) return kChanges;
  const ULONG subject = call == 4 ? static_cast<ULONG>(arguments[4]) : 0;
  if (subject == kRenameInformation) return kRenames;
  return subject == kPositionInformation ? kLooks : kCalls[call].kind;
}

// Nothing is interrupted here, files move all bytes or fail, and a close can't fail.
NTSTATUS StatusFor(unsigned kind) {
  const bool isPossible = statuses.count(current->fault.error) != 0 && kind != kCloses;
  return static_cast<NTSTATUS>(isPossible ? statuses.at(current->ErrorFor(kind, false)) : 0);
}

// All arguments are as large as a pointer, or take as much room.
template <size_t>
using Argument = ULONG_PTR;

template <size_t kCall, typename Numbers>
struct Hook;

template <size_t kCall, size_t... kNumbers>
struct Hook<kCall, std::index_sequence<kNumbers...>> {
  static inline NTSTATUS(NTAPI* real)(Argument<kNumbers>...) = nullptr;
  static NTSTATUS NTAPI Call(Argument<kNumbers>... all) {
    const ULONG_PTR arguments[] = {all...};
    if (!IsWatched(kCall, arguments)) return real(all...);
    NTSTATUS status = StatusFor(KindOf(kCall, arguments));
    // Wine goes by the block here and there.
    auto* const block = reinterpret_cast<IO_STATUS_BLOCK*>(arguments[kCalls[kCall].block]);
    if (status != 0 && kCalls[kCall].block != 0) block->Status = status;
    if (status != 0) return status;
    if (kCalls[kCall].kind == kCloses) open.erase(arguments[0]);
    status = real(all...);
    if (kCall < 2 && status >= 0) open.insert(*reinterpret_cast<ULONG_PTR*>(arguments[0]));
    return status;
  }
};

template <size_t... kIndexes>
bool PatchAll(std::index_sequence<kIndexes...>) {
  const auto patch = [](const char* name, auto hook) {
    return (hook.real = PatchImport("kernelbase.dll", name, hook.Call)) != nullptr;
  };
  return (patch(kCalls[kIndexes].name,
                Hook<kIndexes, std::make_index_sequence<kCalls[kIndexes].arguments>>()) &&
          ...);
}

}  // namespace

bool PutSmallDisk(const std::filesystem::path&, size_t bytes) { return bytes == 0; }

void RunWithFault(const std::filesystem::path& folder, FaultRun& run,
                  const std::function<void()>& operation) {
  static const bool isPatched = PatchAll(std::make_index_sequence<std::size(kCalls)>());
  run.able = isPatched;
  top = folder.filename().wstring();
  open.clear();
  current = &run;
  operation();
  current = nullptr;
  run.leftOpen = static_cast<int>(open.size());
}

}  // namespace test
