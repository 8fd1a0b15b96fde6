# Libraries that the library calls. Each is found as an imported target:
#   ZLIB::ZLIB, temvar::minizip, temvar::rapidjson, and elsewhere than on Windows
#   OpenSSL::Crypto, temvar::uuid and Threads::Threads.
#
# On Windows zlib and minizip go into libTemvar.dll: fewer files to ship, and no clash with a host's
# own zlib1.dll.
set(minizip_names minizip)
if(MINGW)
  set(ZLIB_USE_STATIC_LIBS ON)
  set(minizip_names libminizip.a minizip)
endif()
find_package(ZLIB REQUIRED)

find_path(MINIZIP_INCLUDE_DIR NAMES unzip.h PATH_SUFFIXES minizip)
find_library(MINIZIP_LIBRARY NAMES ${minizip_names})
if(NOT MINIZIP_INCLUDE_DIR OR NOT MINIZIP_LIBRARY)
  message(FATAL_ERROR "minizip not found: on Debian install libminizip-dev; for a Windows build run "
                      "scripts/setup windows, which builds it")
endif()
add_library(temvar_minizip INTERFACE)
add_library(temvar::minizip ALIAS temvar_minizip)
target_include_directories(temvar_minizip SYSTEM INTERFACE "${MINIZIP_INCLUDE_DIR}")
target_link_libraries(temvar_minizip INTERFACE "${MINIZIP_LIBRARY}" ZLIB::ZLIB)
if(MINGW AND NOT CMAKE_CROSSCOMPILING)
  # Packages of minizip for Windows may be built with this one, too.
  find_library(TEMVAR_BZIP2_LIBRARY NAMES libbz2.a)
  if(TEMVAR_BZIP2_LIBRARY)
    target_link_libraries(temvar_minizip INTERFACE "${TEMVAR_BZIP2_LIBRARY}")
  endif()
endif()

find_path(RAPIDJSON_INCLUDE_DIR NAMES rapidjson/document.h)
if(NOT RAPIDJSON_INCLUDE_DIR)
  message(FATAL_ERROR "RapidJSON not found: on Debian install rapidjson-dev")
endif()
add_library(temvar_rapidjson INTERFACE)
add_library(temvar::rapidjson ALIAS temvar_rapidjson)
target_include_directories(temvar_rapidjson SYSTEM INTERFACE "${RAPIDJSON_INCLUDE_DIR}")
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  # RapidJSON 1.1.0 as of Debian 12 assigns to a constant in a function that nobody calls. clang 19
  # refuses that, unless it parses only what is called.
  include(CheckCXXSourceCompiles)
  set(CMAKE_REQUIRED_INCLUDES "${RAPIDJSON_INCLUDE_DIR}")
  check_cxx_source_compiles("#include <rapidjson/document.h>\nint main() {}" RAPIDJSON_COMPILES)
  unset(CMAKE_REQUIRED_INCLUDES)
  if(NOT RAPIDJSON_COMPILES)
    set(TEMVAR_RAPIDJSON_OPTIONS -fdelayed-template-parsing -Wno-delayed-template-parsing-in-cxx20)
  endif()
endif()

set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

if(NOT WIN32)
  find_package(OpenSSL REQUIRED COMPONENTS Crypto)
  find_path(UUID_INCLUDE_DIR NAMES uuid/uuid.h REQUIRED)
  find_library(UUID_LIBRARY NAMES uuid REQUIRED)
  add_library(temvar_uuid INTERFACE)
  add_library(temvar::uuid ALIAS temvar_uuid)
  target_include_directories(temvar_uuid SYSTEM INTERFACE "${UUID_INCLUDE_DIR}")
  target_link_libraries(temvar_uuid INTERFACE "${UUID_LIBRARY}")
endif()
