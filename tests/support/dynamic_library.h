#ifndef TEMVAR_TESTS_SUPPORT_DYNAMIC_LIBRARY_H_
#define TEMVAR_TESTS_SUPPORT_DYNAMIC_LIBRARY_H_

#include <cstddef>

// Loading a library by hand, and what a process holds of the system: written twice, in posix/ and
// windows/.
namespace test {

// A library that is loaded for the life of the object. The constructor fails the test that calls it
// if the file can't be loaded.
class DynamicLibrary {
 public:
  explicit DynamicLibrary(const char* file);
  ~DynamicLibrary();
  DynamicLibrary(const DynamicLibrary&) = delete;
  DynamicLibrary& operator=(const DynamicLibrary&) = delete;

  // The exported function of this name; fails the test if there is none.
  template <typename Function>
  Function* Get(const char* name) const {
    return reinterpret_cast<Function*>(Find(name));
  }

 private:
  using AnyFunction = void (*)();
  AnyFunction Find(const char* name) const;

  void* handle_;
};

bool IsLoaded(const char* file);

// Threads of this process, and its open handles or file descriptors.
std::size_t CountThreads();
std::size_t CountHandles();

}  // namespace test

#endif  // TEMVAR_TESTS_SUPPORT_DYNAMIC_LIBRARY_H_
