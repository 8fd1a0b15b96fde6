# 64-bit Windows, built with mingw-w64: the toolchain of the preset windows-x86_64.
set(TEMVAR_WINDOWS_ARCH x86_64)
include("${CMAKE_CURRENT_LIST_DIR}/windows-mingw.cmake")
