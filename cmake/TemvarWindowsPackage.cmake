# What the package for Windows holds beside library and headers: the runtime libraries, a readme for
# the host's author, the names of the exports for other linkers, and the licences.
install(FILES ${TEMVAR_RUNTIME_DLLS} DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime)
install(FILES "${PROJECT_SOURCE_DIR}/docs/windows-package.md"
  DESTINATION . RENAME README.md COMPONENT development)

# temvar_import_library(DLL NAMES): DLL.def from the names of its exports, for linkers that read such
# files, and DLL.lib from that, which Visual C++ links. Only LLVM's tool makes libraries for all
# linkers of that family; without it the .def file has to do.
find_program(TEMVAR_LLVM_DLLTOOL NAMES llvm-dlltool llvm-dlltool-19 llvm-dlltool-14
  NO_CMAKE_FIND_ROOT_PATH DOC "LLVM's dlltool, for import libraries of Visual C++")
set(TEMVAR_LLVM_MACHINE i386)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(TEMVAR_LLVM_MACHINE i386:x86-64)
endif()
function(temvar_import_library dll names)
  set(folder "${PROJECT_BINARY_DIR}/import")
  list(JOIN names "\n  " names)
  file(WRITE "${folder}/${dll}.def" "LIBRARY ${dll}.dll\nEXPORTS\n  ${names}\n")
  install(FILES "${folder}/${dll}.def"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)
  if(TEMVAR_LLVM_DLLTOOL)
    execute_process(COMMAND "${TEMVAR_LLVM_DLLTOOL}" -m "${TEMVAR_LLVM_MACHINE}"
      -d "${folder}/${dll}.def" -l "${folder}/${dll}.lib" COMMAND_ERROR_IS_FATAL ANY)
    install(FILES "${folder}/${dll}.lib"
      DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)
  endif()
endfunction()

file(STRINGS "${PROJECT_SOURCE_DIR}/cmake/exports.txt" names)
temvar_import_library(libTemvar "${names}")
file(STRINGS "${PROJECT_SOURCE_DIR}/cmake/exports_jobs.txt" names)
temvar_import_library(TemvarJobs "${names}")

# docs/licences.md has every notice but this one, which is longer than all of them together.
find_file(TEMVAR_GPL3_TEXT GPL-3 PATHS /usr/share/common-licenses
  NO_CMAKE_FIND_ROOT_PATH DOC "Text of the licence of the GCC runtime, for packages")
if(TEMVAR_GPL3_TEXT)
  install(FILES "${TEMVAR_GPL3_TEXT}"
    DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs" RENAME gpl-3.0.txt COMPONENT development)
endif()
