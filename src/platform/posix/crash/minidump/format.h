// The records of a minidump file, as they lie on disk: little-endian, packed to 4 bytes. Only what
// the writer of this folder uses, for 64-bit x86. Offsets are from the start of the file.
#ifndef TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_FORMAT_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_FORMAT_H_

#include <cstdint>

namespace temvar::posix::minidump {

#pragma pack(push, 4)

struct Location {
  uint32_t size;
  uint32_t offset;
};

struct Header {
  uint32_t signature;  // kSignature
  uint32_t version;    // kVersion
  uint32_t streamCount;
  uint32_t directoryOffset;
  uint32_t checksum;
  uint32_t time;  // Seconds since 1970.
  uint64_t flags;
};
static_assert(sizeof(Header) == 32);

struct DirectoryEntry {
  uint32_t type;  // StreamType; 0 for an entry that is not used.
  Location location;
};
static_assert(sizeof(DirectoryEntry) == 12);

struct SystemInfo {
  uint16_t processorArchitecture;  // 9: 64-bit x86
  uint16_t processorLevel;         // family
  uint16_t processorRevision;      // model x 256 + stepping
  uint8_t processorCount;
  uint8_t productType;  // 1: workstation
  uint32_t majorVersion;
  uint32_t minorVersion;
  uint32_t buildNumber;
  uint32_t platform;       // 0x8201: Linux
  uint32_t versionOffset;  // A text: what uname says.
  uint16_t suiteMask;
  uint16_t reserved;
  uint8_t cpu[24];  // x86: vendor, features.
};
static_assert(sizeof(SystemInfo) == 56);

struct MiscInfo {
  uint32_t size;
  uint32_t flags;  // 1: the process id is valid.
  uint32_t processId;
  uint32_t startTime;
  uint32_t userTime;
  uint32_t kernelTime;
};
static_assert(sizeof(MiscInfo) == 24);

struct MemoryRange {
  uint64_t start;
  Location location;
};
static_assert(sizeof(MemoryRange) == 16);

struct Thread {
  uint32_t id;
  uint32_t suspendCount;
  uint32_t priorityClass;
  uint32_t priority;
  uint64_t teb;
  MemoryRange stack;
  Location context;
};
static_assert(sizeof(Thread) == 48);

struct ThreadName {
  uint32_t id;
  uint64_t nameOffset;
};
static_assert(sizeof(ThreadName) == 12);

struct Module {
  uint64_t base;
  uint32_t size;
  uint32_t checksum;
  uint32_t time;
  uint32_t nameOffset;
  uint8_t version[52];
  Location buildId;  // BuildIdHeader and the identifier; size 0 when the image has none.
  Location misc;
  uint64_t reserved[2];
};
static_assert(sizeof(Module) == 108);

struct BuildIdHeader {
  uint32_t signature;  // kBuildIdSignature
};

struct Exception {
  uint32_t threadId;
  uint32_t reserved;
  uint32_t code;   // The signal: readers for Linux hang on a code that is none.
  uint32_t flags;  // si_code
  uint64_t nested;
  uint64_t address;
  uint32_t parameterCount;
  uint32_t reserved2;
  uint64_t parameters[15];
  Location context;
};
static_assert(sizeof(Exception) == 168);

// The registers of a thread on 64-bit x86.
struct Context {
  uint64_t homes[6];
  uint32_t flags;  // kContextFlags
  uint32_t mxcsr;
  uint16_t cs, ds, es, fs, gs, ss;
  uint32_t eflags;
  uint64_t debug[6];
  uint64_t rax, rcx, rdx, rbx, rsp, rbp, rsi, rdi;
  uint64_t r8, r9, r10, r11, r12, r13, r14, r15;
  uint64_t rip;
  uint8_t fxsave[512];
  uint8_t vector[26 * 16];
  uint64_t vectorControl[6];
};
static_assert(sizeof(Context) == 1232);

#pragma pack(pop)

inline constexpr uint32_t kSignature = 0x504D444D;  // "MDMP"
inline constexpr uint32_t kVersion = 0xA793;
inline constexpr uint32_t kBuildIdSignature = 0x4270454C;
inline constexpr uint32_t kContextFlags = 0x10000B;  // Control, integer, floating point.

enum StreamType : uint32_t {
  kThreadListStream = 3,
  kModuleListStream = 4,
  kMemoryListStream = 5,
  kExceptionStream = 6,
  kSystemInfoStream = 7,
  kMiscInfoStream = 15,
  kThreadNamesStream = 24,
  kLinuxStatusStream = 0x47670004,
  kLinuxMapsStream = 0x47670009,
};

}  // namespace temvar::posix::minidump

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_FORMAT_H_
