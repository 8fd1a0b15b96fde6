#include "platform/posix/crash/minidump/memory.h"

#include <sys/auxv.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace temvar::posix::minidump {
namespace {

constexpr uint64_t kRedZone = 128;
constexpr uint64_t kSurroundings = 128;  // To each side.
constexpr uint64_t kFarthestStack = 1024 * 1024;
constexpr size_t kPagesAtOnce = 64;

uint64_t PageOf(uint64_t address) { return address & ~uint64_t{kPageSize - 1}; }

// How many bytes of the `size` from `start` on can be read without a gap. One call of the kernel
// looks at a byte in each of 64 pages. Where that call is forbidden all are taken to be readable:
// a page that can't be written to the file is left out there.
size_t ReadableBytes(uint64_t start, size_t size) {
  uint64_t page = PageOf(start);
  const uint64_t end = size > UINT64_MAX - start ? UINT64_MAX : start + size;
  while (page < end) {
    char bytes[kPagesAtOnce];
    iovec remote[kPagesAtOnce];
    const iovec local = {bytes, sizeof(bytes)};
    size_t count = 0;
    for (uint64_t at = page; at < end && count < kPagesAtOnce; at += kPageSize) {
      remote[count++] = {reinterpret_cast<void*>(at), 1};
    }
    const ssize_t read = process_vm_readv(getpid(), &local, 1, remote, count, 0);
    if (read < 0 && (errno == EPERM || errno == ENOSYS)) return size;
    const size_t readable = read > 0 ? static_cast<size_t>(read) : 0;
    page += readable * kPageSize;
    if (readable < count) break;
  }
  return page > start ? static_cast<size_t>(std::min(page, end) - start) : 0;
}

// The random bytes of the program are the last that the kernel puts between the stack's first frame
// and the texts of arguments and environment (Linux, fs/binfmt_elf.c; seen in 4.19 to 6.1).
size_t BytesBelowSecrets(uint64_t start, size_t size) {
  const uint64_t secrets = getauxval(AT_RANDOM);
  if (secrets == 0 || start + size <= secrets) return size;
  if (start < secrets) return static_cast<size_t>(secrets - start);
  // Above them on the same stack, where no frame is. Memory that is not connected is no part of it.
  const size_t between = static_cast<size_t>(start - secrets);
  return ReadableBytes(secrets, between) == between ? 0 : size;
}

bool Cut(uint64_t start, size_t& size) {
  size = BytesBelowSecrets(start, ReadableBytes(start, size));
  return size > 0;
}

}  // namespace

bool FindStack(uint64_t stackPointer, size_t limit, uint64_t& start, size_t& size) {
  start = stackPointer > kRedZone ? stackPointer - kRedZone : 0;
  if (ReadableBytes(stackPointer, 1) > 0) {
    // The red zone may reach into the guard.
    if (ReadableBytes(start, 1) == 0) start = PageOf(stackPointer);
    size = limit;
    return Cut(start, size);
  }
  const uint64_t farthest = PageOf(stackPointer) + kFarthestStack;
  for (start = PageOf(stackPointer); start < farthest; start += kPageSize) {
    size = limit;
    if (ReadableBytes(start, 1) > 0) return Cut(start, size);
  }
  return false;
}

bool FindSurroundings(uint64_t address, uint64_t& start, size_t& size) {
  if (ReadableBytes(address, 1) == 0) return false;
  start = address > kSurroundings ? address - kSurroundings : 0;
  if (ReadableBytes(start, 1) == 0) start = PageOf(address);
  size = static_cast<size_t>(address - start + kSurroundings);
  return Cut(start, size);
}

bool CopyMemory(uint64_t address, void* to, size_t size) {
  const iovec local = {to, size};
  const iovec remote = {reinterpret_cast<void*>(address), size};
  return process_vm_readv(getpid(), &local, 1, &remote, 1, 0) == static_cast<ssize_t>(size);
}

}  // namespace temvar::posix::minidump
