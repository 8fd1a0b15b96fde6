# Explores the model for one set of hosts: cmake -DSPIN= -DCC= -DMODEL= -DNAME= -DHOSTS= -DFINDS= -P
set(folder "${CMAKE_CURRENT_BINARY_DIR}/model.${NAME}")
file(MAKE_DIRECTORY "${folder}")
list(TRANSFORM HOSTS PREPEND "-D")
if(FINDS)
  list(APPEND HOSTS "-DMISTAKE_${FINDS}")
endif()

foreach(step
    "${SPIN};-a;${HOSTS};${MODEL}"
    "${CC};-O2;-w;-DSAFETY;-o;pan;pan.c")
  execute_process(COMMAND ${step} WORKING_DIRECTORY "${folder}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
execute_process(COMMAND "${folder}/pan" -m1000000 -n WORKING_DIRECTORY "${folder}"
  OUTPUT_VARIABLE report COMMAND_ERROR_IS_FATAL ANY)
message("${report}")
if(report MATCHES "search depth too small|out of memory")
  message(FATAL_ERROR "the search was not complete")
endif()
if(FINDS AND report MATCHES "errors: 0")
  message(FATAL_ERROR "the checker did not find the mistake")
elseif(NOT FINDS AND NOT report MATCHES "errors: 0")
  message(FATAL_ERROR "an order of steps breaks a property; see waits.pml.trail in ${folder}")
endif()
