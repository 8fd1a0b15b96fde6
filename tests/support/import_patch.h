// Functions of the test in place of those that a loaded DLL calls. Windows alone: elsewhere a
// function of the program comes before one of a library.
#ifndef TESTS_SUPPORT_IMPORT_PATCH_H_
#define TESTS_SUPPORT_IMPORT_PATCH_H_

#include <windows.h>

#include <cstring>

namespace test {

// Lets the DLL `module` call `replacement` where it imports `name`, by any of the DLLs it imports
// from. Returns the function that it called before, or null, with nothing done, if it imports no
// such function. Calls by way of GetProcAddress are not met.
//
//   realMalloc = PatchImport("libTemvar.dll", "malloc", FailingMalloc);
template <typename Function>
Function* PatchImport(const char* module, const char* name, Function* replacement) {
  auto* const base = reinterpret_cast<char*>(GetModuleHandleA(module));
  if (base == nullptr) return nullptr;
  const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY& table =
      headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  const auto* import =
      reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + table.VirtualAddress);
  Function* previous = nullptr;
  for (; import->Name != 0; ++import) {
    const auto* names =
        reinterpret_cast<const IMAGE_THUNK_DATA*>(base + import->OriginalFirstThunk);
    auto* slots = reinterpret_cast<IMAGE_THUNK_DATA*>(base + import->FirstThunk);
    for (; names->u1.AddressOfData != 0; ++names, ++slots) {
      if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
      const auto* const entry =
          reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
      if (std::strcmp(reinterpret_cast<const char*>(entry->Name), name) != 0) continue;
      previous = reinterpret_cast<Function*>(slots->u1.Function);
      DWORD protection = 0;
      VirtualProtect(slots, sizeof(*slots), PAGE_READWRITE, &protection);
      slots->u1.Function = reinterpret_cast<ULONG_PTR>(replacement);
      VirtualProtect(slots, sizeof(*slots), protection, &protection);
    }
  }
  return previous;
}

}  // namespace test

#endif  // TESTS_SUPPORT_IMPORT_PATCH_H_
