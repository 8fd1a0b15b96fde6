# TEMVAR_RUNTIME_DLLS: the libraries of the compiler that a mingw build needs beside its programs,
# stripped. A Windows program finds its libraries in its own folder, so they are copied to the build's,
# and the install and the package carry them. They are shared on purpose: an exception that is thrown
# in libTemvar.dll and caught in the host needs one runtime that both use.
set(TEMVAR_RUNTIME_DLLS "")
if(NOT MINGW)
  return()
endif()

get_filename_component(compiler_folder "${CMAKE_CXX_COMPILER}" DIRECTORY)
foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libgcc_s_dw2-1.dll libwinpthread-1.dll)
  execute_process(
    COMMAND "${CMAKE_CXX_COMPILER}" "-print-file-name=${name}"
    OUTPUT_VARIABLE found OUTPUT_STRIP_TRAILING_WHITESPACE)
  # A compiler on Windows has them beside itself instead.
  if(NOT IS_ABSOLUTE "${found}" OR NOT EXISTS "${found}")
    set(found "${compiler_folder}/${name}")
  endif()
  if(NOT EXISTS "${found}")
    continue()
  endif()
  set(stripped "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name}")
  list(APPEND TEMVAR_RUNTIME_DLLS "${stripped}")
  if("${found}" IS_NEWER_THAN "${stripped}")
    file(MAKE_DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
    execute_process(COMMAND "${CMAKE_STRIP}" --strip-unneeded -o "${stripped}" "${found}"
      COMMAND_ERROR_IS_FATAL ANY)
  endif()
endforeach()
