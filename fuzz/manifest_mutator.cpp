// Mutates compiled manifests as documents: strings, tags, attributes and the words that refer to
// them, with the table of strings and the sizes made to fit. Some mutations then spoil a word, or
// take the bytes as they are.
#include <string>
#include <vector>

#include "fuzz/mutation.h"

namespace {

using fuzz::Choice;
using fuzz::Number;
using fuzz::NumberAt;

constexpr size_t kMostBytes = 2048;
constexpr size_t kMostStrings = 12;
constexpr size_t kMostRecords = 30;
constexpr uint64_t kStartTag = 0x00100102;
constexpr uint64_t kEndTag = 0x00100103;
constexpr uint64_t kNone = 0xFFFFFFFF;
constexpr size_t kStartTagSize = 36;
constexpr size_t kAttributeSize = 20;
constexpr size_t kOtherSize = 24;

struct Document {
  std::string head = Number(0x00080003, 4) + std::string(32, '\0');  // As far as the index.
  std::vector<std::string> strings;                                  // Their units.
  std::vector<std::string> records;
};

Document Parse(const std::string& bytes) {
  Document document;
  for (size_t i = 0; i < document.head.size() && i < bytes.size(); ++i) document.head[i] = bytes[i];
  const size_t count = NumberAt(bytes, 16, 4);
  for (size_t i = 0; i < count && i < kMostStrings; ++i) {
    const size_t place = 36 + 4 * count + NumberAt(bytes, 36 + 4 * i, 4);
    const size_t size = 2 * NumberAt(bytes, place, 2);
    document.strings.push_back(place + 2 < bytes.size() ? bytes.substr(place + 2, size) : "");
  }
  // The scan for the first start tag goes in steps of a word.
  size_t place = NumberAt(bytes, 12, 4);
  const size_t start = place;
  while (place < bytes.size() && NumberAt(bytes, place, 4) != kStartTag) place += 4;
  if (place >= bytes.size()) place = start;
  while (place < bytes.size() && document.records.size() < kMostRecords) {
    const bool isStart = NumberAt(bytes, place, 4) == kStartTag;
    const size_t attributes = isStart ? std::min<size_t>(NumberAt(bytes, place + 28, 4), 32) : 0;
    const size_t size = isStart ? kStartTagSize + attributes * kAttributeSize : kOtherSize;
    document.records.push_back(bytes.substr(place, size));
    place += size;
  }
  return document;
}

std::string Write(Document document) {
  std::string index;
  std::string data;
  for (const std::string& text : document.strings) {
    index += Number(data.size(), 4);
    data += Number(text.size() / 2, 2) + text.substr(0, text.size() / 2 * 2) + Number(0, 2);
  }
  data.resize((data.size() + 3) / 4 * 4);
  std::string records;
  for (const std::string& record : document.records) records += record;
  const size_t pool = 28 + index.size() + data.size();
  fuzz::SetNumber(document.head, 4, 4, 8 + pool + records.size());
  // Android's packager writes the size of the pool here, so that the scan starts shortly before
  // the first tag.
  fuzz::SetNumber(document.head, 12, 4, pool);
  fuzz::SetNumber(document.head, 16, 4, document.strings.size());
  return document.head + index + data + records;
}

std::string NewText(Choice& choice) {
  static const std::string kTexts[] = {"",   "a", "manifest", "package", "versionName",
                                       "\"", "'", ">\n<",     "\xFF",    {"a\0b", 3}};
  std::string text = choice.Of(kTexts);
  if (choice.OneIn(16)) text.assign(choice.Below(100), 'x');
  std::string units;
  for (const char byte : text) units += {byte, choice.OneIn(16) ? '\1' : '\0'};
  return units;
}

uint64_t NewReference(const Document& document, Choice& choice) {
  static const uint64_t kOdd[] = {kNone, 0x7FFFFFFF, 0x80000000, 0x1FFFFFF7, 0x1FFFFFF6, 1000};
  if (choice.OneIn(8)) return choice.Of(kOdd);
  return choice.Below(document.strings.size() + 2);
}

std::string NewAttribute(const Document& document, Choice& choice) {
  return Number(kNone, 4) + Number(NewReference(document, choice), 4) +
         Number(choice.OneIn(3) ? kNone : NewReference(document, choice), 4) +
         Number(0x03000008, 4) + Number(choice.Below(1 << 16) * choice.Below(1 << 16), 4);
}

std::string NewRecord(const Document& document, Choice& choice) {
  static const uint64_t kOther[] = {0x00100100, 0x00100101, 0x00100104, 0x00100180, 0, kNone};
  const uint64_t name = NewReference(document, choice);
  const std::string end = Number(1, 4) + Number(kNone, 4) + Number(kNone, 4) + Number(name, 4);
  if (choice.OneIn(8)) return Number(choice.Of(kOther), 4) + Number(kOtherSize, 4) + end;
  if (choice.OneIn(2)) return Number(kEndTag, 4) + Number(kOtherSize, 4) + end;
  const size_t count = choice.Below(4);
  std::string record = Number(kStartTag, 4) + Number(kStartTagSize + count * kAttributeSize, 4) +
                       end + Number(0x00140014, 4) + Number(count, 4) + Number(0, 4);
  for (size_t i = 0; i < count; ++i) record += NewAttribute(document, choice);
  return record;
}

// Adds an attribute, changes a word of one or of the tag, or takes one away.
void ChangeRecord(std::string& record, const Document& document, Choice& choice) {
  const size_t words = std::max<size_t>(record.size() / 4, 1);
  const bool isStart = NumberAt(record, 0, 4) == kStartTag && record.size() >= kStartTagSize;
  const size_t count = isStart ? (record.size() - kStartTagSize) / kAttributeSize : 0;
  switch (choice.Below(4)) {
    case 0:
      if (isStart && count < 32) record += NewAttribute(document, choice);
      break;
    case 1:
      if (count > 0) {
        record.erase(kStartTagSize + choice.Below(count) * kAttributeSize, kAttributeSize);
      }
      break;
    case 2:
      fuzz::SetNumber(record, 4 * choice.Below(words), 4, NewReference(document, choice));
      return;
    default:
      fuzz::MutateBytes(record, record.size());
      return;
  }
  if (!isStart) return;
  fuzz::SetNumber(record, 4, 4, record.size());
  fuzz::SetNumber(record, 28, 4, (record.size() - kStartTagSize) / kAttributeSize);
}

void ChangeDocument(Document& document, Choice& choice) {
  auto& strings = document.strings;
  auto& records = document.records;
  if (strings.empty()) strings.push_back(NewText(choice));
  if (records.empty()) records.push_back(NewRecord(document, choice));
  const auto place = records.begin() + static_cast<long>(choice.Below(records.size()));
  switch (choice.Below(8)) {
    case 0:
      if (strings.size() < kMostStrings) strings.push_back(NewText(choice));
      break;
    case 1:
      choice.Of(strings) = NewText(choice);
      break;
    case 2: {
      std::string& text = choice.Of(strings);
      fuzz::MutateBytes(text, text.size() + 16);
      break;
    }
    case 3:
      if (records.size() < kMostRecords) records.insert(place, NewRecord(document, choice));
      break;
    case 4:
      records.erase(place);
      break;
    case 5:  // Deeper and deeper.
      for (size_t i = choice.Below(30); i > 0 && records.size() < kMostRecords; --i) {
        records.insert(records.begin(), NewRecord(document, choice));
      }
      break;
    default:
      ChangeRecord(*place, document, choice);
  }
}

}  // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
  Choice choice(seed);
  most = std::min(most, std::max(size, kMostBytes));
  if (choice.OneIn(16)) return LLVMFuzzerMutate(data, size, most);
  Document document = Parse({data, data + size});
  for (size_t left = choice.Below(4) + 1; left > 0; --left) ChangeDocument(document, choice);
  std::string bytes = Write(document);
  if (choice.OneIn(8)) {
    fuzz::SetNumber(bytes, 4 * choice.Below(bytes.size() / 4), 4, NewReference(document, choice));
  }
  if (choice.OneIn(32)) bytes.resize(choice.Below(bytes.size()));
  return fuzz::Result(bytes, data, size, most);
}
