# Whether a host finds all that it needs in the package for Windows, unpacked in MADE.
cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/../support/module_tables.cmake")

# Part of Windows itself since Windows 7; whatever else is imported must be in the package.
set(available advapi32.dll dbghelp.dll kernel32.dll msvcrt.dll ole32.dll rpcrt4.dll shell32.dll
  shlwapi.dll user32.dll)

# The archive holds one folder, which bears its name.
file(GLOB root LIST_DIRECTORIES true "${MADE}/*")
file(GLOB_RECURSE files RELATIVE "${root}" "${root}/*")

# What a host needs, with each public header.
file(GLOB headers RELATIVE "${SOURCE}" "${SOURCE}/include/temvar/*")
foreach(name IN ITEMS README.md bin/libTemvar.dll lib/libTemvar.dll.a lib/libTemvar.def
    lib/cmake/Temvar/TemvarConfig.cmake lib/cmake/Temvar/TemvarTargets.cmake
    lib/pkgconfig/temvar.pc LISTS headers)
  if(NOT name IN_LIST files)
    message(SEND_ERROR "${name} is missing")
  endif()
endforeach()
foreach(name IN ITEMS LICENSE licences.md which-build.md gpl-3.0.txt)
  if(NOT files MATCHES "/${name}(;|$)")
    message(SEND_ERROR "${name} is missing in every folder")
  endif()
endforeach()

# Every import is in the package or in Windows.
list(FILTER files INCLUDE REGEX "\\.(dll|exe)$")
list(LENGTH files count)
if(NOT count EQUAL 4)
  message(SEND_ERROR "not libTemvar.dll and three libraries of the compiler: ${files}")
endif()
foreach(file IN LISTS files)
  get_filename_component(name "${file}" NAME)
  string(TOLOWER "${name}" name)
  list(APPEND available "${name}")
endforeach()
foreach(file IN LISTS files)
  read_private_headers("${root}/${file}" text)
  if(NOT text MATCHES "file format ${FORMAT}[\r\n]")
    message(SEND_ERROR "${file} is not ${FORMAT}")
  endif()
  read_imports("${root}/${file}" imports)
  if(NOT "kernel32.dll" IN_LIST imports)
    message(SEND_ERROR "the imports of ${file} are ${imports}")
  endif()
  list(REMOVE_ITEM imports ${available})
  if(imports)
    message(SEND_ERROR "${file} needs ${imports}")
  endif()
endforeach()

# A library that is stripped too far, or not the one that the build tests, would show here.
foreach(table exports imports)
  cmake_language(CALL read_${table} "${root}/bin/libTemvar.dll" packed)
  cmake_language(CALL read_${table} "${LIBRARY}" built)
  if(NOT packed OR NOT packed STREQUAL built)
    message(SEND_ERROR "packed ${table}: ${packed}\nbuilt ${table}: ${built}")
  endif()
  set(${table} "${packed}")
endforeach()
file(STRINGS "${root}/lib/libTemvar.def" listed)
list(TRANSFORM listed STRIP)
list(REMOVE_ITEM exports ${listed})
if(exports)
  message(SEND_ERROR "libTemvar.def lacks ${exports}")
endif()
