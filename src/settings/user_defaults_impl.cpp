#include "settings/user_defaults_impl.h"

#include <cstdint>
#include <cstring>
#include <new>

#include "settings/json_document.h"
#include "settings/json_text.h"
#include "settings/settings_file.h"
#include "utilities/string/text.h"

namespace temvar {
namespace {

JsonValue* FromHandle(TMVUserDefaults::Value* handle) {
  return reinterpret_cast<JsonValue*>(handle);
}

JsonMember* FromHandle(TMVUserDefaults::Member* handle) {
  return reinterpret_cast<JsonMember*>(handle);
}

TMVUserDefaults::Value* ToHandle(JsonValue* value) {
  return reinterpret_cast<TMVUserDefaults::Value*>(value);
}

TMVUserDefaults::Member* ToHandle(JsonMember* member) {
  return reinterpret_cast<TMVUserDefaults::Member*>(member);
}

// The value of every absent member. It never changes: setters accept objects only, and it is none.
JsonValue* SharedNull() {
  static JsonValue null;
  return &null;
}

const char* TextOf(const JsonValue* value) {
  return value != nullptr && value->IsString() ? value->GetString() : "";
}

// The low 32 bits of any integer, as documented: no bound is checked and nothing is rounded. A
// double is no integer, and reads as 0.
int32_t IntegerOf(const JsonValue* value) {
  if (value == nullptr || !value->IsNumber() || value->IsDouble()) return 0;
  const uint64_t bits =
      value->IsUint64() ? value->GetUint64() : static_cast<uint64_t>(value->GetInt64());
  return static_cast<int32_t>(static_cast<uint32_t>(bits));
}

}  // namespace

TMVUserDefaultsImpl::TMVUserDefaultsImpl(std::string name, std::string path)
    : name_(std::move(name)), path_(std::move(path)) {
  // No file and a damaged file end alike, in an empty store that works: the first run of a program
  // has no file. The next Save replaces a damaged one without a warning.
  if (const auto text = ReadSettingsFile(path_.c_str())) {
    document_ = ParseJson(text->c_str());
    loaded_ = document_ != nullptr;
  }
  if (!loaded_) document_ = NewJsonDocument();
}

// A parent of another type holds no members: a file may have an array where the host expects an
// object.
JsonValue* TMVUserDefaultsImpl::ObjectOf(Value* parent) {
  if (document_ == nullptr) return nullptr;
  JsonValue* value = parent != nullptr ? FromHandle(parent) : document_.get();
  return value->IsObject() ? value : nullptr;
}

JsonValue* TMVUserDefaultsImpl::Find(const char* key, Value* parent) {
  JsonValue* object = ObjectOf(parent);
  return object != nullptr && key != nullptr ? FindMember(*object, key) : nullptr;
}

// An existing member keeps its place in the file. What it held stays in the pool until the document
// goes, so that texts that hosts have read stay valid.
void TMVUserDefaultsImpl::SetMember(const char* key, JsonValue& value, JsonValue& object) {
  if (JsonValue* found = FindMember(object, key)) {
    *found = value;
    return;
  }
  JsonPool& pool = document_->GetAllocator();
  JsonValue name = PoolText(key, std::strlen(key), pool);
  AppendMember(object, name, value, pool);
}

void TMVUserDefaultsImpl::SetString(const char* key, const char* value, Value* parent) {
  JsonValue* object = ObjectOf(parent);
  if (object != nullptr && key != nullptr) {
    const char* text = value != nullptr ? value : "";
    JsonValue copy = PoolText(text, std::strlen(text), document_->GetAllocator());
    SetMember(key, copy, *object);
  }
}

void TMVUserDefaultsImpl::SetInt(const char* key, int32_t value, Value* parent) {
  JsonValue* object = ObjectOf(parent);
  if (object != nullptr && key != nullptr) {
    JsonValue number(static_cast<int64_t>(value));
    SetMember(key, number, *object);
  }
}

bool TMVUserDefaultsImpl::HasKey(const char* key, Value* parent) {
  return Find(key, parent) != nullptr;
}

const char* TMVUserDefaultsImpl::GetString(const char* key, Value* parent) {
  return TextOf(Find(key, parent));
}

int32_t TMVUserDefaultsImpl::GetInt(const char* key, Value* parent) {
  return IntegerOf(Find(key, parent));
}

IntTriple TMVUserDefaultsImpl::GetIntTriple(const char* key, Value* parent) {
  // The number ends at the comma by itself, so the text need not be copied and cut.
  int32_t numbers[3] = {};
  // The third number ends at its own last digit, so a third comma and what follows it are ignored.
  const char* piece = GetString(key, parent);
  for (int32_t& number : numbers) {
    number = ParseInt32(piece);
    piece = std::strchr(piece, ',');
    if (piece == nullptr) break;
    ++piece;
  }
  return {numbers[0], numbers[1], numbers[2]};
}

void TMVUserDefaultsImpl::Save() {
  if (document_ == nullptr) return;
  JsonText text;
  try {
    WritePretty(*document_, text);
    // Straight to the file, as documented. The text is complete before the file is emptied.
    WriteSettingsFile(path_.c_str(), text.GetString(), text.GetSize());
  } catch (const std::bad_alloc&) {
    // Like a file that can't be written: a foreign file of some kilobytes, nested deep enough, has
    // gigabytes of indentation, and must not end a host that only wants to save it.
  }
}

bool TMVUserDefaultsImpl::IsLoaded() { return loaded_; }

const char* TMVUserDefaultsImpl::GetFilePath() { return path_.c_str(); }

// The store itself stays registered: IsLoaded and GetFilePath still answer, everything else as for
// an empty store.
void TMVUserDefaultsImpl::ReleaseDocument() { document_.reset(); }

TMVUserDefaults::Value* TMVUserDefaultsImpl::GetValue(const char* key, Value* parent) {
  JsonValue* value = Find(key, parent);
  return ToHandle(value != nullptr ? value : SharedNull());
}

TMVUserDefaults::Value* TMVUserDefaultsImpl::GetRootValue() {
  return ToHandle(document_ != nullptr ? document_.get() : SharedNull());
}

uint32_t TMVUserDefaultsImpl::GetArraySize(Value* value) {
  const JsonValue* array = FromHandle(value);
  return array != nullptr && array->IsArray() ? array->Size() : 0;
}

TMVUserDefaults::Value* TMVUserDefaultsImpl::GetArrayElement(Value* value, uint32_t index) {
  return index < GetArraySize(value) ? ToHandle(FromHandle(value)->Begin() + index) : nullptr;
}

TMVUserDefaults::Member* TMVUserDefaultsImpl::GetMemberBegin(Value* value) {
  JsonValue* object = FromHandle(value);
  // Null for an empty object, so that a walk from begin to end compares null with null.
  const bool any = object != nullptr && object->IsObject() && !object->ObjectEmpty();
  return any ? ToHandle(&*object->MemberBegin()) : nullptr;
}

TMVUserDefaults::Member* TMVUserDefaultsImpl::GetMemberEnd(Value* value) {
  Member* begin = GetMemberBegin(value);
  return begin != nullptr ? AdvanceMember(begin, FromHandle(value)->MemberCount()) : nullptr;
}

TMVUserDefaults::Member* TMVUserDefaultsImpl::AdvanceMember(Member* member, uint32_t count) {
  return member != nullptr ? ToHandle(FromHandle(member) + count) : nullptr;
}

TMVUserDefaults::Value* TMVUserDefaultsImpl::GetMemberName(Member* member) {
  return member != nullptr ? ToHandle(&FromHandle(member)->name) : nullptr;
}

TMVUserDefaults::Value* TMVUserDefaultsImpl::GetMemberValue(Member* member) {
  return member != nullptr ? ToHandle(&FromHandle(member)->value) : nullptr;
}

const char* TMVUserDefaultsImpl::GetValueString(Value* value) { return TextOf(FromHandle(value)); }

int32_t TMVUserDefaultsImpl::GetValueInt(Value* value) { return IntegerOf(FromHandle(value)); }

char* TMVUserDefaultsImpl::StringifyValue(Value* value) {
  JsonText text;
  WriteCompact(value != nullptr ? *FromHandle(value) : *SharedNull(), text);
  return NewNarrowText({text.GetString(), text.GetSize()});
}

}  // namespace temvar
