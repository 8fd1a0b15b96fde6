// A host that knows the headers and a path: it loads the library at run time, resolves every export
// by its name, runs a task, and unloads the library again.
//   consumer_dlopen LIBRARY EXPORT...
#include <temvar/temvar.h>

#include <cstdio>
#include <future>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace {

#if defined(_WIN32)
void* Load(const char* path) { return LoadLibraryA(path); }
void* Resolve(void* library, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

bool Unload(void* library) { return FreeLibrary(static_cast<HMODULE>(library)) != 0; }
#else
void* Load(const char* path) { return dlopen(path, RTLD_NOW | RTLD_LOCAL); }
void* Resolve(void* library, const char* name) { return dlsym(library, name); }
bool Unload(void* library) { return dlclose(library) == 0; }
#endif

std::promise<void> hasRun;

void Run(RkTask* task, RkTaskData*) {
  task->ReportState(task, kTaskStateSucceeded);
  hasRun.set_value();
}

template <typename Function>
Function* Import(void* library, const char* name) {
  return reinterpret_cast<Function*>(Resolve(library, name));
}

#define TMV_IMPORT(library, name) Import<decltype(name)>(library, #name)

}  // namespace

int main(int count, char** arguments) {
  void* library = count > 1 ? Load(arguments[1]) : nullptr;
  if (!library) {
    std::printf("cannot load the library\n");
    return 1;
  }
  for (int i = 2; i < count; ++i) {
    if (!Resolve(library, arguments[i])) {
      std::printf("missing export %s\n", arguments[i]);
      return 1;
    }
  }

  RkTaskPool* pool = TMV_IMPORT(library, TmvTaskPool)();
  RkTaskFunc* func = TMV_IMPORT(library, CreateRkTaskFunc)();
  func->SetCallback(Run, nullptr);
  pool->AddFunc(func);
  TMV_IMPORT(library, DestroyRkTaskFunc)(func);
  pool->Start(1);
  hasRun.get_future().wait();
  pool->Stop();

  const bool unloaded = Unload(library);
  std::printf("exports %d, unloaded %d\n", count - 2, unloaded);
  return unloaded ? 0 : 1;
}
