#ifndef TEMVAR_SETTINGS_USER_DEFAULTS_IMPL_H_
#define TEMVAR_SETTINGS_USER_DEFAULTS_IMPL_H_

#include <memory>
#include <string>

#include "settings/rapidjson.h"
#include "temvar/user_defaults.h"

namespace temvar {

class TMVUserDefaultsImpl final : public TMVUserDefaults {
 public:
  // Loads the file at `path`; the document is empty if that fails.
  TMVUserDefaultsImpl(std::string name, std::string path);

  void SetString(const char* key, const char* value, Value* parent) override;
  void SetInt(const char* key, int32_t value, Value* parent) override;
  bool HasKey(const char* key, Value* parent) override;
  const char* GetString(const char* key, Value* parent) override;
  int32_t GetInt(const char* key, Value* parent) override;
  IntTriple GetIntTriple(const char* key, Value* parent) override;
  void Save() override;
  bool IsLoaded() override;
  const char* GetFilePath() override;
  void ReleaseDocument() override;
  Value* GetValue(const char* key, Value* parent) override;
  Value* GetRootValue() override;
  uint32_t GetArraySize(Value* value) override;
  Value* GetArrayElement(Value* value, uint32_t index) override;
  Member* GetMemberBegin(Value* value) override;
  Member* GetMemberEnd(Value* value) override;
  Member* AdvanceMember(Member* member, uint32_t count) override;
  Value* GetMemberName(Member* member) override;
  Value* GetMemberValue(Member* member) override;
  const char* GetValueString(Value* value) override;
  int32_t GetValueInt(Value* value) override;
  char* StringifyValue(Value* value) override;

 private:
  // `parent`, or the root if that is null; null if it is no object.
  JsonValue* ObjectOf(Value* parent);
  // The member's value; null if there is none.
  JsonValue* Find(const char* key, Value* parent);
  void SetMember(const char* key, JsonValue& value, JsonValue& object);

  const std::string name_;
  const std::string path_;
  std::unique_ptr<JsonDocument> document_;  // null after ReleaseDocument
  bool loaded_ = false;
};

}  // namespace temvar

#endif  // TEMVAR_SETTINGS_USER_DEFAULTS_IMPL_H_
