// The kernel asks about each file call of the operation's thread (seccomp(2), user notification),
// so that neither aliases inside the runtime nor direct system calls are missed.
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <fstream>
#include <future>
#include <map>
#include <set>
#include <thread>
#include <vector>

#include "faults/file_faults.h"

namespace test {
namespace {

// The places of a call's arguments for a path and for the descriptor that the path is relative to
// or that takes its place; -1 if there is none.
struct WatchedCall {
  unsigned kind;
  int path;
  int descriptor;
};

const std::map<int, WatchedCall> calls = {
    {SYS_openat, {kOpens, 1, 0}},    {SYS_copy_file_range, {kWrites, -1, 2}},
    {SYS_read, {kReads, -1, 0}},     {SYS_write, {kWrites, -1, 0}},
    {SYS_close, {kCloses, -1, 0}},   {SYS_pwrite64, {kWrites, -1, 0}},
    {SYS_rename, {kRenames, 1, -1}}, {SYS_renameat2, {kRenames, 1, 0}},
    {SYS_fsync, {kChanges, -1, 0}},  {SYS_ftruncate, {kChanges, -1, 0}},
    {SYS_mkdir, {kChanges, 0, -1}},  {SYS_utimensat, {kChanges, 1, 0}},
    {SYS_unlink, {kChanges, 0, -1}}, {SYS_unlinkat, {kChanges, 1, 0}},
    {SYS_rmdir, {kChanges, 0, -1}},  {SYS_symlink, {kChanges, 1, -1}},
    {SYS_chmod, {kChanges, 0, -1}},  {SYS_fchmod, {kChanges, -1, 0}},
    {SYS_fstat, {kLooks, -1, 0}},    {SYS_newfstatat, {kLooks, 1, 0}},
    {SYS_access, {kLooks, 0, -1}},   {SYS_getdents64, {kLooks, -1, 0}},
    {SYS_lseek, {kLooks, -1, 0}},    {SYS_readlink, {kLooks, 0, -1}},
    {SYS_flock, {kLooks, -1, 0}},
};

// Has the kernel ask about these calls of this thread and of what it starts. A descriptor, or -1.
int WatchThisThread() {
  std::vector<sock_filter> program = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, 0)};
  for (const auto& [number, call] : calls) {
    program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<uint32_t>(number), 0, 1));
    program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
  }
  program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  const sock_fprog filter = {static_cast<unsigned short>(program.size()), program.data()};
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  return static_cast<int>(
      syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &filter));
}

std::string PathOf(const std::string& process, const WatchedCall& call, const __u64* arguments) {
  std::string path;
  if (call.path >= 0 && arguments[call.path] != 0) {
    std::ifstream memory(process + "/mem", std::ios::binary);
    std::getline(memory.seekg(static_cast<std::streamoff>(arguments[call.path])), path, '\0');
  }
  if (call.descriptor < 0 || path.starts_with('/')) return path;
  const std::string name = "/fd/" + std::to_string(static_cast<int>(arguments[call.descriptor]));
  std::error_code error;
  const std::filesystem::path place = std::filesystem::read_symlink(process + name, error);
  return path.empty() ? place : place / path;
}

// Answers the kernel. `written` are descriptors whose files are lost if closing them fails.
void Decide(const std::string& folder, FaultRun& run, std::set<__u64>& written,
            const seccomp_notif& asked, seccomp_notif_resp& answer) {
  const int number = asked.data.nr;
  const __u64* const arguments = asked.data.args;
  const WatchedCall& call = calls.at(number);
  const std::string process = std::to_string(asked.pid);
  const std::string path = PathOf("/proc/" + process, call, arguments);
  if (!path.starts_with(folder)) return;
  const bool creates = call.kind == kOpens && (arguments[2] & O_CREAT) != 0;
  const int error = run.ErrorFor(creates ? kCreates : call.kind, number == SYS_renameat2);
  if (call.kind == kWrites && error == 0) written.insert(arguments[call.descriptor]);
  if (call.kind == kWrites && error > 0 && error != EINTR && run.cut.empty()) run.cut = path;
  const bool isClose = call.kind == kCloses;
  const bool isLost = isClose && written.erase(arguments[0]) != 0 && error != EINTR;
  if (error > 0) answer = {asked.id, 0, -error, 0};
  // The descriptors of a child process are its own.
  if (error == 0 || access(("/proc/self/task/" + process).c_str(), F_OK) != 0) return;
  const auto descriptor = static_cast<int>(arguments[0]);
  if (error == kHalf && arguments[2] > 1 && number != SYS_copy_file_range) {
    answer.val = syscall(number, descriptor, arguments[1], arguments[2] / 2, arguments[3]);
    answer.flags = 0;
  }
  if (isLost) (void)!ftruncate(descriptor, 0);
  if (isClose) close(descriptor);
}

// The tests fill their folders thousands of times: in memory.
const int inMemory = setenv("TMPDIR", "/dev/shm", 1);

int CountOpen() {
  return static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

}  // namespace

bool PutSmallDisk(const std::filesystem::path& folder, size_t bytes) {
  umount(folder.c_str());
  if (bytes == 0) return true;
  static const bool isAlone =
      unshare(CLONE_NEWNS) == 0 && mount("", "/", "", MS_REC | MS_PRIVATE, nullptr) == 0;
  const std::string size = "size=" + std::to_string(bytes);
  return isAlone && mount("none", folder.c_str(), "tmpfs", 0, size.c_str()) == 0;
}

void RunWithFault(const std::filesystem::path& folder, FaultRun& run,
                  const std::function<void()>& operation) {
  const int before = CountOpen();
  std::promise<int> listening;
  std::thread thread([&] {
    const int listener = WatchThisThread();
    listening.set_value(listener);
    if (listener >= 0) operation();
  });
  pollfd listener = {listening.get_future().get(), POLLIN, 0};
  run.able = listener.fd >= 0;
  std::set<__u64> written;
  // Ends when the last thread or process that is watched has ended.
  while (run.able && poll(&listener, 1, -1) >= 0 && (listener.revents & POLLIN) != 0) {
    seccomp_notif asked = {};
    if (ioctl(listener.fd, SECCOMP_IOCTL_NOTIF_RECV, &asked) != 0) continue;
    seccomp_notif_resp answer = {asked.id, 0, 0, SECCOMP_USER_NOTIF_FLAG_CONTINUE};
    Decide(folder.string(), run, written, asked, answer);
    ioctl(listener.fd, SECCOMP_IOCTL_NOTIF_SEND, &answer);
  }
  thread.join();
  if (run.able) close(listener.fd);
  run.leftOpen = CountOpen() - before;
}

}  // namespace test
