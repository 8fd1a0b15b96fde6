#include "platform/posix/crash/minidump/dump.h"

#include <signal.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include "platform/posix/crash/minidump/context.h"
#include "platform/posix/crash/minidump/dump_file.h"
#include "platform/posix/crash/minidump/module_stream.h"
#include "platform/posix/crash/minidump/stopped_threads.h"
#include "platform/posix/crash/minidump/system_stream.h"
#include "platform/posix/crash/minidump/thread_stream.h"
#include "platform/posix/files/file_handle.h"

namespace temvar::posix::minidump {
namespace {

constexpr size_t kMaxMaps = 4 * 1024 * 1024;
constexpr size_t kMaxStatus = 64 * 1024;

bool HasAddress(int signalNumber) {
  return signalNumber == SIGSEGV || signalNumber == SIGBUS || signalNumber == SIGILL ||
         signalNumber == SIGFPE || signalNumber == SIGTRAP;
}

void WriteException(DumpFile& file, const MINIDUMP_EXCEPTION_INFORMATION& information,
                    Location context) {
  const CONTEXT& fault = *information.ExceptionPointers->ContextRecord;
  const auto* signalInfo = static_cast<const siginfo_t*>(fault.SignalInfo);
  Exception exception = {};
  exception.threadId = information.ThreadId;
  exception.code = static_cast<uint32_t>(fault.SignalNumber);
  exception.flags = static_cast<uint32_t>(signalInfo->si_code);
  if (HasAddress(fault.SignalNumber)) {
    exception.address = reinterpret_cast<uint64_t>(signalInfo->si_addr);
  }
  exception.parameterCount = 1;
  exception.parameters[0] = information.ExceptionPointers->ExceptionRecord->ExceptionCode;
  exception.context = context;
  file.AddStream(kExceptionStream, file.Append(&exception, sizeof(exception)));
}

const ucontext_t* MachineOf(const MINIDUMP_EXCEPTION_INFORMATION* exception) {
  if (exception == nullptr || exception->ExceptionPointers == nullptr) return nullptr;
  return static_cast<const ucontext_t*>(
      exception->ExceptionPointers->ContextRecord->MachineContext);
}

}  // namespace

bool WriteDump(int descriptor, const MINIDUMP_EXCEPTION_INFORMATION* exception,
               const MINIDUMP_CALLBACK_INFORMATION* callback) {
  const ucontext_t* const machine = MachineOf(exception);
  const auto crashed = static_cast<pid_t>(syscall(SYS_gettid));
  DumpFile file(descriptor);
  WriteSystemInfo(file);
  WriteMiscInfo(file);
  {
    const StoppedThreads others;
    ThreadStreams threads(file, crashed, machine, others);
    const Location context = threads.WriteThreads();
    if (machine != nullptr) WriteException(file, *exception, context);
    WriteModuleList(file, callback);
    file.AddStream(kLinuxMapsStream, file.AppendFile("/proc/self/maps", kMaxMaps));
    file.AddStream(kLinuxStatusStream, file.AppendFile("/proc/self/status", kMaxStatus));
    threads.WriteMemory();
  }
  return file.Finish();
}

}  // namespace temvar::posix::minidump

BOOL MiniDumpWriteDump(HANDLE, DWORD, HANDLE file, MINIDUMP_TYPE,
                       PMINIDUMP_EXCEPTION_INFORMATION exception, PMINIDUMP_USER_STREAM_INFORMATION,
                       PMINIDUMP_CALLBACK_INFORMATION callback) {
  const int descriptor = temvar::posix::DescriptorOfHandle(file);
  return temvar::posix::minidump::WriteDump(descriptor, exception, callback) ? TRUE : FALSE;
}
