// A settings store over a file of the test's own.
#ifndef TESTS_SUPPORT_SETTINGS_STORE_H_
#define TESTS_SUPPORT_SETTINGS_STORE_H_

#include "support/take.h"
#include "support/work_folder.h"
#include "temvar/temvar.h"

namespace test {

class SettingsTest : public WorkFolderTest {
 protected:
  static constexpr char kFile[] = "settings.json";

  // A new store of that file, registered as "test".
  TMVUserDefaults* Load() {
    const bool loaded = InitUserDefaults("test", Path(kFile).c_str());
    TMVUserDefaults* store = GetUserDefaults("test");
    EXPECT_EQ(store->IsLoaded(), loaded);
    return store;
  }

  // The same with this text in the file.
  TMVUserDefaults* Load(std::string_view text) {
    PutFile(kFile, text);
    return Load();
  }

  // What the store writes to the file.
  std::string Saved(TMVUserDefaults* store) {
    store->Save();
    return GetFile(kFile);
  }

  static std::string Compact(TMVUserDefaults* store, TMVUserDefaults::Value* value) {
    return Take(store->StringifyValue(value));
  }

  static std::string Compact(TMVUserDefaults* store) {
    return Compact(store, store->GetRootValue());
  }
};

}  // namespace test

#endif  // TESTS_SUPPORT_SETTINGS_STORE_H_
