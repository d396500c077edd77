# configure(OPTION...) configures SOURCE_DIR in WORK_DIR, and sets `result` and `output`.

file(REMOVE_RECURSE ${WORK_DIR})
function(configure)
  execute_process(
    COMMAND ${CMAKE_COMMAND} -G Ninja -S ${SOURCE_DIR} -B ${WORK_DIR}
            -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} ${ARGN}
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  set(result ${result} PARENT_SCOPE)
  set(output "${output}" PARENT_SCOPE)
endfunction()
