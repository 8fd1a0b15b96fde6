// A second implementation of the minidump format: reads a dump by the offsets of the format's
// description and complains of whatever doesn't hold together. Knows nothing of the writer.
#ifndef TESTS_SUPPORT_MINIDUMP_READER_H_
#define TESTS_SUPPORT_MINIDUMP_READER_H_

#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace test {

struct DumpRegisters {
  bool known = false;  // The context was one of 32-bit or 64-bit x86.
  uint64_t instruction = 0;
  uint64_t stack = 0;
};

struct DumpThread {
  uint32_t id = 0;
  uint64_t stackStart = 0;
  uint32_t stackSize = 0;
  DumpRegisters registers;
};

struct DumpModule {
  uint64_t base = 0;
  uint32_t size = 0;
  std::string path;     // ASCII; '?' for anything else.
  std::string buildId;  // Raw bytes.
};

struct DumpException {
  bool present = false;
  uint32_t thread = 0;
  uint32_t code = 0;
  uint64_t address = 0;
  std::vector<uint64_t> parameters;
  DumpRegisters registers;
};

struct Minidump {
  std::vector<std::string> errors;  // What is wrong with the file; empty for a good one.
  // Every text ends in a zero unit, as the format wants it; Wine's don't.
  bool textsEnd = true;
  // No two memory ranges share an address. With several threads Wine lists some code twice.
  bool rangesApart = true;
  uint16_t processor = 0;
  uint32_t platform = 0;
  std::string system;
  uint32_t process = 0;
  std::vector<DumpThread> threads;
  std::vector<DumpModule> modules;
  DumpException exception;
  std::map<uint64_t, std::string> memory;  // By address.
  std::set<uint32_t> streams;              // Their types.

  const DumpThread* FindThread(uint32_t id) const;
  const DumpModule* FindModule(uint64_t address) const;
};

Minidump ReadMinidump(const std::filesystem::path& file);

}  // namespace test

#endif  // TESTS_SUPPORT_MINIDUMP_READER_H_
