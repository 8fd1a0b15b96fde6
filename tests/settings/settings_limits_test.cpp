// What is left when the memory is full.
#include <sys/resource.h>

#include <fstream>
#include <new>
#include <string>

#include "support/settings_store.h"

namespace {

using namespace test;
using SettingsLimits = SettingsTest;
TEMVAR_IN_A_PLAIN_PLACE(SettingsLimits);

void SetLimit(int resource, rlim_t value) {
  rlimit limit = {};
  ASSERT_EQ(getrlimit(static_cast<__rlimit_resource>(resource), &limit), 0);
  limit.rlim_cur = value;
  ASSERT_EQ(setrlimit(static_cast<__rlimit_resource>(resource), &limit), 0);
}

// Pages that the process uses, in bytes.
size_t AddressSpace() {
  size_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * 4096;
}

TEST_P(SettingsLimits, StaysWholeWhenMemoryIsShort) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizers need the address space that this test takes away";
#endif
  std::string text = "{\"0\":0";
  for (int i = 1; i < 300000; ++i) text.append(",\"").append(std::to_string(i)).append("\":0");
  TMVUserDefaults* store = Load(text + "}");
  const std::string longText(50 << 20, 'x');

  // The array of members is full: the next one needs a larger array, for which there is no room.
  SetLimit(RLIMIT_AS, AddressSpace() + (4 << 20));
  EXPECT_THROW(store->SetInt("new", 1, nullptr), std::bad_alloc);
  EXPECT_THROW(store->SetInt("new", 1, nullptr), std::bad_alloc);
  EXPECT_THROW(store->SetString("1", longText.c_str(), nullptr), std::bad_alloc);
  EXPECT_NO_THROW(store->Save());
  EXPECT_THROW(store->StringifyValue(store->GetRootValue()), std::bad_alloc);
  EXPECT_THROW(InitUserDefaults("other", Path(kFile).c_str()), std::bad_alloc);
  SetLimit(RLIMIT_AS, RLIM_INFINITY);

  EXPECT_EQ(GetUserDefaults("other"), nullptr);
  EXPECT_TRUE(Compact(store) == text + "}");
  for (int i = 0; i < 100; ++i) store->SetInt(("new" + std::to_string(i)).c_str(), i, nullptr);
  EXPECT_EQ(store->GetInt("new99", nullptr), 99);
  EXPECT_EQ(store->GetInt("299999", nullptr), 0);
  EXPECT_TRUE(GetFile(kFile) == text + "}");
}

}  // namespace
