# What both Windows toolchains share. The including file has set TEMVAR_WINDOWS_ARCH.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${TEMVAR_WINDOWS_ARCH})

# The -posix compilers: those of the other thread model have no std::thread.
set(triple ${TEMVAR_WINDOWS_ARCH}-w64-mingw32)
set(CMAKE_C_COMPILER ${triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triple}-g++-posix)
set(CMAKE_RC_COMPILER ${triple}-windres)

# scripts/setup windows fills the folder of the cache.
if(DEFINED ENV{TEMVAR_CACHE})
  set(cache "$ENV{TEMVAR_CACHE}")
elseif(DEFINED ENV{XDG_CACHE_HOME})
  set(cache "$ENV{XDG_CACHE_HOME}/temvar")
else()
  set(cache "$ENV{HOME}/.cache/temvar")
endif()
set(CMAKE_FIND_ROOT_PATH "${cache}/${triple}" "/usr/${triple}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# zlib goes into libTemvar.dll: one file less to ship, and no clash with a host's own zlib1.dll.
set(ZLIB_USE_STATIC_LIBS ON)

# CTest and custom commands start programs of this target under Wine, in a prefix of the build.
set(CMAKE_CROSSCOMPILING_EMULATOR
  "${CMAKE_CURRENT_LIST_DIR}/../../scripts/wine-run;${TEMVAR_WINDOWS_ARCH};${CMAKE_BINARY_DIR}/wine")
