// A second implementation of the ZIP format for the tests: writes archives as odd or hostile as a
// test asks for, and reads the central directory of those that the library writes.
#ifndef TESTS_SUPPORT_ZIP_FILE_H_
#define TESTS_SUPPORT_ZIP_FILE_H_

#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace test {

// A DOS date with its time: years from 1980, even seconds.
constexpr uint32_t DosDate(uint32_t year, uint32_t month, uint32_t day, uint32_t hour,
                           uint32_t minute, uint32_t second) {
  return ((year - 1980) << 9 | month << 5 | day) << 16 | hour << 11 | minute << 5 | second / 2;
}

// One entry. What isn't set is written as it is.
struct ZipEntry {
  std::string name = {};
  std::string data = {};
  uint16_t method = 0;  // 0 stored, 8 deflated; another number goes with stored data.
  uint16_t flags = 0;
  uint32_t dosDate = DosDate(2024, 1, 31, 17, 5, 8);
  std::optional<uint32_t> crc = {};
  std::optional<uint32_t> size = {};  // Of the contents, as both headers have it.
  std::optional<std::string> packed = {};
  std::string centralExtra = {};
  std::string comment = {};
  uint32_t externalAttributes = 0;  // Only read.
};

// What surrounds the entries.
struct ZipFrame {
  std::optional<uint16_t> count = {};  // Entries, as the end record has it.
  bool zip64End = false;               // With the two 64-bit records before the end record.
  std::string prefix = {};             // Bytes before the archive, as in a self-extracting one.
};

class Bytes {
 public:
  Bytes& Put(uint64_t value, int size) {
    for (; size > 0; --size, value >>= 8) text_ += static_cast<char>(value & 0xFF);
    return *this;
  }

  Bytes& Put(std::string_view text) {
    text_ += text;
    return *this;
  }

  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

inline uint32_t Crc32(std::string_view data) {
  return static_cast<uint32_t>(
      crc32(0, reinterpret_cast<const Bytef*>(data.data()), static_cast<uInt>(data.size())));
}

// Packs with zlib; window bits -15 for a ZIP entry, 15 for zlib, 31 for gzip.
inline std::string Deflated(std::string_view data, int windowBits, int level = 6) {
  z_stream stream = {};
  deflateInit2(&stream, level, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY);
  std::string packed(deflateBound(&stream, static_cast<uLong>(data.size())) + 64, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
  stream.avail_in = static_cast<uInt>(data.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  deflate(&stream, Z_FINISH);
  packed.resize(packed.size() - stream.avail_out);
  deflateEnd(&stream);
  return packed;
}

// The fields that a local header and its central one share, from the flags to the sizes.
inline std::string SharedFields(const ZipEntry& entry, const std::string& packed) {
  return Bytes()
      .Put(entry.flags, 2)
      .Put(entry.method, 2)
      .Put(entry.dosDate, 4)
      .Put(entry.crc.value_or(Crc32(entry.data)), 4)
      .Put(packed.size(), 4)
      .Put(entry.size.value_or(static_cast<uint32_t>(entry.data.size())), 4)
      .Put(entry.name.size(), 2)
      .text();
}

inline std::string ZipBytes(const std::vector<ZipEntry>& entries, const ZipFrame& frame = {}) {
  Bytes archive;
  Bytes central;
  for (const ZipEntry& entry : entries) {
    const std::string packed =
        entry.packed.value_or(entry.method == 8 ? Deflated(entry.data, -15) : entry.data);
    const std::string fields = SharedFields(entry, packed);
    const size_t offset = archive.text().size();
    archive.Put(0x04034b50, 4).Put(20, 2).Put(fields).Put(0, 2).Put(entry.name).Put(packed);
    central.Put(0x02014b50, 4).Put(20, 2).Put(20, 2).Put(fields).Put(entry.centralExtra.size(), 2);
    central.Put(entry.comment.size(), 2).Put(0, 2).Put(0, 2).Put(0, 4).Put(offset, 4);
    central.Put(entry.name).Put(entry.centralExtra).Put(entry.comment);
  }
  const size_t centralStart = archive.text().size();
  const size_t centralSize = central.text().size();
  archive.Put(central.text());
  if (frame.zip64End) {
    const size_t record = archive.text().size();
    archive.Put(0x06064b50, 4).Put(44, 8).Put(45, 2).Put(45, 2).Put(0, 4).Put(0, 4);
    archive.Put(entries.size(), 8).Put(entries.size(), 8).Put(centralSize, 8);
    archive.Put(centralStart, 8);
    archive.Put(0x07064b50, 4).Put(0, 4).Put(record, 8).Put(1, 4);
  }
  const uint16_t count = frame.count.value_or(static_cast<uint16_t>(entries.size()));
  archive.Put(0x06054b50, 4).Put(0, 4).Put(count, 2).Put(count, 2);
  archive.Put(centralSize, 4).Put(centralStart, 4).Put(0, 2);
  return frame.prefix + archive.text();
}

// Reads the entries of an archive without comment. Contents are unpacked and their CRC is checked;
// a damaged archive returns what was read up to there and one entry named "damaged".
inline std::vector<ZipEntry> ReadZip(const std::string& archive) {
  const auto number = [&](size_t at, size_t size) {
    uint32_t value = 0;
    for (size_t i = 0; i < size && at + i < archive.size(); ++i) {
      value |= uint32_t{static_cast<unsigned char>(archive[at + i])} << (8 * i);
    }
    return value;
  };
  std::vector<ZipEntry> entries;
  const size_t end = archive.size() < 22 ? 0 : archive.size() - 22;
  if (number(end, 4) != 0x06054b50) return {ZipEntry{"damaged", ""}};
  size_t at = number(end + 16, 4);
  for (uint32_t left = number(end + 10, 2); left > 0; --left) {
    ZipEntry entry;
    if (number(at, 4) != 0x02014b50) return entries.push_back({"damaged"}), entries;
    const size_t local = number(at + 42, 4);
    entry.flags = static_cast<uint16_t>(number(at + 8, 2));
    entry.method = static_cast<uint16_t>(number(at + 10, 2));
    entry.dosDate = number(at + 12, 4);
    entry.crc = number(at + 16, 4);
    entry.externalAttributes = number(at + 38, 4);
    entry.name = archive.substr(at + 46, number(at + 28, 2));
    entry.centralExtra = archive.substr(at + 46 + entry.name.size(), number(at + 30, 2));
    const size_t packedSize = number(at + 20, 4);
    const size_t start = local + 30 + number(local + 26, 2) + number(local + 28, 2);
    entry.packed = archive.substr(std::min(start, archive.size()), packedSize);
    entry.data.resize(number(at + 24, 4));
    if (entry.method == 8) {
      z_stream stream = {};
      inflateInit2(&stream, -15);
      stream.next_in = reinterpret_cast<Bytef*>(entry.packed->data());
      stream.avail_in = static_cast<uInt>(entry.packed->size());
      Bytef nothing = 0;
      stream.next_out = entry.data.empty() ? &nothing : reinterpret_cast<Bytef*>(entry.data.data());
      stream.avail_out = static_cast<uInt>(entry.data.size());
      const int result = inflate(&stream, Z_FINISH);
      inflateEnd(&stream);
      if (result != Z_STREAM_END) entry.name = "damaged";
    } else {
      entry.data = *entry.packed;
    }
    if (Crc32(entry.data) != *entry.crc) entry.name = "damaged";
    at += 46 + number(at + 28, 2) + number(at + 30, 2) + number(at + 32, 2);
    entries.push_back(entry);
  }
  return entries;
}

}  // namespace test

#endif  // TESTS_SUPPORT_ZIP_FILE_H_
