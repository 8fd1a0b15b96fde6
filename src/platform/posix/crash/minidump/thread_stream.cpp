#include "platform/posix/crash/minidump/thread_stream.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "platform/posix/crash/minidump/context.h"
#include "platform/posix/crash/minidump/memory.h"

namespace temvar::posix::minidump {
namespace {

constexpr size_t kCrashedStack = 256 * 1024;
constexpr size_t kOtherStack = 16 * 1024;

// More stacks than this need a mapping. One dump is made at a time.
constexpr size_t kReadyRanges = 514;
constinit MemoryRange readyRanges[kReadyRanges] = {};

uint32_t EntryOffset(uint32_t list, size_t index, size_t entrySize) {
  return list + static_cast<uint32_t>(sizeof(uint32_t) + index * entrySize);
}

// Reads the kernel's name of a thread, at most 15 characters, into `name`.
bool ReadThreadName(pid_t id, char (&name)[32]) {
  char path[64] = "/proc/self/task/";
  char digits[16];
  size_t count = 0;
  for (pid_t rest = id; rest > 0; rest /= 10) digits[count++] = static_cast<char>('0' + rest % 10);
  size_t length = std::strlen(path);
  while (count > 0) path[length++] = digits[--count];
  std::strcpy(path + length, "/comm");

  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  const ssize_t size = read(file, name, sizeof(name) - 1);
  close(file);
  if (size <= 0) return false;
  name[size] = '\0';
  if (name[size - 1] == '\n') name[size - 1] = '\0';
  return true;
}

}  // namespace

ThreadStreams::ThreadStreams(DumpFile& file, pid_t crashed, const ucontext_t* machine,
                             const StoppedThreads& others)
    : file_(file),
      crashed_(crashed),
      machine_(machine),
      others_(others),
      count_(others.size() + 1),
      ranges_(readyRanges),
      rangeRoom_(kReadyRanges) {
  if (count_ < kReadyRanges) return;
  void* const memory = mmap(nullptr, (count_ + 1) * sizeof(MemoryRange), PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return;
  ranges_ = static_cast<MemoryRange*>(memory);
  rangeRoom_ = count_ + 1;
}

ThreadStreams::~ThreadStreams() {
  if (ranges_ != readyRanges) munmap(ranges_, rangeRoom_ * sizeof(MemoryRange));
}

pid_t ThreadStreams::IdOf(size_t index) const {
  return index == 0 ? crashed_ : others_.IdOf(index - 1);
}

const ucontext_t* ThreadStreams::MachineOf(size_t index) const {
  return index == 0 ? machine_ : others_.MachineOf(index - 1);
}

Location ThreadStreams::WriteThreads() {
  const auto count = static_cast<uint32_t>(count_);
  const size_t size = sizeof(count) + count_ * sizeof(Thread);
  list_ = file_.Reserve(size);
  file_.WriteAt(list_, &count, sizeof(count));
  Location crashed = {};
  for (size_t i = 0; i < count_; ++i) {
    Thread thread = {};
    thread.id = static_cast<uint32_t>(IdOf(i));
    if (MachineOf(i) != nullptr) thread.context = AppendContext(file_, *MachineOf(i));
    if (i == 0) crashed = thread.context;
    file_.WriteAt(EntryOffset(list_, i, sizeof(thread)), &thread, sizeof(thread));
  }
  file_.AddStream(kThreadListStream, {static_cast<uint32_t>(size), list_});
  WriteNames();
  return crashed;
}

void ThreadStreams::WriteNames() {
  const uint32_t list = file_.Reserve(sizeof(uint32_t) + count_ * sizeof(ThreadName));
  uint32_t named = 0;
  for (size_t i = 0; i < count_; ++i) {
    char name[32];
    if (!ReadThreadName(IdOf(i), name)) continue;
    ThreadName entry = {};
    entry.id = static_cast<uint32_t>(IdOf(i));
    entry.nameOffset = file_.AppendText(name);
    file_.WriteAt(EntryOffset(list, named++, sizeof(entry)), &entry, sizeof(entry));
  }
  file_.WriteAt(list, &named, sizeof(named));
  const size_t size = sizeof(named) + named * sizeof(ThreadName);
  file_.AddStream(kThreadNamesStream, {static_cast<uint32_t>(size), list});
}

void ThreadStreams::WriteMemory() {
  const uint32_t list = file_.Reserve(sizeof(rangeCount_) + (count_ + 1) * sizeof(MemoryRange));
  MemoryRange range = {};
  uint64_t start = 0;
  size_t size = 0;
  for (size_t i = 0; i < count_; ++i) {
    const ucontext_t* const machine = MachineOf(i);
    const size_t limit = i == 0 ? kCrashedStack : kOtherStack;
    if (machine == nullptr || !FindStack(StackPointerOf(*machine), limit, start, size)) continue;
    if (!AddMemory(start, size, range)) continue;
    file_.WriteAt(EntryOffset(list_, i, sizeof(Thread)) + offsetof(Thread, stack), &range,
                  sizeof(range));
  }
  if (machine_ != nullptr && FindSurroundings(InstructionPointerOf(*machine_), start, size)) {
    AddMemory(start, size, range);
  }
  const size_t listSize = rangeCount_ * sizeof(MemoryRange);
  file_.WriteAt(list, &rangeCount_, sizeof(rangeCount_));
  file_.WriteAt(EntryOffset(list, 0, sizeof(MemoryRange)), ranges_, listSize);
  file_.AddStream(kMemoryListStream, {static_cast<uint32_t>(sizeof(rangeCount_) + listSize), list});
}

bool ThreadStreams::AddMemory(uint64_t start, size_t size, MemoryRange& range) {
  if (rangeCount_ == rangeRoom_) return false;
  for (uint32_t i = 0; i < rangeCount_; ++i) {
    const MemoryRange& other = ranges_[i];
    if (start >= other.start && start < other.start + other.location.size) return false;
    if (start < other.start) size = std::min<size_t>(size, other.start - start);
  }
  range = {start, file_.Append(reinterpret_cast<const void*>(start), size)};
  ranges_[rangeCount_++] = range;
  return true;
}

}  // namespace temvar::posix::minidump
