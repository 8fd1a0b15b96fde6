#include "platform/posix/crash/minidump/maps.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace temvar::posix::minidump {
namespace {

// Reads a hexadecimal number and the character after it.
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

}  // namespace temvar::posix::minidump
