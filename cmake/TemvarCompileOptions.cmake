# temvar_compile_options: the interface target whose warnings and sanitizers every target of the
# project is built with. Never exported: a host picks its own flags.
add_library(temvar_compile_options INTERFACE)

target_compile_options(temvar_compile_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
  -Wcast-align -Wcast-qual -Wformat=2 -Wimplicit-fallthrough -Wundef)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(temvar_compile_options INTERFACE
    -Wduplicated-cond -Wlogical-op)
  if(CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # Wrong in GCC 12 for a literal that is put before a std::string (GCC bug 105651).
    target_compile_options(temvar_compile_options INTERFACE -Wno-restrict)
  endif()
elseif(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  target_compile_options(temvar_compile_options INTERFACE -Wthread-safety)
endif()
# 32-bit x86: doubles are computed in SSE registers, so that results are those of 64-bit builds and
# the same on each thread; x87 registers round later and differently. Hosts may call in with a stack
# that is aligned to 4 bytes only, as 32-bit Windows allows: functions that spill SSE registers align
# it themselves.
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND NOT MSVC AND CMAKE_SYSTEM_PROCESSOR MATCHES "86|AMD64")
  target_compile_options(temvar_compile_options INTERFACE -msse2 -mfpmath=sse -mstackrealign)
endif()
if(TEMVAR_WERROR)
  target_compile_options(temvar_compile_options INTERFACE -Werror)
endif()

if(TEMVAR_SANITIZE)
  target_compile_options(temvar_compile_options INTERFACE
    -fsanitize=${TEMVAR_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(temvar_compile_options INTERFACE -fsanitize=${TEMVAR_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # Wrong in GCC 12 for std::regex under AddressSanitizer (GCC bug 105562).
    target_compile_options(temvar_compile_options INTERFACE -Wno-maybe-uninitialized)
  endif()
endif()
