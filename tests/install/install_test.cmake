# The body of the install tests; tests/install/CMakeLists.txt hands in the variables.
cmake_minimum_required(VERSION 3.25)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "failed with ${result}: ${command}")
  endif()
endfunction()

set(prefix "${WORK}/prefix")
set(program "${WORK}/build/consumer${EXE}")
file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}/build")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${prefix}" --config "${CONFIG}")

# Windows looks for libraries beside the program; elsewhere the path is given for the run.
set(ENV{LD_LIBRARY_PATH} "${prefix}/lib:$ENV{LD_LIBRARY_PATH}")
file(GLOB dlls "${prefix}/bin/*.dll")
if(dlls)
  file(COPY ${dlls} DESTINATION "${WORK}/build")
endif()

separate_arguments(flags NATIVE_COMMAND "${FLAGS}")
set(arguments "")
if(WAY STREQUAL "cmake")
  # A toolchain for another system looks for packages in that system's folders only.
  set(where "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_COMPILER=${COMPILER}")
  if(TOOLCHAIN)
    set(where "-DTemvar_DIR=${prefix}/lib/cmake/Temvar" "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}")
  endif()
  run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/consumer" -B "${WORK}/build" -G "${GENERATOR}"
    ${where} "-DCMAKE_BUILD_TYPE=${CONFIG}" "-DCMAKE_CXX_FLAGS=${FLAGS}")
  run("${CMAKE_COMMAND}" --build "${WORK}/build" --config "${CONFIG}")
elseif(WAY STREQUAL "pkgconfig")
  set(ENV{PKG_CONFIG_PATH} "${prefix}/lib/pkgconfig")
  execute_process(COMMAND "${PKG_CONFIG}" --cflags --libs temvar
    OUTPUT_VARIABLE found OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(found NATIVE_COMMAND "${found}")
  run("${COMPILER}" -std=c++17 ${flags} "${CMAKE_CURRENT_LIST_DIR}/consumer/main.cpp"
    ${found} -o "${program}")
else()
  run("${COMPILER}" -std=c++17 ${flags} "-I${prefix}/include"
    "${CMAKE_CURRENT_LIST_DIR}/consumer_dlopen/main.cpp" -o "${program}")
  file(GLOB_RECURSE library "${prefix}/lib/${LIBRARY}" "${prefix}/bin/${LIBRARY}")
  if(dlls)
    set(library "${LIBRARY}")
  endif()
  file(STRINGS "${CMAKE_CURRENT_LIST_DIR}/../../cmake/exports.txt" exports)
  set(arguments "${library}" ${exports})
endif()
run(${EMULATOR} "${program}" ${arguments})
