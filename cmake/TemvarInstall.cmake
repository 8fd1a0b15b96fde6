# What `cmake --install` puts where, and what CPack makes of it: headers, the library, a CMake
# package (find_package(Temvar CONFIG) gives Temvar::Temvar), a pkg-config file and the licences.
# Every path in the installed files is relative to the file, so the tree may be moved as a whole.
include(CMakePackageConfigHelpers)

install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/temvar"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
  FILES_MATCHING PATTERN "*.h")
install(TARGETS temvar EXPORT TemvarTargets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Temvar")
install(EXPORT TemvarTargets NAMESPACE Temvar:: DESTINATION "${package_dir}")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/TemvarConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/TemvarConfig.cmake"
  INSTALL_DESTINATION "${package_dir}"
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/TemvarConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/TemvarConfig.cmake"
  "${PROJECT_BINARY_DIR}/TemvarConfigVersion.cmake"
  DESTINATION "${package_dir}")

# pkg-config knows the folder of the file that it reads, and the rest follows from that. Only a host
# that gives absolute folders for libraries or headers gets absolute paths.
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
configure_file("${PROJECT_SOURCE_DIR}/cmake/temvar.pc.in" "${PROJECT_BINARY_DIR}/temvar.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/temvar.pc" DESTINATION "${pkgconfig_dir}")

install(FILES
  "${PROJECT_SOURCE_DIR}/LICENSE"
  "${PROJECT_SOURCE_DIR}/docs/licences.md"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}")

if(MINGW)
  include(TemvarWindowsPackage)
endif()

# A host that takes this project in by add_subdirectory makes its own packages.
if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()
set(CPACK_PACKAGE_NAME "libtemvar")
set(CPACK_PACKAGE_VENDOR "The libTemvar authors")
set(CPACK_PACKAGE_CONTACT "The libTemvar authors <libtemvar@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(CPACK_SYSTEM_NAME "windows-i686")
  else()
    set(CPACK_SYSTEM_NAME "windows-x86_64")
  endif()
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION "libs")
  # dpkg-shlibdeps reads the needed packages off the built library.
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
endif()
include(CPack)
