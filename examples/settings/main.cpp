// Reads, changes and walks a settings file.
//
// Save writes straight into the file, so a host that cares keeps two promises of its own, as here:
// the last good file is kept beside the new one as FILE.last, and a file that exists but cannot be
// read as settings is set aside under a name that is printed, never overwritten.
#include <temvar/handles.h>

#include <charconv>
#include <cstdio>
#include <string>
#include <vector>

#include "support/terminal.h"

namespace {

using Value = TMVUserDefaults::Value;

constexpr char kStore[] = "settings";
constexpr char kUsage[] =
    "usage: settings FILE              prints every member\n"
    "       settings FILE KEY          prints one member\n"
    "       settings FILE KEY VALUE    changes it and saves; a whole number is stored as a number\n"
    "       settings --help            prints this text\n"
    "Exit status: 0 done, 1 not set or not saved, 2 wrong usage.\n";

// Moves a file that did not load to the first free name of FILE.damaged, FILE.damaged2, ... A move
// fails on a taken name, so nobody's file is lost even if two programs do this at once.
bool SetAside(const std::string& path) {
  if (TmvUtilityFile()->IsDirectory(path.c_str())) {
    std::printf("%s is a folder\n", path.c_str());
    return false;
  }
  for (int number = 1; number < 100; ++number) {
    const std::string aside = path + ".damaged" + (number > 1 ? std::to_string(number) : "");
    if (!TmvUtilityFile()->PathExists(aside.c_str()) &&
        TmvUtilityFile()->MoveFileTo(path.c_str(), aside.c_str())) {
      std::printf("%s is not a settings file; kept as %s\n", path.c_str(), aside.c_str());
      return true;
    }
  }
  std::printf("%s is not a settings file, and it cannot be moved\n", path.c_str());
  return false;
}

// Opens the store, or starts an empty one where there is no file yet.
TMVUserDefaults* Open(const std::string& path) {
  if (!InitUserDefaults(kStore, path.c_str()) && TmvUtilityFile()->PathExists(path.c_str()) &&
      !SetAside(path)) {
    return nullptr;
  }
  return GetUserDefaults(kStore);
}

// Saves, and finds out whether it worked: Save itself has no result.
bool Save(TMVUserDefaults* store) {
  const std::string path = store->GetFilePath();
  const std::string last = path + ".last";
  TMVUtilityFile* files = TmvUtilityFile();
  const bool hasLast = files->PathExists(path.c_str());
  if (hasLast && !files->CopyFileTo(path.c_str(), last.c_str())) {
    std::printf("cannot keep a copy of %s; nothing is changed\n", path.c_str());
    return false;
  }
  store->Save();
  const tmv::Text wanted(store->StringifyValue(store->GetRootValue()));
  const bool readable = InitUserDefaults("written", path.c_str());
  TMVUserDefaults* written = GetUserDefaults("written");
  const tmv::Text found(written->StringifyValue(written->GetRootValue()));
  written->ReleaseDocument();
  if (readable && wanted.View() == found.View()) return true;
  std::printf("%s could not be written\n", path.c_str());
  if (hasLast) std::printf("the last good settings are in %s\n", last.c_str());
  return false;
}

void Print(TMVUserDefaults* store, const char* name, Value* value) {
  const tmv::Text text(store->StringifyValue(value));
  std::printf("%s = %s\n", name, text.c_str());
}

void PrintAll(TMVUserDefaults* store) {
  Value* root = store->GetRootValue();
  TMVUserDefaults::Member* end = store->GetMemberEnd(root);
  for (auto* member = store->GetMemberBegin(root); member != end;
       member = store->AdvanceMember(member, 1)) {
    Print(store, store->GetValueString(store->GetMemberName(member)),
          store->GetMemberValue(member));
  }
}

void Change(TMVUserDefaults* store, const char* key, const std::string& text) {
  int32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc() && stop == end) {
    store->SetInt(key, number, nullptr);
  } else {
    store->SetString(key, text.c_str(), nullptr);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments = support::Utf8Arguments(argc, argv);
  const size_t count = arguments.size();
  if (count < 1 || count > 3 || arguments[0] == "--help") {
    std::fputs(kUsage, stdout);
    return count == 1 ? 0 : 2;
  }
  TMVUserDefaults* const store = Open(arguments[0]);
  if (store == nullptr) return 1;
  if (count == 1) {
    PrintAll(store);
    return 0;
  }
  const std::string& key = arguments[1];
  if (count == 3) {
    Change(store, key.c_str(), arguments[2]);
    return Save(store) ? 0 : 1;
  }
  if (!store->HasKey(key.c_str(), nullptr)) {
    std::printf("%s is not set\n", key.c_str());
    return 1;
  }
  Print(store, key.c_str(), store->GetValue(key.c_str(), nullptr));
  return 0;
}
