# What `cmake --install` puts where: headers, the library, a CMake package (find_package(Temvar CONFIG)
# defines Temvar::Temvar), a pkg-config file, documents, examples and the licences. Every path in the
# installed files is relative to the file, so the tree may be moved as a whole.
#
# Each file is of a component: runtime (what a host ships), development (what it is built with) or
# symbols (what its crash reports are read with).
include(CMakePackageConfigHelpers)

install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/temvar"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development
  FILES_MATCHING PATTERN "*.h")
install(TARGETS temvar temvar_jobs EXPORT TemvarTargets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Temvar")
install(EXPORT TemvarTargets NAMESPACE Temvar::
  DESTINATION "${package_dir}" COMPONENT development)
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/TemvarConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/TemvarConfig.cmake"
  INSTALL_DESTINATION "${package_dir}"
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/TemvarConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/TemvarConfig.cmake"
  "${PROJECT_BINARY_DIR}/TemvarConfigVersion.cmake"
  DESTINATION "${package_dir}" COMPONENT development)

# pkg-config knows the folder of the file that it reads, and the rest follows from that. Only a host
# that passes absolute folders for libraries or headers gets absolute paths.
set(pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
set(pkgconfig_prefix "${CMAKE_INSTALL_PREFIX}")
if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  file(RELATIVE_PATH to_prefix "/${pkgconfig_dir}" "/")
  string(REGEX REPLACE "/$" "" to_prefix "${to_prefix}")
  set(pkgconfig_prefix "\${pcfiledir}/${to_prefix}")
endif()
foreach(kind LIB INCLUDE)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${kind}DIR}")
    set(pkgconfig_${kind} "${CMAKE_INSTALL_${kind}DIR}")
  else()
    set(pkgconfig_${kind} "\${prefix}/${CMAKE_INSTALL_${kind}DIR}")
  endif()
endforeach()
foreach(library Temvar TemvarJobs)
  string(REPLACE TemvarJobs temvar-jobs file "${library}")
  string(REPLACE Temvar temvar file "${file}")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/temvar.pc.in" "${PROJECT_BINARY_DIR}/${file}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${file}.pc"
    DESTINATION "${pkgconfig_dir}" COMPONENT development)
endforeach()

# Documents and examples keep the places that they have to each other here, so that their links hold.
file(GLOB pages "${PROJECT_SOURCE_DIR}/*.md")
install(FILES ${pages} "${PROJECT_SOURCE_DIR}/LICENSE"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT development)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT development
  FILES_MATCHING PATTERN "*.md")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT development)

if(MINGW)
  include(TemvarWindowsPackage)
endif()

# A host that takes this project in by add_subdirectory makes its own packages.
if(PROJECT_IS_TOP_LEVEL)
  include(TemvarPackages)
endif()
