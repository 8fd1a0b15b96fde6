#include "support/minidump_reader.h"

#include <cstring>
#include <fstream>
#include <iterator>

namespace test {
namespace {

class Reader {
 public:
  Reader(std::string bytes, Minidump& dump) : bytes_(std::move(bytes)), dump_(dump) {}

  void Read() {
    Check(Get(0) == 0x504D444D, "signature");
    Check(Get<uint16_t>(4) == 0xA793, "version");
    const uint32_t count = Get(8);
    for (uint32_t i = 0; i < count && i < 100; ++i) {
      const uint64_t entry = Get(12) + i * uint64_t{12};
      const uint32_t type = Get(entry), size = Get(entry + 4), offset = Get(entry + 8);
      if (type == 0) continue;
      Slice(offset, size);
      Check(dump_.streams.insert(type).second, "one stream of a type");
      ReadStream(type, offset, size);
    }
    CheckMemory();
  }

 private:
  void Check(bool holds, const char* what) {
    if (!holds) dump_.errors.push_back(std::string("wrong: ") + what);
  }

  std::string Slice(uint64_t offset, uint64_t size) {
    const bool isThere = offset + size <= bytes_.size();
    Check(isThere, "a location lies beyond the end");
    return isThere ? bytes_.substr(static_cast<size_t>(offset), static_cast<size_t>(size)) : "";
  }

  template <typename Number = uint32_t>
  Number Get(uint64_t offset) {
    Number number = 0;
    const std::string bytes = Slice(offset, sizeof(Number));
    if (!bytes.empty()) std::memcpy(&number, bytes.data(), sizeof(Number));
    return number;
  }

  // Where the entries of a list are, which begins with their number.
  std::vector<uint64_t> Entries(uint64_t list, uint64_t size, uint64_t entrySize) {
    const uint32_t count = Get(list);
    Check(size == 4 + count * entrySize, "size of a list");
    std::vector<uint64_t> entries;
    for (uint64_t i = 0; i < count && i < 1000; ++i) entries.push_back(list + 4 + i * entrySize);
    return entries;
  }

  std::string Text(uint64_t offset) {
    const uint32_t size = Get(offset);
    Check(size % 2 == 0, "even size of a text");
    if (Get<uint16_t>(offset + 4 + size) != 0) dump_.textsEnd = false;
    std::string text;
    for (uint32_t i = 0; i < size && i < 10'000; i += 2) {
      const auto unit = Get<uint16_t>(offset + 4 + i);
      text += unit < 128 ? static_cast<char>(unit) : '?';
    }
    return text;
  }

  DumpRegisters Registers(uint64_t location) {
    const uint32_t size = Get(location);
    const uint64_t at = Get(location + 4);
    if (size >= 1232 && (Get(at + 48) & 0x100000) != 0) {
      return {true, Get<uint64_t>(at + 248), Get<uint64_t>(at + 152)};
    }
    if (size >= 716 && size < 1232 && (Get(at) & 0x10000) != 0) {
      return {true, Get(at + 184), Get(at + 196)};
    }
    return {};
  }

  void ReadStream(uint32_t type, uint64_t at, uint64_t size) {
    constexpr uint32_t kThreads = 3, kModules = 4, kMemory = 5, kException = 6, kSystem = 7,
                       kMisc = 15, kThreadNames = 24;
    if (type == kThreads) ReadThreads(at, size);
    if (type == kModules) ReadModules(at, size);
    if (type == kMemory) ReadMemory(at, size);
    if (type == kException) ReadException(at, size);
    if (type == kThreadNames) Entries(at, size, 12);
    if (type == kSystem) {
      Check(size >= 56, "size of the system stream");
      dump_.processor = Get<uint16_t>(at);
      dump_.platform = Get(at + 20);
      dump_.system = Text(Get(at + 24));
    }
    if (type == kMisc) {
      Check(size >= 24 && Get(at) == size, "size of the misc stream");
      if ((Get(at + 4) & 1) != 0) dump_.process = Get(at + 8);
    }
  }

  void ReadThreads(uint64_t list, uint64_t size) {
    for (const uint64_t at : Entries(list, size, 48)) {
      dump_.threads.push_back({Get(at), Get<uint64_t>(at + 24), Get(at + 32), Registers(at + 40)});
      Slice(Get(at + 36), Get(at + 32));
    }
  }

  void ReadModules(uint64_t list, uint64_t size) {
    for (const uint64_t at : Entries(list, size, 108)) {
      DumpModule module = {Get<uint64_t>(at), Get(at + 8), Text(Get(at + 20)), ""};
      Check(module.base != 0 && module.size != 0, "place of a module");
      const uint32_t idSize = Get(at + 76), id = Get(at + 80);
      if (idSize > 4 && Get(id) == 0x4270454C) module.buildId = Slice(id + 4, idSize - 4);
      dump_.modules.push_back(module);
    }
  }

  void ReadMemory(uint64_t list, uint64_t size) {
    for (const uint64_t at : Entries(list, size, 16)) {
      const std::string content = Slice(Get(at + 12), Get(at + 8));
      if (!dump_.memory.emplace(Get<uint64_t>(at), content).second) dump_.rangesApart = false;
    }
  }

  void ReadException(uint64_t at, uint64_t size) {
    Check(size == 168, "size of the exception stream");
    const uint32_t count = Get(at + 32);
    Check(count <= 15, "number of parameters");
    std::vector<uint64_t> parameters;
    for (uint32_t i = 0; i < count && i < 15; ++i) {
      parameters.push_back(Get<uint64_t>(at + 40 + i * 8));
    }
    dump_.exception = {
        true, Get(at), Get(at + 8), Get<uint64_t>(at + 24), parameters, Registers(at + 160)};
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
