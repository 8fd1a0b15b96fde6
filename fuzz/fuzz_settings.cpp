// Loads the input as a settings file, walks the document through its handles, changes, writes and
// loads it again. What the parser accepts and returns is compared with RapidJSON's recursive one.
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <rapidjson/writer.h>

#include "settings/json_document.h"
#include "settings/json_text.h"
#include "settings/user_defaults_impl.h"

namespace {

using temvar::JsonDocument;
using temvar::JsonText;
using temvar::JsonValue;

void Require(bool condition) {
  if (!condition) std::abort();
}

bool HasInfinity(const JsonValue& value) {
  if (value.IsDouble()) return std::isinf(value.GetDouble());
  bool found = false;
  if (value.IsArray()) {
    for (auto* element = value.Begin(); element != value.End(); ++element) {
      found |= HasInfinity(*element);
    }
  } else if (value.IsObject()) {
    auto member = value.MemberBegin();
    for (auto left = value.MemberCount(); left > 0; --left, ++member) {
      found |= HasInfinity(member->value);
    }
  }
  return found;
}

// By RapidJSON's own recursive writer, with all digits of doubles.
std::string Written(const JsonValue& value) {
  JsonText text;
  rapidjson::Writer<JsonText, rapidjson::UTF8<>, rapidjson::UTF8<>, temvar::JsonHeap> writer(text);
  Require(value.Accept(writer));
  return {text.GetString(), text.GetSize()};
}

void CompareWithRecursiveParser(const char* text) {
  JsonDocument recursive;
  recursive.Parse(text);
  const bool valid = !recursive.HasParseError() && (recursive.IsObject() || recursive.IsArray()) &&
                     !HasInfinity(recursive);
  const auto document = temvar::ParseJson(text);
  Require(valid == (document != nullptr));
  Require(!valid || Written(*document) == Written(recursive));
}

// Visits every value by handles, with texts and numbers; returns their count.
size_t Walk(TMVUserDefaults& store) {
  size_t count = 0;
  std::vector<TMVUserDefaults::Value*> open = {store.GetRootValue()};
  while (!open.empty()) {
    TMVUserDefaults::Value* value = open.back();
    open.pop_back();
    ++count;
    count += std::string(store.GetValueString(value)).size() > 1000 ? 1 : 0;
    count += store.GetValueInt(value) == 12345 ? 1 : 0;
    for (uint32_t i = 0; i < store.GetArraySize(value); ++i) {
      open.push_back(store.GetArrayElement(value, i));
    }
    TMVUserDefaults::Member* const end = store.GetMemberEnd(value);
    for (auto* member = store.GetMemberBegin(value); member != end;
         member = store.AdvanceMember(member, 1)) {
      const char* name = store.GetValueString(store.GetMemberName(member));
      Require(store.HasKey(name, value) || std::string(name).empty() || name[0] != '\0');
      store.GetIntTriple(name, value);
      open.push_back(store.GetMemberValue(member));
    }
  }
  return count;
}

std::string Compact(TMVUserDefaults& store) {
  char* text = store.StringifyValue(store.GetRootValue());
  const std::string copy(text);
  std::free(text);
  return copy;
}

const std::string& FilePath() {
  static const std::string path = [] {
    const std::filesystem::path memory = "/dev/shm";
    const auto folder =
        std::filesystem::exists(memory) ? memory : std::filesystem::temp_directory_path();
    return (folder / ("temvar-fuzz-" + std::to_string(std::rand()) + "-" +
                      std::to_string(reinterpret_cast<uintptr_t>(&memory))))
        .string();
  }();
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(data, data + size);
  CompareWithRecursiveParser(text.c_str());

  std::ofstream(FilePath(), std::ios::binary) << text;
  temvar::TMVUserDefaultsImpl store("fuzz", FilePath());
  const size_t count = Walk(store);
  store.SetString("key", text.c_str(), nullptr);
  store.SetInt(text.substr(0, 3).c_str(), static_cast<int32_t>(size), nullptr);
  Walk(store);
  store.Save();

  temvar::TMVUserDefaultsImpl again("fuzz", FilePath());
  Require(again.IsLoaded());
  Require(!store.IsLoaded() || Walk(again) + 3 >= count);
  Require(Compact(again).size() <= Compact(store).size());
  std::filesystem::remove(FilePath());
  return 0;
}
