# What the package for Windows holds beside library and headers: the runtime libraries, a readme for
# the host's author, the names of the exports for other linkers, and the licences.
install(FILES ${TEMVAR_RUNTIME_DLLS} DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(FILES "${PROJECT_SOURCE_DIR}/docs/windows-package.md" DESTINATION . RENAME README.md)
install(FILES "${PROJECT_SOURCE_DIR}/docs/which-build.md" DESTINATION "${CMAKE_INSTALL_DOCDIR}")

file(STRINGS "${PROJECT_SOURCE_DIR}/cmake/exports.txt" names)
list(JOIN names "\n  " names)
file(WRITE "${PROJECT_BINARY_DIR}/libTemvar.def" "LIBRARY libTemvar.dll\nEXPORTS\n  ${names}\n")
install(FILES "${PROJECT_BINARY_DIR}/libTemvar.def" DESTINATION "${CMAKE_INSTALL_LIBDIR}")

# docs/licences.md has every notice but this one, which is longer than all of them together.
find_file(TEMVAR_GPL3_TEXT GPL-3 PATHS /usr/share/common-licenses
  NO_CMAKE_FIND_ROOT_PATH DOC "Text of the licence of the GCC runtime, for packages")
if(TEMVAR_GPL3_TEXT)
  install(FILES "${TEMVAR_GPL3_TEXT}" DESTINATION "${CMAKE_INSTALL_DOCDIR}" RENAME gpl-3.0.txt)
endif()
