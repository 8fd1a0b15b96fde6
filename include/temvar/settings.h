#ifndef TEMVAR_SETTINGS_H_
#define TEMVAR_SETTINGS_H_

// Typed reads of settings with a default, for C++17 hosts; header-only over temvar/user_defaults.h.
//
//   const tmv::Settings settings = tmv::Settings::Open("app", path);
//   const int32_t width = settings.Int("width", 800);
//   for (const tmv::Settings::Item& item : settings.Object("recent").Items()) Show(item.name);
//
// A read returns the default if the member is missing or of another type. Threads and lifetimes are
// those of TMVUserDefaults. What makes text throws std::bad_alloc.

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "temvar/handles.h"

namespace tmv {

class Settings {
 public:
  using Value = TMVUserDefaults::Value;

  // A member of an object, or an element of an array, whose name is empty.
  struct Item {
    std::string name;  // UTF-8.
    Value* value;      // Valid as documented for TMVUserDefaults.
  };

  // The store registered as `name`; if there is none it is made from the file at `path`, which may
  // be missing or damaged: IsLoaded of Store() then says no.
  static Settings Open(const char* name, const char* path) {
    if (GetUserDefaults(name) == nullptr) InitUserDefaults(name, path);
    return Settings(GetUserDefaults(name));
  }

  // The members of an object of the store, by default those of its root.
  explicit Settings(TMVUserDefaults* store, Value* object = nullptr)
      : store_(store), object_(object) {}

  TMVUserDefaults* Store() const { return store_; }

  bool Has(const char* key) const { return store_->HasKey(key, object_); }

  std::string String(const char* key, std::string_view otherwise = {}) const {
    const std::string json = Json(key);
    return !json.empty() && json[0] == '"' ? std::string(store_->GetString(key, object_))
                                           : std::string(otherwise);
  }

  // An integer of 32 bits; a larger one or one with a fraction is of another type.
  int32_t Int(const char* key, int32_t otherwise = 0) const {
    const int32_t number = Number(Json(key), otherwise);
    return number == store_->GetInt(key, object_) ? number : otherwise;  // 2.0 is 2 as JSON, too.
  }

  // true or false; also 1 and 0, which SetBool writes.
  bool Bool(const char* key, bool otherwise = false) const {
    const std::string json = Json(key);
    if (json == "true" || json == "1") return true;
    return json == "false" || json == "0" ? false : otherwise;
  }

  // Any number, to the six digits that the library keeps of a fraction; also a text that is a
  // number, to the last digit, which is what SetDouble writes.
  double Double(const char* key, double otherwise = 0) const {
    const std::string json = Json(key);
    const bool quoted = json.size() > 1 && json[0] == '"';
    return Number(quoted ? std::string_view(json).substr(1, json.size() - 2) : json, otherwise);
  }

  // The object of a member. One without members if there is none.
  Settings Object(const char* key) const {
    return Settings(store_, store_->GetValue(key, object_));
  }

  // The members of this object, or the elements of this array, in their order.
  std::vector<Item> Items() const {
    Value* const value = object_ != nullptr ? object_ : store_->GetRootValue();
    std::vector<Item> items;
    TMVUserDefaults::Member* const end = store_->GetMemberEnd(value);
    for (auto* at = store_->GetMemberBegin(value); at != end; at = store_->AdvanceMember(at, 1)) {
      items.push_back(
          {store_->GetValueString(store_->GetMemberName(at)), store_->GetMemberValue(at)});
    }
    const uint32_t size = store_->GetArraySize(value);
    for (uint32_t i = 0; i < size; ++i) items.push_back({{}, store_->GetArrayElement(value, i)});
    return items;
  }

  // Settings have text and numbers of 32 bits; these use them for what has neither.
  void SetBool(const char* key, bool value) const { store_->SetInt(key, value ? 1 : 0, object_); }
  void SetDouble(const char* key, double value) const {
    char text[32];
    *std::to_chars(text, text + sizeof(text) - 1, value).ptr = '\0';
    store_->SetString(key, text, object_);
  }

 private:
  // The value as JSON; empty if there is none.
  std::string Json(const char* key) const {
    if (!Has(key)) return {};
    return Text(store_->StringifyValue(store_->GetValue(key, object_))).c_str();
  }

  // The number that is the whole of a text.
  template <typename Result>
  static Result Number(std::string_view text, Result otherwise) {
    Result number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && stop != text.data() ? number : otherwise;
  }

  TMVUserDefaults* store_;
  Value* object_;
};

}  // namespace tmv

#endif  // TEMVAR_SETTINGS_H_
