# 32-bit Windows, built with mingw-w64: the toolchain of the preset windows-i686.
set(TEMVAR_WINDOWS_ARCH i686)
include("${CMAKE_CURRENT_LIST_DIR}/windows-mingw.cmake")
