// Mutates archives as archives: entries, names, contents and extra fields change, and the sizes,
// offsets and counts around them are made to fit. Some mutations then spoil a field, or take
// the bytes as they are.
#include <zlib.h>

#include <string>
#include <utility>
#include <vector>

#include "fuzz/mutation.h"
#include "tests/support/zip_file.h"

namespace {

using fuzz::Choice;
using fuzz::Number;
using fuzz::NumberAt;
using fuzz::SetNumber;

constexpr size_t kLocalSize = 30;
constexpr size_t kCentralSize = 46;
constexpr size_t kEndSize = 22;
// Few and small: what many entries reach, some reach too, and faster.
constexpr size_t kMostBytes = 2048;
constexpr size_t kMostContents = 512;
constexpr size_t kMostEntries = 8;
constexpr uint64_t kInZip64 = 0xFFFFFFFF;
const std::string kLocalSignature("PK\3\4", 4);
const std::string kCentralSignature("PK\1\2", 4);
const std::string kEndSignature("PK\5\6", 4);
const std::string kZip64Signature("PK\6\6", 4);

struct Entry {
  // The headers without what follows them. Lengths, packed size and offset are filled in when the
  // entry is written.
  std::string local = kLocalSignature + std::string(kLocalSize - 4, '\0');
  std::string central = kCentralSignature + std::string(kCentralSize - 4, '\0');
  std::string localName;
  std::string name;
  std::string localExtra;
  std::string extra;
  std::string comment;
  std::string packed;
  bool isZip64 = false;  // Sizes and offset are in an extra field.
};

struct Archive {
  std::string prefix;
  std::vector<Entry> entries;
  std::string comment;
  bool isZip64 = false;  // With the two records of 64 bits at the end.
};

std::string Piece(const std::string& bytes, size_t start, size_t size) {
  return start < bytes.size() ? bytes.substr(start, size) : std::string();
}

Entry ParseEntry(const std::string& bytes, size_t place) {
  Entry entry;
  entry.central = bytes.substr(place, kCentralSize);
  const size_t nameSize = NumberAt(bytes, place + 28, 2);
  const size_t extraSize = NumberAt(bytes, place + 30, 2);
  entry.name = Piece(bytes, place + kCentralSize, nameSize);
  entry.extra = Piece(bytes, place + kCentralSize + nameSize, extraSize);
  entry.comment =
      Piece(bytes, place + kCentralSize + nameSize + extraSize, NumberAt(bytes, place + 32, 2));
  size_t packedSize = NumberAt(bytes, place + 20, 4);
  size_t offset = NumberAt(bytes, place + 42, 4);
  if (packedSize == kInZip64 && NumberAt(entry.extra, 0, 4) == 0x00180001) {
    entry.isZip64 = true;
    SetNumber(entry.central, 24, 4, NumberAt(entry.extra, 4, 8));
    packedSize = NumberAt(entry.extra, 12, 8);
    offset = NumberAt(entry.extra, 20, 8);
    entry.extra = Piece(entry.extra, 28, entry.extra.size());
  }
  if (offset < bytes.size() && bytes.compare(offset, 4, kLocalSignature) == 0) {
    const size_t localNameSize = NumberAt(bytes, offset + 26, 2);
    const size_t localExtraSize = NumberAt(bytes, offset + 28, 2);
    entry.local = bytes.substr(offset, kLocalSize);
    entry.local.resize(kLocalSize);
    entry.localName = Piece(bytes, offset + kLocalSize, localNameSize);
    entry.localExtra = Piece(bytes, offset + kLocalSize + localNameSize, localExtraSize);
    entry.packed = Piece(bytes, offset + kLocalSize + localNameSize + localExtraSize, packedSize);
  }
  return entry;
}

Archive Parse(const std::string& bytes) {
  Archive archive;
  size_t place = bytes.find(kCentralSignature);
  while (place < bytes.size() && bytes.size() - place >= kCentralSize &&
         archive.entries.size() < kMostEntries) {
    archive.entries.push_back(ParseEntry(bytes, place));
    place = bytes.find(kCentralSignature, place + kCentralSize);
  }
  archive.isZip64 = bytes.find(kZip64Signature) != bytes.npos;
  const size_t end = bytes.rfind(kEndSignature);
  if (end != bytes.npos) archive.comment = Piece(bytes, end + kEndSize, 64);
  const size_t first = bytes.find(kLocalSignature);
  if (first != bytes.npos) archive.prefix = bytes.substr(0, std::min<size_t>(first, 64));
  return archive;
}

void WriteEntry(Entry entry, std::string& out, std::string& directory) {
  const size_t offset = out.size();
  const uint64_t size = NumberAt(entry.central, 24, 4);
  SetNumber(entry.local, 18, 4, entry.packed.size());
  SetNumber(entry.local, 26, 2, entry.localName.size());
  SetNumber(entry.local, 28, 2, entry.localExtra.size());
  SetNumber(entry.central, 20, 4, entry.packed.size());
  SetNumber(entry.central, 42, 4, offset);
  if (entry.isZip64) {
    for (const size_t place : {20u, 24u, 42u}) SetNumber(entry.central, place, 4, kInZip64);
    entry.extra.insert(0, Number(0x00180001, 4) + Number(size, 8) + Number(entry.packed.size(), 8) +
                              Number(offset, 8));
  }
  SetNumber(entry.central, 28, 2, entry.name.size());
  SetNumber(entry.central, 30, 2, entry.extra.size());
  SetNumber(entry.central, 32, 2, entry.comment.size());
  out += entry.local + entry.localName + entry.localExtra + entry.packed;
  directory += entry.central + entry.name + entry.extra + entry.comment;
}

std::string Write(const Archive& archive) {
  std::string out = archive.prefix;
  std::string directory;
  for (const Entry& entry : archive.entries) WriteEntry(entry, out, directory);
  const size_t start = out.size();
  const size_t count = archive.entries.size();
  out += directory;
  if (archive.isZip64) {
    const size_t record = out.size();
    out += kZip64Signature + Number(44, 8) + Number(0x002D002D, 4) + Number(0, 8) +
           Number(count, 8) + Number(count, 8) + Number(directory.size(), 8) + Number(start, 8);
    out += std::string("PK\6\7", 4) + Number(0, 4) + Number(record, 8) + Number(1, 4);
  }
  const bool isHidden = archive.isZip64 && count % 2 == 1;
  return out + kEndSignature + Number(0, 4) + Number(count, 2) + Number(count, 2) +
         Number(directory.size(), 4) + Number(isHidden ? kInZip64 : start, 4) +
         Number(archive.comment.size(), 2) + archive.comment;
}

void Pack(Entry& entry, const std::string& contents, bool isDeflated, int level) {
  entry.packed = isDeflated ? test::Deflated(contents, -15, level) : contents;
  for (std::string* header : {&entry.local, &entry.central}) {
    const size_t shift = header == &entry.local ? 0 : 2;
    SetNumber(*header, 8 + shift, 2, isDeflated ? 8 : 0);
    SetNumber(*header, 14 + shift, 4, test::Crc32(contents));
    SetNumber(*header, 22 + shift, 4, contents.size());
  }
}

// The beginning of the contents, if the entry unpacks.
std::string Unpacked(Entry& entry) {
  if (NumberAt(entry.central, 10, 2) != 8) return Piece(entry.packed, 0, kMostContents);
  std::string contents(kMostContents, '\0');
  z_stream stream = {};
  if (inflateInit2(&stream, -15) != Z_OK) return {};
  stream.next_in = reinterpret_cast<Bytef*>(entry.packed.data());
  stream.avail_in = static_cast<uInt>(entry.packed.size());
  stream.next_out = reinterpret_cast<Bytef*>(contents.data());
  stream.avail_out = static_cast<uInt>(contents.size());
  inflate(&stream, Z_FINISH);
  contents.resize(stream.total_out);
  inflateEnd(&stream);
  return contents;
}

std::string NewName(Choice& choice) {
  static const std::string kParts[] = {"a",   "b",        "f",        "..",    ".",        "",
                                       "NUL", "con.txt",  "C:",       "a:b",   "a.",       "a ",
                                       "A",   "\xC3\xA4", "\xED\xA0", "\xFF",  "in.zip",   "out",
                                       "*?",  "COM1.x1",  "~",        "a\nb%", {"a\0b", 3}};
  static const std::string kSeparators[] = {"/", "/", "/", "\\", "//"};
  std::string name = choice.OneIn(16) ? choice.Of(kSeparators) : std::string();
  for (size_t left = choice.Below(4) + 1; left > 0; --left) {
    std::string part = choice.Of(kParts);
    if (choice.OneIn(32)) part.assign(250 + choice.Below(10), 'n');
    size_t repeats = choice.OneIn(64) ? choice.Below(300) : 1;
    if (choice.OneIn(8)) repeats += choice.Below(8);
    for (; repeats > 0; --repeats) name += part + choice.Of(kSeparators);
  }
  if (!name.empty() && !choice.OneIn(4)) name.pop_back();
  return name;
}

void Rename(Entry& entry, Choice& choice, const std::vector<Entry>& others) {
  switch (choice.Below(4)) {
    case 0:
      fuzz::MutateBytes(entry.name, entry.name.size() + 16);
      break;
    case 1:  // Below another entry, which may be a file.
      entry.name = choice.Of(others).name + "/" + entry.name;
      break;
    case 2:  // At another entry, or at its folder.
      entry.name = choice.Of(others).name;
      if (choice.OneIn(2)) entry.name.resize(entry.name.find_last_of("/\\") + 1);
      break;
    default:
      entry.name = NewName(choice);
  }
  if (entry.name.size() > kMostBytes) entry.name.resize(kMostBytes);
  if (!choice.OneIn(8)) entry.localName = entry.name;
}

void ChangeContents(Entry& entry, Choice& choice) {
  std::string contents = Unpacked(entry);
  if (choice.OneIn(8)) {
    contents.assign(choice.Below(64) * 1024 + choice.Below(3), 'z');
    Pack(entry, contents, true, 9);
    return;
  }
  if (!choice.OneIn(4)) fuzz::MutateBytes(contents, kMostContents);
  Pack(entry, contents, choice.OneIn(2), static_cast<int>(choice.Below(10)));
}

void ChangeExtra(std::string& extra, Choice& choice) {
  static const uint64_t kIds[] = {1, 0x7075, 0x5455, 0x9901, 0x000A, 0xFFFF};
  if (choice.OneIn(2)) {
    fuzz::MutateBytes(extra, extra.size() + 32);
  } else {
    const size_t size = choice.Below(40);
    extra.insert(0, Number(choice.Of(kIds), 2) + Number(size, 2) +
                        std::string(size, static_cast<char>(choice.Below(256))));
  }
  if (extra.size() > 512) extra.resize(512);
}

// What the fields of a header can be; a wrong size, CRC, method or flag among it.
void ChangeField(Entry& entry, Choice& choice) {
  static const std::pair<size_t, size_t> kCentralFields[] = {
      {4, 2}, {6, 2}, {8, 2}, {10, 2}, {12, 4}, {16, 4}, {24, 4}, {34, 2}, {36, 2}, {38, 4}};
  static const uint64_t kValues[] = {
      0, 1, 8, 9, 12, 0x7F, 0x80, 0x800, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF};
  const auto [place, size] = choice.Of(kCentralFields);
  const uint64_t old = NumberAt(entry.central, place, size);
  const uint64_t value = choice.OneIn(2) ? choice.Of(kValues) : old + choice.Below(5) - 2;
  SetNumber(entry.central, place, size, value);
  // Both headers have the fields from the flags to the size.
  if (place >= 6 && place <= 24 && !choice.OneIn(4)) SetNumber(entry.local, place - 2, size, value);
}

void ChangeEntry(Entry& entry, Choice& choice, const std::vector<Entry>& others) {
  switch (choice.Below(8)) {
    case 0:
      return ChangeExtra(choice.OneIn(2) ? entry.extra : entry.localExtra, choice);
    case 1:
      return ChangeField(entry, choice);
    case 2:
      return fuzz::MutateBytes(entry.packed, entry.packed.size() + 16);
    case 3:
      return fuzz::MutateBytes(entry.comment, 64);
    case 4:
      entry.isZip64 = !entry.isZip64;
      return;
    case 5:
      return ChangeContents(entry, choice);
    default:
      return Rename(entry, choice, others);
  }
}

Entry NewEntry(Choice& choice) {
  Entry entry;
  entry.name = entry.localName = NewName(choice);
  Pack(entry, std::string(choice.Below(20), 'x'), choice.OneIn(2), 6);
  return entry;
}

void ChangeArchive(Archive& archive, Choice& choice) {
  std::vector<Entry>& entries = archive.entries;
  if (entries.empty()) entries.push_back(NewEntry(choice));
  switch (choice.Below(16)) {
    case 0:
      archive.isZip64 = !archive.isZip64;
      break;
    case 1:
      fuzz::MutateBytes(choice.OneIn(2) ? archive.comment : archive.prefix, 64);
      break;
    case 2:
      entries.erase(entries.begin() + static_cast<long>(choice.Below(entries.size())));
      break;
    case 3:
      std::swap(choice.Of(entries), choice.Of(entries));
      break;
    case 4:
      if (entries.size() < kMostEntries) entries.push_back(Entry(choice.Of(entries)));
      break;
    case 5:
    case 6:
      if (entries.size() < kMostEntries) entries.push_back(NewEntry(choice));
      break;
    default:
      ChangeEntry(choice.Of(entries), choice, entries);
  }
}

// Overwrites a field of the written archive, with nothing made to fit.
void Spoil(std::string& bytes, Choice& choice) {
  size_t place = choice.Below(bytes.size());
  const size_t signature = bytes.find("PK", place);
  if (signature != bytes.npos) place = signature + choice.Below(kCentralSize);
  SetNumber(bytes, place, 1 + choice.Below(4), choice.OneIn(2) ? ~0ull : choice.Below(70000));
  if (choice.OneIn(8)) bytes.resize(choice.Below(bytes.size()));
}

void CutTo(Archive& archive, size_t most, std::string& bytes) {
  for (bytes = Write(archive); bytes.size() > most && !archive.entries.empty();) {
    archive.entries.pop_back();
    bytes = Write(archive);
  }
}

}  // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
  Choice choice(seed);
  most = std::min(most, std::max(size, kMostBytes));
  if (choice.OneIn(16)) return LLVMFuzzerMutate(data, size, most);
  Archive archive = Parse({data, data + size});
  for (size_t left = choice.Below(4) + 1; left > 0; --left) ChangeArchive(archive, choice);
  std::string bytes;
  CutTo(archive, most, bytes);
  if (choice.OneIn(16)) Spoil(bytes, choice);
  return fuzz::Result(bytes, data, size, most);
}

// The entries of both, each with a chance of one half.
extern "C" size_t LLVMFuzzerCustomCrossOver(const uint8_t* data, size_t size, const uint8_t* other,
                                            size_t otherSize, uint8_t* out, size_t most,
                                            unsigned seed) {
  Choice choice(seed);
  most = std::min(most, kMostBytes);
  Archive mixed;
  for (Archive& archive :
       std::vector{Parse({data, data + size}), Parse({other, other + otherSize})}) {
    for (Entry& entry : archive.entries) {
      if (choice.OneIn(2) && mixed.entries.size() < kMostEntries) mixed.entries.push_back(entry);
    }
    mixed.isZip64 |= archive.isZip64;
  }
  std::string bytes;
  CutTo(mixed, most, bytes);
  if (bytes.size() > most) return 0;
  std::memcpy(out, bytes.data(), bytes.size());
  return bytes.size();
}
