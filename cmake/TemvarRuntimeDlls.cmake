# TEMVAR_RUNTIME_DLLS: the libraries of the compiler that a mingw build needs beside its programs.
# A Windows program finds its libraries in its own folder, so they are copied to the build's, and the
# install and the package carry them. They are shared on purpose: an exception that is thrown in
# libTemvar.dll and caught in the host needs one runtime that both use.
set(TEMVAR_RUNTIME_DLLS "")
if(NOT MINGW)
  return()
endif()

foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libgcc_s_dw2-1.dll libwinpthread-1.dll)
  execute_process(
    COMMAND "${CMAKE_CXX_COMPILER}" "-print-file-name=${name}"
    OUTPUT_VARIABLE found OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(IS_ABSOLUTE "${found}" AND EXISTS "${found}")
    file(REAL_PATH "${found}" found)
    list(APPEND TEMVAR_RUNTIME_DLLS "${found}")
  endif()
endforeach()
file(COPY ${TEMVAR_RUNTIME_DLLS} DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
