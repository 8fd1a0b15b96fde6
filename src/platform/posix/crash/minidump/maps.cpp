#include "platform/posix/crash/minidump/maps.h"

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace temvar::posix::minidump {
namespace {

constexpr uint64_t kRedZone = 128;
constexpr uint64_t kSurroundings = 128;  // To each side.

// Reads a hexadecimal number and the character behind it.
uint64_t ReadHex(const char*& at) {
  uint64_t value = 0;
  for (;; ++at) {
    unsigned digit = 0;
    if (*at >= '0' && *at <= '9') {
      digit = static_cast<unsigned>(*at - '0');
    } else if (*at >= 'a' && *at <= 'f') {
      digit = static_cast<unsigned>(*at - 'a' + 10);
    } else {
      break;
    }
    value = value * 16 + digit;
  }
  if (*at != '\0') ++at;
  return value;
}

const char* SkipField(const char* at) {
  while (*at != '\0' && *at != ' ') ++at;
  while (*at == ' ') ++at;
  return at;
}

}  // namespace

MapsReader::MapsReader() : descriptor_(open("/proc/self/maps", O_RDONLY | O_CLOEXEC)) {}

MapsReader::~MapsReader() {
  if (descriptor_ >= 0) close(descriptor_);
}

int MapsReader::NextByte() {
  if (used_ == filled_) {
    ssize_t count;
    do {
      count = read(descriptor_, buffer_, sizeof(buffer_));
    } while (count < 0 && errno == EINTR);
    if (count <= 0) return -1;
    filled_ = static_cast<size_t>(count);
    used_ = 0;
  }
  return static_cast<unsigned char>(buffer_[used_++]);
}

bool MapsReader::ReadLine() {
  size_t length = 0;
  for (;;) {
    const int byte = NextByte();
    if (byte < 0 && length == 0) return false;
    if (byte < 0 || byte == '\n') break;
    if (length + 1 < sizeof(line_)) line_[length++] = static_cast<char>(byte);
  }
  line_[length] = '\0';
  return true;
}

bool MapsReader::Next(Mapping& mapping) {
  if (descriptor_ < 0 || !ReadLine()) return false;
  // 7f0000000000-7f0000021000 r-xp 00001000 fd:01 1234    /lib/libc.so.6
  const char* at = line_;
  mapping.start = ReadHex(at);
  mapping.end = ReadHex(at);
  mapping.readable = at[0] == 'r';
  mapping.executable = mapping.readable && at[1] != '\0' && at[2] == 'x';
  at = SkipField(at);
  mapping.offset = ReadHex(at);
  at = SkipField(at);  // Device.
  at = SkipField(at);  // Inode.
  mapping.path = at;
  return true;
}

bool FindStack(uint64_t stack_pointer, size_t limit, uint64_t& start, size_t& size) {
  const uint64_t wanted = stack_pointer > kRedZone ? stack_pointer - kRedZone : 0;
  MapsReader maps;
  Mapping mapping;
  while (maps.Next(mapping)) {
    if (mapping.end <= stack_pointer || !mapping.readable) continue;
    start = std::max(mapping.start, wanted);
    size = static_cast<size_t>(std::min<uint64_t>(mapping.end - start, limit));
    return true;
  }
  return false;
}

bool FindSurroundings(uint64_t address, uint64_t& start, size_t& size) {
  MapsReader maps;
  Mapping mapping;
  while (maps.Next(mapping)) {
    if (address < mapping.start || address >= mapping.end || !mapping.readable) continue;
    start = std::max(mapping.start, address > kSurroundings ? address - kSurroundings : 0);
    size = static_cast<size_t>(std::min(mapping.end, address + kSurroundings) - start);
    return true;
  }
  return false;
}

bool CopyMemory(uint64_t address, void* to, size_t size) {
  const iovec local = {to, size};
  const iovec remote = {reinterpret_cast<void*>(address), size};
  return process_vm_readv(getpid(), &local, 1, &remote, 1, 0) == static_cast<ssize_t>(size);
}

}  // namespace temvar::posix::minidump
