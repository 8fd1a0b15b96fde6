// Loads the input as a settings file, as far as its first NUL, and edits the document by the bytes
// after it: each is an operation on a handle. What is read back is compared with what was set, and
// the document with itself after a save and a load. What the parser accepts and returns is compared
// with RapidJSON's recursive one.
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <rapidjson/writer.h>

#include "settings/json_document.h"
#include "settings/json_text.h"
#include "settings/user_defaults_impl.h"

namespace {

using temvar::JsonDocument;
using temvar::JsonText;
using temvar::JsonValue;
using Store = temvar::TMVUserDefaultsImpl;
using Value = TMVUserDefaults::Value;

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

std::string Compact(TMVUserDefaults& store, Value* value) {
  char* text = store.StringifyValue(value);
  const std::string copy(text);
  std::free(text);
  return copy;
}

// The store's file, in memory and for all inputs.
const std::string& FilePath() {
  static const struct File {
    ~File() { unlink(path.c_str()); }
    const std::string path = std::string(access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") +
                             "/temvar-fuzz-settings-" + std::to_string(getpid());
  } file;
  return file.path;
}

// A host that works on one store. It takes its operations from the input's bytes, and reads zeros
// after their end.
class Editor {
 public:
  Editor(const uint8_t* bytes, size_t size) : bytes_(bytes), left_(size) { Open(); }

  void Run() {
    while (left_ > 0) Step();
    CheckTexts();
    SaveAndLoad();
  }

 private:
  // A handle and how to find it again: a setter that adds a member to an object moves the others.
  struct Node {
    Value* value;
    size_t object = kNone;  // The node that holds it as a member.
    uint32_t member = 0;
  };
  static constexpr size_t kNone = SIZE_MAX;

  uint8_t Next() {
    if (left_ == 0) return 0;
    --left_;
    return *bytes_++;
  }

  std::string NextText() {
    std::string text(Next() % 24, '\0');
    for (char& byte : text) byte = static_cast<char>(Next());
    return text.c_str();
  }

  std::string NextKey() {
    static const char* const kKeys[] = {"", "a", "b", "key", "n", "list"};
    const size_t choice = Next() % 8;
    return choice < std::size(kKeys) ? kKeys[choice] : NextText();
  }

  void Open() {
    CheckTexts();
    store_ = std::make_unique<Store>("fuzz", FilePath());
    nodes_ = {{store_->GetRootValue()}};
    texts_.clear();
  }

  // Texts stay valid, also those that were overwritten.
  void Keep(const char* text) { texts_.emplace_back(text, text); }
  void CheckTexts() const {
    for (const auto& [text, copy] : texts_) Require(text == copy);
  }

  Value* Chosen(size_t& index) {
    index = Next() % nodes_.size();
    return nodes_[index].value;
  }

  // Goes from a handle to one below it.
  void Descend() {
    size_t index = 0;
    Value* const value = Chosen(index);
    const uint32_t place = Next();
    TMVUserDefaults::Member* const begin = store_->GetMemberBegin(value);
    if (Value* const element = store_->GetArrayElement(value, place)) {
      nodes_.push_back({element});
    } else if (begin != nullptr) {
      uint32_t count = 0;
      while (store_->AdvanceMember(begin, count) != store_->GetMemberEnd(value)) ++count;
      TMVUserDefaults::Member* const member = store_->AdvanceMember(begin, place % count);
      Keep(store_->GetValueString(store_->GetMemberName(member)));
      nodes_.push_back({store_->GetMemberValue(member), index, place % count});
    } else {
      Keep(store_->GetValueString(value));
      store_->GetValueInt(value);
    }
  }

  void FindMembersAgain(Value* object) {
    TMVUserDefaults::Member* const begin = store_->GetMemberBegin(object);
    if (begin == nullptr) return;
    for (Node& node : nodes_) {
      if (node.object == kNone || nodes_[node.object].value != object) continue;
      node.value = store_->GetMemberValue(store_->AdvanceMember(begin, node.member));
    }
  }

  void Set(bool isText) {
    size_t index = 0;
    Value* const parent = Chosen(index);
    const std::string key = NextKey();
    const bool isObject = Compact(*store_, parent).front() == '{';
    const bool wasThere = store_->HasKey(key.c_str(), parent);
    if (isText) {
      const std::string text = NextText();
      store_->SetString(key.c_str(), text.c_str(), parent);
      const char* const read = store_->GetString(key.c_str(), parent);
      Require(read == (isObject ? text : std::string()));
      Require(store_->GetInt(key.c_str(), parent) == 0);
      Keep(read);
    } else {
      const int32_t number = Next() << 24 | Next();
      store_->SetInt(key.c_str(), number, parent);
      Require(store_->GetInt(key.c_str(), parent) == (isObject ? number : 0));
    }
    Require(store_->HasKey(key.c_str(), parent) == isObject);
    if (!wasThere) FindMembersAgain(parent);
  }

  void Read() {
    size_t index = 0;
    Value* const parent = Chosen(index);
    const std::string key = NextKey();
    Value* const value = store_->GetValue(key.c_str(), parent);
    Keep(store_->GetString(key.c_str(), parent));
    Require(store_->GetString(key.c_str(), parent) == std::string(store_->GetValueString(value)));
    Require(store_->GetInt(key.c_str(), parent) == store_->GetValueInt(value));
    store_->GetIntTriple(key.c_str(), parent);
    if (store_->HasKey(key.c_str(), parent)) return;
    // The null value that stands for all that is missing takes nothing.
    store_->SetString("a", "b", value);
    Require(Compact(*store_, value) == "null");
  }

  // The document comes back as it was. Doubles are rounded by the first save and by no other one.
  void SaveAndLoad() {
    store_->Save();
    const std::string before = Compact(*store_, store_->GetRootValue());
    Open();
    Require(store_->IsLoaded());
    const std::string once = Compact(*store_, store_->GetRootValue());
    Require(once.size() <= before.size());
    store_->Save();
    Open();
    Require(once == Compact(*store_, store_->GetRootValue()));
  }

  void Release() {
    CheckTexts();
    texts_.clear();
    store_->ReleaseDocument();
    nodes_ = {{store_->GetRootValue()}};
    store_->SetString("a", "b", nullptr);
    Require(!store_->HasKey("a", nullptr) && Compact(*store_, nodes_[0].value) == "null");
    store_->Save();
    Open();
  }

  void Step() {
    switch (Next() % 8) {
      case 0:
      case 1:
        return Descend();
      case 2:
      case 3:
        return Set(true);
      case 4:
        return Set(false);
      case 5:
        return Read();
      case 6:
        return CheckTexts();
      default:
        const uint8_t rare = Next();
        if (rare % 4 == 0) SaveAndLoad();
        if (rare % 16 == 1) Release();
    }
  }

  const uint8_t* bytes_;
  size_t left_;
  std::unique_ptr<Store> store_;
  std::vector<Node> nodes_;
  std::vector<std::pair<const char*, std::string>> texts_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const uint8_t* const end = std::find(data, data + size, 0);
  const std::string text(data, end);
  CompareWithRecursiveParser(text.c_str());
  std::ofstream(FilePath(), std::ios::binary) << text;
  const uint8_t* const operations = end == data + size ? end : end + 1;
  Editor(operations, static_cast<size_t>(data + size - operations)).Run();
  return 0;
}
