// The exports that crash_child calls, from a library that it loads itself as a plug-in does:
// nothing of it is there before main, its thread-locals are not in the program's own block, and it
// may be unloaded.
#include <temvar/temvar.h>

#include "crash/faults.h"
#include "support/child_process.h"
#include "support/dynamic_library.h"

namespace {

void* library = nullptr;

template <typename Function>
Function* Find(Function*, const char* name) {
  if (library == nullptr) {
    library = test::Load((test::ProgramFolder() / TEMVAR_LIBRARY_NAME).string().c_str());
  }
  return reinterpret_cast<Function*>(test::Find(library, name));
}

}  // namespace

#define TEST_FORWARD(name) Find(&name, #name)

TMVDbgReport* CreateTmvDbgReport() { return TEST_FORWARD(CreateTmvDbgReport)(); }
void DestroyTmvDbgReport(TMVDbgReport* report) { TEST_FORWARD(DestroyTmvDbgReport)(report); }
void SetExitProgram(bool* flag) { TEST_FORWARD(SetExitProgram)(flag); }
TMVUtilityString* TmvUtilityString() { return TEST_FORWARD(TmvUtilityString)(); }
RkTaskPool* TmvTaskPool() { return TEST_FORWARD(TmvTaskPool)(); }
RkTaskFunc* CreateRkTaskFunc() { return TEST_FORWARD(CreateRkTaskFunc)(); }

void UnloadLibrary() {
  for (int i = 0; i < 5; ++i) test::Unload(library);
}
