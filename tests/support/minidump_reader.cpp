#include "support/minidump_reader.h"

#include <fstream>
#include <iterator>
#include <utility>

namespace test {
namespace {

constexpr uint64_t kThreads = 3, kModules = 4, kMemory = 5, kException = 6, kSystem = 7, kMisc = 15,
                   kThreadNames = 24;

class Reader {
 public:
  Reader(std::string bytes, Minidump& dump) : bytes_(std::move(bytes)), dump_(dump) {}

  void Read() {
    Check(Number(0, 4) == 0x504D444D, "signature");
    Check((Number(4, 4) & 0xFFFF) == 0xA793, "version");
    const uint64_t count = Number(8, 4);
    const uint64_t directory = Number(12, 4);
    for (uint64_t i = 0; i < count && i < 100; ++i) {
      const uint64_t entry = directory + i * 12;
      const auto type = static_cast<uint32_t>(Number(entry, 4));
      if (type == 0) continue;
      const uint64_t size = Number(entry + 4, 4);
      const uint64_t offset = Number(entry + 8, 4);
      Check(offset + size <= bytes_.size(), "stream within the file");
      Check(dump_.streams.insert(type).second, "one stream of a type");
      ReadStream(type, offset, size);
    }
    CheckMemory();
  }

 private:
  void Check(bool holds, const char* what) {
    if (!holds) dump_.errors.push_back(std::string("wrong: ") + what);
  }

  uint64_t Number(uint64_t offset, unsigned size) {
    if (offset + size > bytes_.size()) {
      Check(false, "a number lies beyond the end");
      return 0;
    }
    uint64_t value = 0;
    for (unsigned i = size; i-- > 0;) {
      value = value << 8 | static_cast<unsigned char>(bytes_[static_cast<size_t>(offset) + i]);
    }
    return value;
  }

  std::string Slice(uint64_t offset, uint64_t size) {
    if (offset + size > bytes_.size()) {
      Check(false, "a location lies beyond the end");
      return "";
    }
    return bytes_.substr(static_cast<size_t>(offset), static_cast<size_t>(size));
  }

  std::string Text(uint64_t offset) {
    const uint64_t size = Number(offset, 4);
    Check(size % 2 == 0, "even size of a text");
    if (Number(offset + 4 + size, 2) != 0) dump_.textsEnd = false;
    std::string text;
    for (uint64_t i = 0; i < size && i < 10'000; i += 2) {
      const uint64_t unit = Number(offset + 4 + i, 2);
      text += unit < 128 ? static_cast<char>(unit) : '?';
    }
    return text;
  }

  DumpRegisters Registers(uint64_t location) {
    const uint64_t size = Number(location, 4);
    const uint64_t at = Number(location + 4, 4);
    DumpRegisters registers;
    if (size >= 1232 && (Number(at + 48, 4) & 0x100000) != 0) {
      registers = {true, Number(at + 248, 8), Number(at + 152, 8)};
    } else if (size >= 716 && size < 1232 && (Number(at, 4) & 0x10000) != 0) {
      registers = {true, Number(at + 184, 4), Number(at + 196, 4)};
    }
    return registers;
  }

  void ReadStream(uint32_t type, uint64_t at, uint64_t size) {
    if (type == kThreads) ReadThreads(at, size);
    if (type == kModules) ReadModules(at, size);
    if (type == kMemory) ReadMemory(at, size);
    if (type == kException) ReadException(at, size);
    if (type == kThreadNames) Check(size == 4 + Number(at, 4) * 12, "size of the thread names");
    if (type == kSystem) {
      Check(size >= 56, "size of the system stream");
      dump_.processor = static_cast<uint16_t>(Number(at, 2));
      dump_.platform = static_cast<uint32_t>(Number(at + 20, 4));
      dump_.system = Text(Number(at + 24, 4));
    }
    if (type == kMisc) {
      Check(size >= 24 && Number(at, 4) == size, "size of the misc stream");
      if ((Number(at + 4, 4) & 1) != 0) dump_.process = static_cast<uint32_t>(Number(at + 8, 4));
    }
  }

  void ReadThreads(uint64_t at, uint64_t size) {
    const uint64_t count = Number(at, 4);
    Check(size == 4 + count * 48, "size of the thread list");
    for (uint64_t i = 0; i < count && i < 1000; ++i) {
      const uint64_t entry = at + 4 + i * 48;
      DumpThread thread;
      thread.id = static_cast<uint32_t>(Number(entry, 4));
      thread.stackStart = Number(entry + 24, 8);
      thread.stackSize = static_cast<uint32_t>(Number(entry + 32, 4));
      Slice(Number(entry + 36, 4), thread.stackSize);
      thread.registers = Registers(entry + 40);
      dump_.threads.push_back(thread);
    }
  }

  void ReadModules(uint64_t at, uint64_t size) {
    const uint64_t count = Number(at, 4);
    Check(size == 4 + count * 108, "size of the module list");
    for (uint64_t i = 0; i < count && i < 1000; ++i) {
      const uint64_t entry = at + 4 + i * 108;
      DumpModule module;
      module.base = Number(entry, 8);
      module.size = static_cast<uint32_t>(Number(entry + 8, 4));
      module.path = Text(Number(entry + 20, 4));
      const uint64_t id_size = Number(entry + 76, 4);
      const uint64_t id = Number(entry + 80, 4);
      if (id_size > 4 && Number(id, 4) == 0x4270454C) module.buildId = Slice(id + 4, id_size - 4);
      Check(module.base != 0 && module.size != 0, "place of a module");
      dump_.modules.push_back(module);
    }
  }

  void ReadMemory(uint64_t at, uint64_t size) {
    const uint64_t count = Number(at, 4);
    Check(size == 4 + count * 16, "size of the memory list");
    for (uint64_t i = 0; i < count && i < 1000; ++i) {
      const uint64_t entry = at + 4 + i * 16;
      dump_.memory[Number(entry, 8)] = Slice(Number(entry + 12, 4), Number(entry + 8, 4));
    }
    if (dump_.memory.size() != count) dump_.rangesApart = false;
  }

  void ReadException(uint64_t at, uint64_t size) {
    Check(size == 168, "size of the exception stream");
    DumpException& exception = dump_.exception;
    exception.present = true;
    exception.thread = static_cast<uint32_t>(Number(at, 4));
    exception.code = static_cast<uint32_t>(Number(at + 8, 4));
    exception.address = Number(at + 24, 8);
    const uint64_t count = Number(at + 32, 4);
    Check(count <= 15, "number of parameters");
    for (uint64_t i = 0; i < count && i < 15; ++i) {
      exception.parameters.push_back(Number(at + 40 + i * 8, 8));
    }
    exception.registers = Registers(at + 160);
  }

  void CheckMemory() {
    uint64_t end = 0;
    for (const auto& [start, content] : dump_.memory) {
      if (start < end) dump_.rangesApart = false;
      end = start + content.size();
    }
    for (const DumpThread& thread : dump_.threads) {
      if (thread.stackSize == 0) continue;
      const auto range = dump_.memory.find(thread.stackStart);
      Check(range != dump_.memory.end() && range->second.size() == thread.stackSize,
            "a stack is in the memory list");
    }
    if (dump_.exception.present) {
      Check(dump_.FindThread(dump_.exception.thread) != nullptr, "the crashed thread is listed");
    }
  }

  const std::string bytes_;
  Minidump& dump_;
};

}  // namespace

const DumpThread* Minidump::FindThread(uint32_t id) const {
  for (const DumpThread& thread : threads) {
    if (thread.id == id) return &thread;
  }
  return nullptr;
}

const DumpModule* Minidump::FindModule(uint64_t address) const {
  for (const DumpModule& module : modules) {
    if (address >= module.base && address - module.base < module.size) return &module;
  }
  return nullptr;
}

Minidump ReadMinidump(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  Minidump dump;
  Reader({std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()}, dump).Read();
  return dump;
}

}  // namespace test
