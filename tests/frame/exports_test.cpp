// The table of exports, read from the library file as it was built.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "support/module_tables.h"

namespace {

using testing::ElementsAreArray;

std::vector<std::string> TableOfExports() {
  std::ifstream in(TEMVAR_EXPORTS_FILE);
  std::vector<std::string> names;
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    names.push_back(line);
  }
  return names;
}

TEST(Exports, TheLibraryHasThoseOfTheTableAndNoOther) {
  const auto table = TableOfExports();
  ASSERT_EQ(table.size(), 33u);
  ASSERT_TRUE(std::is_sorted(table.begin(), table.end()));

  const auto exports = temvar::test::ReadModuleTables(TEMVAR_LIBRARY_FILE).exports;
  EXPECT_THAT(exports, ElementsAreArray(table));
}

}  // namespace
