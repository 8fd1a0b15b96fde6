# What both Windows toolchains share. The including file has set TEMVAR_WINDOWS_ARCH.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${TEMVAR_WINDOWS_ARCH})

# Debian has compilers of two thread models, and only those called -posix have std::thread. Other
# systems have one of that model, without the ending.
set(triple ${TEMVAR_WINDOWS_ARCH}-w64-mingw32)
set(model -posix)
find_program(TEMVAR_POSIX_COMPILER "${triple}-g++-posix")
if(NOT TEMVAR_POSIX_COMPILER)
  set(model "")
endif()
set(CMAKE_C_COMPILER ${triple}-gcc${model})
set(CMAKE_CXX_COMPILER ${triple}-g++${model})
set(CMAKE_RC_COMPILER ${triple}-windres)

# scripts/setup windows fills the folder of the cache.
if(DEFINED ENV{TEMVAR_CACHE})
  set(cache "$ENV{TEMVAR_CACHE}")
elseif(DEFINED ENV{XDG_CACHE_HOME})
  set(cache "$ENV{XDG_CACHE_HOME}/temvar")
else()
  set(cache "$ENV{HOME}/.cache/temvar")
endif()
set(CMAKE_FIND_ROOT_PATH "${cache}/${triple}" "/usr/${triple}" "/usr/${triple}/sys-root/mingw")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# CTest and custom commands start programs of this target under Wine, in a prefix of the build.
set(CMAKE_CROSSCOMPILING_EMULATOR
  "${CMAKE_CURRENT_LIST_DIR}/../../scripts/wine-run;${TEMVAR_WINDOWS_ARCH};${CMAKE_BINARY_DIR}/wine")
