#ifndef TEMVAR_TESTS_SUPPORT_MODULE_TABLES_H_
#define TEMVAR_TESTS_SUPPORT_MODULE_TABLES_H_

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace temvar::test {

// What a built program or library file says about itself. Read straight from the file, ELF 64 or PE
// 32 and 64, so that a test sees what a loader would see and not what a tool makes of it.
struct ModuleTables {
  std::vector<std::string> exports;  // Names that others may link to, sorted.
  std::vector<std::string> imports;  // Files that the loader brings in first, sorted.
  bool is_pe = false;
  int bits = 0;  // 32 or 64.
};

// The bytes of the file; every read is checked against their end.
class Image {
 public:
  explicit Image(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw std::runtime_error("can't read " + file.string());
    bytes_.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

  template <typename T>
  T At(uint64_t offset) const {
    T value;
    if (offset > bytes_.size() || bytes_.size() - offset < sizeof value) {
      throw std::out_of_range("a table points outside of the file");
    }
    std::memcpy(&value, bytes_.data() + static_cast<std::ptrdiff_t>(offset), sizeof value);
    return value;
  }

  std::string TextAt(uint64_t offset) const {
    if (offset > bytes_.size()) throw std::out_of_range("a table points outside of the file");
    const auto begin = static_cast<std::size_t>(offset);
    const auto end = bytes_.find('\0', begin);
    if (end == std::string::npos) throw std::out_of_range("a text has no end");
    return bytes_.substr(begin, end - begin);
  }

  bool StartsWith(const char* magic) const { return bytes_.rfind(magic, 0) == 0; }

 private:
  std::string bytes_;
};

inline constexpr uint32_t kElfDynamic = 6, kElfDynamicSymbols = 11;
inline constexpr int64_t kElfNeeded = 1;

// Fields of Elf64_Shdr and Elf64_Sym by their offsets.
inline void ReadElf(const Image& image, ModuleTables* tables) {
  if (image.At<uint8_t>(4) != 2) throw std::runtime_error("not a 64-bit ELF file");
  tables->bits = 64;
  const uint64_t sections = image.At<uint64_t>(0x28);
  const uint64_t section_size = image.At<uint16_t>(0x3A);
  for (uint64_t i = 0; i < image.At<uint16_t>(0x3C); ++i) {
    const uint64_t section = sections + i * section_size;
    const auto type = image.At<uint32_t>(section + 4);
    const auto begin = image.At<uint64_t>(section + 0x18);
    const auto size = image.At<uint64_t>(section + 0x20);
    const uint64_t names_section = sections + image.At<uint32_t>(section + 0x28) * section_size;
    if (type == kElfDynamicSymbols) {
      const auto names = image.At<uint64_t>(names_section + 0x18);
      for (uint64_t symbol = begin; symbol < begin + size; symbol += 24) {
        const bool is_local = (image.At<uint8_t>(symbol + 4) >> 4) == 0;
        const bool is_defined = image.At<uint16_t>(symbol + 6) != 0;
        if (is_local || !is_defined) continue;
        tables->exports.push_back(image.TextAt(names + image.At<uint32_t>(symbol)));
      }
    } else if (type == kElfDynamic) {
      const auto names = image.At<uint64_t>(names_section + 0x18);
      for (uint64_t entry = begin; entry < begin + size; entry += 16) {
        if (image.At<int64_t>(entry) != kElfNeeded) continue;
        tables->imports.push_back(image.TextAt(names + image.At<uint64_t>(entry + 8)));
      }
    }
  }
}

class PeFile {
 public:
  explicit PeFile(const Image& image) : image_(image) {
    header_ = image.At<uint32_t>(0x3C);
    if (image.TextAt(header_) != "PE") throw std::runtime_error("not a PE file");
    optional_ = header_ + 24;
    is_64_ = image.At<uint16_t>(optional_) == 0x20B;
  }

  int bits() const { return is_64_ ? 64 : 32; }

  // File offset of directory N's data; 0 if the file has none.
  uint64_t Directory(uint64_t number) const {
    const auto address = image_.At<uint32_t>(optional_ + (is_64_ ? 112u : 96u) + number * 8);
    return address == 0 ? 0 : Offset(address);
  }

  // Where the loaded address ADDRESS (relative to the image's base) stands in the file.
  uint64_t Offset(uint32_t address) const {
    uint64_t section = optional_ + image_.At<uint16_t>(header_ + 20);
    for (int i = image_.At<uint16_t>(header_ + 6); i > 0; --i, section += 40) {
      const auto begin = image_.At<uint32_t>(section + 12);
      if (address < begin || address - begin >= image_.At<uint32_t>(section + 16)) continue;
      return uint64_t{address} - begin + image_.At<uint32_t>(section + 20);
    }
    throw std::out_of_range("an address lies in no section");
  }

 private:
  const Image& image_;
  uint64_t header_ = 0, optional_ = 0;
  bool is_64_ = false;
};

inline void ReadPe(const Image& image, ModuleTables* tables) {
  const PeFile pe(image);
  tables->is_pe = true;
  tables->bits = pe.bits();
  if (const uint64_t directory = pe.Directory(0); directory != 0) {
    const auto count = image.At<uint32_t>(directory + 24);
    const auto functions = image.At<uint32_t>(directory + 20);
    if (functions != count) throw std::runtime_error("an export has no name");
    for (uint64_t i = 0; i < count; ++i) {
      const uint64_t names = pe.Offset(image.At<uint32_t>(directory + 32));
      tables->exports.push_back(image.TextAt(pe.Offset(image.At<uint32_t>(names + i * 4))));
    }
  }
  if (uint64_t entry = pe.Directory(1); entry != 0) {
    for (; image.At<uint32_t>(entry + 12) != 0; entry += 20) {
      tables->imports.push_back(image.TextAt(pe.Offset(image.At<uint32_t>(entry + 12))));
    }
  }
}

// Throws std::runtime_error for a file that can't be read or is neither of the two formats, and
// std::out_of_range for tables that point outside of the file.
inline ModuleTables ReadModuleTables(const std::filesystem::path& file) {
  const Image image(file);
  ModuleTables tables;
  if (image.StartsWith("\177ELF")) {
    ReadElf(image, &tables);
  } else if (image.StartsWith("MZ")) {
    ReadPe(image, &tables);
  } else {
    throw std::runtime_error("neither ELF nor PE: " + file.string());
  }
  std::sort(tables.exports.begin(), tables.exports.end());
  std::sort(tables.imports.begin(), tables.imports.end());
  return tables;
}

}  // namespace temvar::test

#endif  // TEMVAR_TESTS_SUPPORT_MODULE_TABLES_H_
