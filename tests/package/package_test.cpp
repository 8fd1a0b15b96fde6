// The package for Windows, unpacked: whether a host finds all that it needs in it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "support/module_tables.h"

namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::IsSubsetOf;

// Part of Windows itself since Windows 7; whatever else is imported must be in the package.
const std::set<std::string> kOfWindows = {
    "advapi32.dll", "dbghelp.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll",
    "rpcrt4.dll",   "shell32.dll", "shlwapi.dll",  "user32.dll",
};

std::string LowerCase(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

class Package : public testing::Test {
 protected:
  void SetUp() override {
    // The archive holds one folder, which bears its name.
    for (const fs::directory_entry& entry : fs::directory_iterator(TEMVAR_UNPACKED)) {
      if (entry.is_directory()) root = entry.path();
    }
    ASSERT_FALSE(root.empty()) << "nothing in " << TEMVAR_UNPACKED;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
      if (entry.is_regular_file()) files.push_back(entry.path());
    }
  }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const fs::path& file : files)
      names.push_back(file.lexically_relative(root).generic_string());
    return names;
  }

  fs::path root;
  std::vector<fs::path> files;
};

TEST_F(Package, HoldsWhatAHostNeeds) {
  const auto names = Names();
  for (const char* name :
       {"README.md", "bin/libTemvar.dll", "lib/libTemvar.dll.a", "lib/libTemvar.def",
        "include/temvar/temvar.h", "lib/cmake/Temvar/TemvarConfig.cmake",
        "lib/cmake/Temvar/TemvarTargets.cmake", "lib/pkgconfig/temvar.pc"}) {
    EXPECT_THAT(names, Contains(name));
  }
  for (const char* name : {"LICENSE", "licences.md", "which-build.md", "gpl-3.0.txt"}) {
    EXPECT_THAT(names, Contains(testing::EndsWith(std::string("/") + name)));
  }
  // Each public header, and nothing that the project keeps to itself.
  for (const fs::directory_entry& header :
       fs::directory_iterator(fs::path(TEMVAR_SOURCE_FOLDER) / "include" / "temvar")) {
    EXPECT_THAT(names, Contains("include/temvar/" + header.path().filename().generic_string()));
  }
}

TEST_F(Package, EveryImportIsInItOrInWindows) {
  std::set<std::string> available = kOfWindows;
  for (const fs::path& file : files) available.insert(LowerCase(file.filename().string()));

  int modules = 0;
  for (const fs::path& file : files) {
    const std::string extension = LowerCase(file.extension().string());
    if (extension != ".dll" && extension != ".exe") continue;
    ++modules;
    const auto tables = temvar::test::ReadModuleTables(file);
    EXPECT_EQ(tables.bits, static_cast<int>(sizeof(void*) * 8)) << file;
    std::vector<std::string> imports;
    for (const std::string& name : tables.imports) imports.push_back(LowerCase(name));
    EXPECT_THAT(imports, Contains("kernel32.dll")) << file;
    EXPECT_THAT(imports, IsSubsetOf(available)) << file;
  }
  EXPECT_EQ(modules, 4) << "libTemvar.dll and three libraries of the compiler";
}

// A library that is stripped too far, or not the one that the build tests, would show here.
TEST_F(Package, ItsLibraryHasTheExportsOfTheBuild) {
  const auto packed = temvar::test::ReadModuleTables(root / "bin" / "libTemvar.dll");
  const auto built = temvar::test::ReadModuleTables(TEMVAR_LIBRARY_FILE);
  EXPECT_EQ(packed.exports, built.exports);
  EXPECT_EQ(packed.imports, built.imports);

  std::ifstream def(root / "lib" / "libTemvar.def");
  std::set<std::string> listed;
  for (std::string word; def >> word;) listed.insert(word);
  EXPECT_THAT(packed.exports, IsSubsetOf(listed));
}

}  // namespace
