#include "settings/json_document.h"

#include <cmath>
#include <cstring>

namespace temvar {
namespace {

using rapidjson::SizeType;

// RapidJSON counts in 32 bits.
constexpr size_t kMaxTextLength = std::numeric_limits<SizeType>::max() - 1;

// Passes what the parser reads on to the document.
class DocumentBuilder {
 public:
  explicit DocumentBuilder(JsonDocument& document) : document_(document) {}

  bool Null() { return document_.Null(); }
  bool Bool(bool value) { return document_.Bool(value); }
  bool Int(int value) { return document_.Int(value); }
  bool Uint(unsigned value) { return document_.Uint(value); }
  bool Int64(int64_t value) { return document_.Int64(value); }
  bool Uint64(uint64_t value) { return document_.Uint64(value); }

  // The parser refuses 1e309 but accepts 1.8e308 as infinity, which would be written as a file that
  // no parser accepts. Both are refused.
  bool Double(double value) { return std::isfinite(value) && document_.Double(value); }

  bool RawNumber(const char*, SizeType, bool) { return false; }
  bool String(const char* text, SizeType length, bool) {
    const JsonValue value = PoolText(text, length, document_.GetAllocator());
    return document_.String(value.GetString(), length, false);
  }
  bool Key(const char* text, SizeType length, bool copy) { return String(text, length, copy); }
  bool StartObject() { return document_.StartObject(); }
  bool EndObject(SizeType count) { return document_.EndObject(count); }
  bool StartArray() { return document_.StartArray(); }
  bool EndArray(SizeType count) { return document_.EndArray(count); }

 private:
  JsonDocument& document_;
};

}  // namespace

std::unique_ptr<JsonDocument> NewJsonDocument() {
  auto document = std::make_unique<JsonDocument>();
  document->SetObject();
  return document;
}

std::unique_ptr<JsonDocument> ParseJson(const char* text) {
  auto document = std::make_unique<JsonDocument>();
  auto parse = [text](JsonDocument& target) {
    DocumentBuilder builder(target);
    rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, JsonHeap> reader;
    rapidjson::StringStream stream(text);
    // Iterative: with the recursive parser, whose results are the same, a file of some 10,000
    // opening brackets would overflow the thread's stack.
    return !reader.Parse<rapidjson::kParseIterativeFlag>(stream, builder).IsError();
  };
  document->Populate(parse);
  const bool valid = document->IsObject() || document->IsArray();
  return valid ? std::move(document) : nullptr;
}

// A linear scan for the first match, as documented. No index: it would have to follow every member
// that a host reaches and edits through handles.
JsonValue* FindMember(JsonValue& object, const char* key) {
  const size_t length = std::strlen(key);
  auto member = object.MemberBegin();
  for (SizeType left = object.MemberCount(); left > 0; --left, ++member) {
    if (member->name.GetStringLength() == length &&
        std::memcmp(member->name.GetString(), key, length) == 0) {
      return &member->value;
    }
  }
  return nullptr;
}

JsonValue PoolText(const char* text, size_t length, JsonPool& pool) {
  if (length > kMaxTextLength) throw std::bad_alloc();
  auto* copy = static_cast<char*>(pool.Malloc(length + 1));
  std::memcpy(copy, text, length);
  copy[length] = '\0';
  return JsonValue(rapidjson::StringRef(copy, static_cast<SizeType>(length)));
}

void AppendMember(JsonValue& object, JsonValue& name, JsonValue& value, JsonPool& pool) {
  // RapidJSON raises the capacity of the object before it allocates; without the larger array, the
  // next member would be written past the end of the old one. So the object's bytes are restored.
  char before[sizeof(JsonValue)];
  std::memcpy(before, static_cast<const void*>(&object), sizeof(before));
  try {
    object.AddMember(name, value, pool);
  } catch (...) {
    std::memcpy(static_cast<void*>(&object), before, sizeof(before));
    throw;
  }
}

}  // namespace temvar
