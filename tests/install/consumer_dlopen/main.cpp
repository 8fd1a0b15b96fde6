// A host that knows the headers and a path: it loads the library at run time, finds every export by
// its name, runs a task, and unloads the library again.
//   consumer_dlopen LIBRARY
#define TEMVAR_LOADED
#include <temvar/handles.h>

#include <cstdio>
#include <future>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace {

#if defined(_WIN32)
void* Open(const char* path) { return LoadLibraryA(path); }
void* Find(void* library, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

bool Close(void* library) { return FreeLibrary(static_cast<HMODULE>(library)) != 0; }
#else
void* Open(const char* path) { return dlopen(path, RTLD_NOW | RTLD_LOCAL); }
void* Find(void* library, const char* name) { return dlsym(library, name); }
bool Close(void* library) { return dlclose(library) == 0; }
#endif

}  // namespace

int main(int count, char** arguments) {
  void* const library = count == 2 ? Open(arguments[1]) : nullptr;
  if (library == nullptr) return 1;
  tmv::Load([library](const char* name) { return Find(library, name); });
  {
    std::promise<void> hasRun;
    const tmv::RunningPool pool(1);
    TmvTaskPool()->AddFunc(tmv::MakeFunc([&hasRun] { hasRun.set_value(); }));
    hasRun.get_future().wait();
  }
  const bool unloaded = Close(library);
  std::printf("unloaded %d\n", unloaded);
  return unloaded ? 0 : 1;
}
