#include <map>
#include <memory>
#include <string>
#include <vector>

#include "settings/user_defaults_impl.h"

namespace temvar {
namespace {

constexpr char kStandardName[] = "UserDefault";

struct Registry {
  std::map<std::string, TMVUserDefaultsImpl*> stores;
  // Stores that a later one of the same name has replaced: hosts may still hold pointers to them,
  // and a list keeps leak checkers quiet.
  std::vector<TMVUserDefaultsImpl*> replaced;
};

// Null until the first initialisation, and never destroyed: stores live to the end of the process.
Registry* registry = nullptr;

bool Init(const char* name, const char* path) {
  if (registry == nullptr) registry = new Registry;
  auto store = std::make_unique<TMVUserDefaultsImpl>(name != nullptr ? name : "",
                                                     path != nullptr ? path : "");
  TMVUserDefaultsImpl*& entry = registry->stores[name != nullptr ? name : ""];
  if (entry != nullptr) registry->replaced.push_back(entry);
  // Also after a failed load: the store replaces an older one of its name in every case.
  entry = store.release();
  return entry->IsLoaded();
}

TMVUserDefaults* Get(const char* name) {
  if (registry == nullptr) return nullptr;
  const auto found = registry->stores.find(name != nullptr ? name : "");
  return found == registry->stores.end() ? nullptr : found->second;
}

}  // namespace
}  // namespace temvar

TMV_API bool InitUserDefaults(const char* name, const char* path) {
  return temvar::Init(name, path);
}

TMV_API TMVUserDefaults* GetUserDefaults(const char* name) { return temvar::Get(name); }

TMV_API bool InitStandardUserDefaults(const char* path) {
  return temvar::Init(temvar::kStandardName, path);
}

TMV_API TMVUserDefaults* StandardUserDefaults() { return temvar::Get(temvar::kStandardName); }
