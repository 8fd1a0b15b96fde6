#include "platform/posix/crash/minidump/system_stream.h"

#include <cpuid.h>
#include <sched.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cstring>

namespace temvar::posix::minidump {
namespace {

constexpr uint16_t kAmd64 = 9;
constexpr uint8_t kWorkstation = 1;
constexpr uint32_t kPlatformLinux = 0x8201;
constexpr uint32_t kProcessIdValid = 1;

void FillProcessor(SystemInfo& info) {
  unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
  __get_cpuid(0, &eax, &ebx, &ecx, &edx);
  const uint32_t vendor[] = {ebx, edx, ecx};
  std::memcpy(info.cpu, vendor, sizeof(vendor));
  __get_cpuid(1, &eax, &ebx, &ecx, &edx);
  const unsigned family = (eax >> 8) & 0xF;
  const unsigned model = (eax >> 4) & 0xF;
  const bool extended = family == 0xF || family == 6;
  info.processorLevel =
      static_cast<uint16_t>(family == 0xF ? family + ((eax >> 20) & 0xFF) : family);
  info.processorRevision =
      static_cast<uint16_t>(((extended ? model + ((eax >> 12) & 0xF0) : model) << 8) | (eax & 0xF));
  const uint32_t features[] = {eax, edx};
  std::memcpy(info.cpu + sizeof(vendor), features, sizeof(features));

  cpu_set_t set;
  if (sched_getaffinity(0, sizeof(set), &set) == 0) {
    info.processorCount = static_cast<uint8_t>(CPU_COUNT(&set));
  }
}

uint32_t ReadNumber(const char*& at) {
  uint32_t value = 0;
  for (; *at >= '0' && *at <= '9'; ++at) value = value * 10 + static_cast<uint32_t>(*at - '0');
  if (*at == '.') ++at;
  return value;
}

void AppendWord(char* text, size_t size, const char* word) {
  const size_t length = std::strlen(text);
  if (length + std::strlen(word) + 2 > size) return;
  if (length > 0) std::strcat(text, " ");
  std::strcat(text, word);
}

}  // namespace

void WriteSystemInfo(DumpFile& file) {
  SystemInfo info = {};
  info.processorArchitecture = kAmd64;
  info.productType = kWorkstation;
  info.platform = kPlatformLinux;
  FillProcessor(info);

  utsname name = {};
  uname(&name);
  const char* release = name.release;
  info.majorVersion = ReadNumber(release);
  info.minorVersion = ReadNumber(release);
  info.buildNumber = ReadNumber(release);
  char text[sizeof(name)] = "";
  AppendWord(text, sizeof(text), name.sysname);
  AppendWord(text, sizeof(text), name.release);
  AppendWord(text, sizeof(text), name.version);
  AppendWord(text, sizeof(text), name.machine);
  info.versionOffset = file.AppendText(text);
  file.AddStream(kSystemInfoStream, file.Append(&info, sizeof(info)));
}

void WriteMiscInfo(DumpFile& file) {
  MiscInfo info = {};
  info.size = sizeof(info);
  info.flags = kProcessIdValid;
  info.processId = static_cast<uint32_t>(getpid());
  file.AddStream(kMiscInfoStream, file.Append(&info, sizeof(info)));
}

}  // namespace temvar::posix::minidump
