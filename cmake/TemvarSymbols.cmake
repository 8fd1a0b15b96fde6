# temvar_keep_symbols(LIBRARY OBJECTS...): an optimised build of the library carries the lines of its
# sources, so that a crash report of a customer can be read. On Windows they are split off into
# LIBRARY.debug beside the DLL, which names that file in a debug link; LLDB and GDB look for it in the
# folder of the DLL. On Linux the package is split instead, by the identifier of the build.
#
# The lines are DWARF, which LLDB and GDB read. Visual Studio and WinDbg read PDB instead. GNU ld writes
# one (--pdb, from 2.40 on), but only clang writes what has to be in it: mingw's GCC 14.2 of Debian 13
# accepts -gcodeview and leaves the objects without any.

# What the folder of the sources is called in the lines, wherever it was built; where a system keeps
# the sources of packages, debuggers find them by themselves.
set(TEMVAR_SOURCE_FOLDER "/usr/src/libtemvar-${PROJECT_VERSION}")

function(temvar_keep_symbols library)
  foreach(target IN LISTS library ARGN)
    target_compile_options(${target} PRIVATE
      "$<$<CONFIG:Release>:-g;-ffile-prefix-map=${PROJECT_SOURCE_DIR}=${TEMVAR_SOURCE_FOLDER}>")
  endforeach()
  if(NOT WIN32)
    target_link_options(${library} PRIVATE "-Wl,--build-id")
  elseif(CMAKE_BUILD_TYPE STREQUAL "Release")
    set(file "$<TARGET_FILE:${library}>")
    add_custom_command(TARGET ${library} POST_BUILD
      COMMAND "${CMAKE_OBJCOPY}" --only-keep-debug "${file}" "${file}.debug"
      COMMAND "${CMAKE_OBJCOPY}" --strip-unneeded "--add-gnu-debuglink=${file}.debug" "${file}"
      VERBATIM)
    install(FILES "${file}.debug" DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT symbols)
  endif()
endfunction()

# temvar_split_symbols(NAME TARGET FOLDER): the build target NAME puts two files into FOLDER: the
# program or library of TARGET without debug information, as it is shipped, and
# that as FILE.debug, which is kept. The first names the second (debuglink), so debuggers find it
# beside the first. Both have the build identifier that a dump names.
function(temvar_split_symbols name target folder)
  set(shipped "${folder}/$<TARGET_FILE_NAME:${target}>")
  set(stamp "${CMAKE_CURRENT_BINARY_DIR}/${name}.stamp")
  add_custom_command(OUTPUT "${stamp}"
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${folder}"
    COMMAND "${CMAKE_OBJCOPY}" --only-keep-debug "$<TARGET_FILE:${target}>" "${shipped}.debug"
    COMMAND "${CMAKE_OBJCOPY}" --strip-unneeded "--add-gnu-debuglink=${shipped}.debug"
      "$<TARGET_FILE:${target}>" "${shipped}"
    COMMAND "${CMAKE_COMMAND}" -E touch "${stamp}"
    DEPENDS ${target}
    COMMENT "Splitting the symbols off ${target}"
    VERBATIM)
  add_custom_target(${name} DEPENDS "${stamp}")
endfunction()
