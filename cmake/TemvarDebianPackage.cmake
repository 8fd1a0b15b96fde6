# The Debian packages: libtemvar1 with the library, libtemvar-dev, and libtemvar1-dbgsym, which gdb and
# LLDB find by the identifier of the build. scripts/package configures a build for /usr and makes them.
set(library_package "libtemvar${PROJECT_VERSION_MAJOR}")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE "libtemvar")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "support library for desktop applications")
set(about "libTemvar runs jobs on worker threads, keeps settings in JSON files, reads
Android packages, packs and unpacks zip archives, and reports crashes.

")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "${library_package}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "${about}This package has the libraries.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONFLICTS "libtemvar")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_REPLACES "libtemvar")
# dpkg-shlibdeps reads the needed packages off the built library. A host that is packaged against this
# version takes any later one with the same major number.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_RUNTIME_DEBUGINFO_PACKAGE ON)
file(WRITE "${PROJECT_BINARY_DIR}/debian/triggers" "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_BINARY_DIR}/debian/triggers")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME "libtemvar-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "${about}This package has what hosts are built with: headers, documents and examples.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")

# Both packages have what Debian asks of each: a file of licences and a changelog in its own form.
string(TIMESTAMP DEBIAN_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(folder "${PROJECT_BINARY_DIR}/debian")
configure_file("${PROJECT_SOURCE_DIR}/cmake/changelog.in" "${folder}/changelog" @ONLY)
file(READ "${PROJECT_SOURCE_DIR}/LICENSE" licence)
file(READ "${PROJECT_SOURCE_DIR}/docs/licences.md" licences)
file(WRITE "${folder}/copyright" "${licence}\n${licences}")
find_program(GZIP gzip)
if(GZIP)
  execute_process(COMMAND "${GZIP}" -9nc "${folder}/changelog"
    OUTPUT_FILE "${folder}/changelog.gz" COMMAND_ERROR_IS_FATAL ANY)
endif()
foreach(component runtime development)
  string(TOUPPER "${component}" upper)
  install(FILES "${folder}/copyright" "${folder}/changelog.gz"
    DESTINATION "share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}"
    COMPONENT ${component} EXCLUDE_FROM_ALL OPTIONAL)
endforeach()
