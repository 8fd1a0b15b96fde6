# What a built program or library says about itself, as the tools of the compiler read it; they are
# handed in as OBJDUMP and NM.

# The names that others may link to, sorted.
function(read_exports file result)
  if(file MATCHES "\\.dll$")
    read_private_headers("${file}" text)
    set(size "[ \t]+([0-9a-f]+)")
    if(NOT text MATCHES "Export Address Table${size}[ \r\n\t]+.Name Pointer/Ordinal. Table${size}" OR
        NOT CMAKE_MATCH_1 STREQUAL CMAKE_MATCH_2)
      message(SEND_ERROR "an export of ${file} has no name")
    endif()
    # Lines of the last table end in a name; binutils from 2.41 on put more in front of it.
    string(FIND "${text}" "[Ordinal/Name Pointer] Table" start)
    string(SUBSTRING "${text}" ${start} -1 text)
    string(REGEX MATCHALL "\n\t\\[ *[0-9]+\\] [^\r\n]*[A-Za-z0-9_@]" lines "${text}")
  else()
    execute_process(COMMAND "${NM}" -D --defined-only "${file}"
      OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "[^\n]+" lines "${text}")
  endif()
  list(TRANSFORM lines REPLACE ".* " "")
  list(SORT lines)
  set(${result} "${lines}" PARENT_SCOPE)
endfunction()

# The files that the loader of Windows brings in first, in lower case.
function(read_imports file result)
  read_private_headers("${file}" text)
  string(TOLOWER "${text}" text)
  string(REGEX MATCHALL "dll name: [^\r\n]+" lines "${text}")
  list(TRANSFORM lines REPLACE "dll name: " "")
  set(${result} "${lines}" PARENT_SCOPE)
endfunction()

function(read_private_headers file result)
  execute_process(COMMAND "${OBJDUMP}" -p "${file}"
    OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
  set(${result} "${text}" PARENT_SCOPE)
endfunction()
