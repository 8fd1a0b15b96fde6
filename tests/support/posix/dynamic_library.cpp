#include "support/dynamic_library.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>

namespace test {
namespace {

std::size_t CountEntries(const char* folder) {
  const std::filesystem::directory_iterator entries(folder);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

}  // namespace

DynamicLibrary::DynamicLibrary(const char* file) : handle_(dlopen(file, RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr) ADD_FAILURE() << dlerror();
}

DynamicLibrary::~DynamicLibrary() { EXPECT_EQ(dlclose(handle_), 0); }

DynamicLibrary::AnyFunction DynamicLibrary::Find(const char* name) const {
  void* const function = dlsym(handle_, name);
  EXPECT_NE(function, nullptr) << name;
  return reinterpret_cast<AnyFunction>(function);
}

bool IsLoaded(const char* file) {
  void* const handle = dlopen(file, RTLD_NOW | RTLD_NOLOAD);
  if (handle == nullptr) return false;
  dlclose(handle);
  return true;
}

std::size_t CountThreads() { return CountEntries("/proc/self/task"); }
std::size_t CountHandles() { return CountEntries("/proc/self/fd"); }

}  // namespace test
