#ifndef TEMVAR_LOAD_H_
#define TEMVAR_LOAD_H_

// The C++ layer over a library that is loaded at run time. Compile the host with TEMVAR_LOADED
// defined and without linking the library: every export then is a small inline function that calls
// what tmv::Load has found.
//
//   void* library = dlopen(path, RTLD_NOW);   // LoadLibraryW on Windows.
//   tmv::Load([library](const char* name) { return dlsym(library, name); });
//   ...                                       // All of temvar/handles.h, job.h and the others.
//   dlclose(library);                         // After the pool has stopped and all handles are
//   gone.
//
// Each program or DLL that is compiled so has one table of its own.

#if !defined(TEMVAR_LOADED)
#error "define TEMVAR_LOADED for the whole host, so that the exports are not linked"
#endif

#include <stdexcept>
#include <string>

#include "temvar/temvar.h"

namespace tmv {
namespace detail {

#define TMV_FOR_EACH_EXPORT(export_)                                                               \
  export_(CreateRkTask) export_(CreateRkTaskData) export_(CreateRkTaskEvent)                       \
      export_(CreateRkTaskFunc) export_(CreateRkTaskPackage) export_(CreateRkTaskThread)           \
          export_(CreateTmvAndroidManifest) export_(CreateTmvDbgReport)                            \
              export_(CreateTmvUtilityZip) export_(DestroyRkTask) export_(DestroyRkTaskData)       \
                  export_(DestroyRkTaskFunc) export_(DestroyRkTaskThread)                          \
                      export_(DestroyTmvAndroidManifest) export_(DestroyTmvDbgReport)              \
                          export_(DestroyTmvUtilityZip) export_(DuplicateRkTask)                   \
                              export_(DuplicateRkTaskData) export_(DuplicateRkTaskFunc)            \
                                  export_(FreeBinayDataResult) export_(GetUserDefaults)            \
                                      export_(InitStandardUserDefaults) export_(InitUserDefaults)  \
                                          export_(SetExitProgram) export_(StandardUserDefaults)    \
                                              export_(TmvLock) export_(TmvTaskPool)                \
                                                  export_(TmvTaskSchedular) export_(TmvUtilityApp) \
                                                      export_(TmvUtilityFile)                      \
                                                          export_(TmvUtilityString)                \
                                                              export_(TmvUtilitySys)               \
                                                                  export_(TmvUtilityUnzip)

// The exports as they were found; null before Load.
struct ExportTable {
#define TMV_MEMBER(name) decltype(&::name) name = nullptr;
  TMV_FOR_EACH_EXPORT(TMV_MEMBER)
#undef TMV_MEMBER
};
inline ExportTable exportTable;

template <typename Function>
Function Loaded(Function function) {
  if (function == nullptr) throw std::logic_error("temvar: tmv::Load has not been called");
  return function;
}

}  // namespace detail

// Finds every export by `resolve`, of the form void*(const char* name), before anything else of the
// library is used. Throws std::runtime_error with the name of one that is missing, and changes
// nothing then. A second call replaces the table. Not while other threads use the library.
template <typename Resolve>
void Load(Resolve&& resolve) {
  detail::ExportTable table;
#define TMV_RESOLVE(name)                                              \
  table.name = reinterpret_cast<decltype(table.name)>(resolve(#name)); \
  if (table.name == nullptr) throw std::runtime_error("temvar: no export named " #name);
  TMV_FOR_EACH_EXPORT(TMV_RESOLVE)
#undef TMV_RESOLVE
  detail::exportTable = table;
}

}  // namespace tmv

// The exports, as the other headers declare them.
inline RkTask* CreateRkTask() {
  return tmv::detail::Loaded(tmv::detail::exportTable.CreateRkTask)();
}
inline RkTaskData* CreateRkTaskData() {
  return tmv::detail::Loaded(tmv::detail::exportTable.CreateRkTaskData)();
}
inline RkTaskEvent* CreateRkTaskEvent() {
  return tmv::detail::Loaded(tmv::detail::exportTable.CreateRkTaskEvent)();
}
inline RkTaskFunc* CreateRkTaskFunc() {
  return tmv::detail::Loaded(tmv::detail::exportTable.CreateRkTaskFunc)();
}
inline RkTaskPackage* CreateRkTaskPackage() {
  return tmv::detail::Loaded(tmv::detail::exportTable.CreateRkTaskPackage)();
}
inline RkTaskThread* CreateRkTaskThread() {
  return tmv::detail::Loaded(tmv::detail::exportTable.CreateRkTaskThread)();
}
inline TMVAndroidManifest* CreateTmvAndroidManifest() {
  return tmv::detail::Loaded(tmv::detail::exportTable.CreateTmvAndroidManifest)();
}
inline TMVDbgReport* CreateTmvDbgReport() {
  return tmv::detail::Loaded(tmv::detail::exportTable.CreateTmvDbgReport)();
}
inline TMVUtilityZip* CreateTmvUtilityZip() {
  return tmv::detail::Loaded(tmv::detail::exportTable.CreateTmvUtilityZip)();
}
inline void DestroyRkTask(RkTask* task) {
  return tmv::detail::Loaded(tmv::detail::exportTable.DestroyRkTask)(task);
}
inline void DestroyRkTaskData(RkTaskData* data) {
  return tmv::detail::Loaded(tmv::detail::exportTable.DestroyRkTaskData)(data);
}
inline void DestroyRkTaskFunc(RkTaskFunc* func) {
  return tmv::detail::Loaded(tmv::detail::exportTable.DestroyRkTaskFunc)(func);
}
inline void DestroyRkTaskThread(RkTaskThread* thread) {
  return tmv::detail::Loaded(tmv::detail::exportTable.DestroyRkTaskThread)(thread);
}
inline void DestroyTmvAndroidManifest(TMVAndroidManifest* manifest) {
  return tmv::detail::Loaded(tmv::detail::exportTable.DestroyTmvAndroidManifest)(manifest);
}
inline void DestroyTmvDbgReport(TMVDbgReport* report) {
  return tmv::detail::Loaded(tmv::detail::exportTable.DestroyTmvDbgReport)(report);
}
inline void DestroyTmvUtilityZip(TMVUtilityZip* zip) {
  return tmv::detail::Loaded(tmv::detail::exportTable.DestroyTmvUtilityZip)(zip);
}
inline RkTask* DuplicateRkTask(RkTask* task) {
  return tmv::detail::Loaded(tmv::detail::exportTable.DuplicateRkTask)(task);
}
inline void DuplicateRkTaskData(RkTaskData* data) {
  return tmv::detail::Loaded(tmv::detail::exportTable.DuplicateRkTaskData)(data);
}
inline void DuplicateRkTaskFunc(RkTaskFunc* func) {
  return tmv::detail::Loaded(tmv::detail::exportTable.DuplicateRkTaskFunc)(func);
}
inline void FreeBinayDataResult(BinaryDataResult* result) {
  return tmv::detail::Loaded(tmv::detail::exportTable.FreeBinayDataResult)(result);
}
inline TMVUserDefaults* GetUserDefaults(const char* name) {
  return tmv::detail::Loaded(tmv::detail::exportTable.GetUserDefaults)(name);
}
inline bool InitStandardUserDefaults(const char* path) {
  return tmv::detail::Loaded(tmv::detail::exportTable.InitStandardUserDefaults)(path);
}
inline bool InitUserDefaults(const char* name, const char* path) {
  return tmv::detail::Loaded(tmv::detail::exportTable.InitUserDefaults)(name, path);
}
inline void SetExitProgram(bool* flag) {
  return tmv::detail::Loaded(tmv::detail::exportTable.SetExitProgram)(flag);
}
inline TMVUserDefaults* StandardUserDefaults() {
  return tmv::detail::Loaded(tmv::detail::exportTable.StandardUserDefaults)();
}
inline TMVLock* TmvLock() { return tmv::detail::Loaded(tmv::detail::exportTable.TmvLock)(); }
inline RkTaskPool* TmvTaskPool() {
  return tmv::detail::Loaded(tmv::detail::exportTable.TmvTaskPool)();
}
inline RkTaskSchedular* TmvTaskSchedular() {
  return tmv::detail::Loaded(tmv::detail::exportTable.TmvTaskSchedular)();
}
inline TMVUtilityApp* TmvUtilityApp() {
  return tmv::detail::Loaded(tmv::detail::exportTable.TmvUtilityApp)();
}
inline TMVUtilityFile* TmvUtilityFile() {
  return tmv::detail::Loaded(tmv::detail::exportTable.TmvUtilityFile)();
}
inline TMVUtilityString* TmvUtilityString() {
  return tmv::detail::Loaded(tmv::detail::exportTable.TmvUtilityString)();
}
inline TMVUtilitySys* TmvUtilitySys() {
  return tmv::detail::Loaded(tmv::detail::exportTable.TmvUtilitySys)();
}
inline TMVUtilityUnzip* TmvUtilityUnzip() {
  return tmv::detail::Loaded(tmv::detail::exportTable.TmvUtilityUnzip)();
}

#endif  // TEMVAR_LOAD_H_
