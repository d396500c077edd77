# Fails unless configuring without GoogleTest stops with an error that names the remedies, and
# succeeds if no tests are wanted.

file(REMOVE_RECURSE ${WORK_DIR})
function(configure)
  execute_process(
    COMMAND ${CMAKE_COMMAND} -G Ninja -S ${SOURCE_DIR} -B ${WORK_DIR}
            -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_DISABLE_FIND_PACKAGE_GTest=ON ${ARGN}
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  set(result ${result} PARENT_SCOPE)
  set(output "${output}" PARENT_SCOPE)
endfunction()

configure()
if(result EQUAL 0 OR NOT output MATCHES "libgtest-dev" OR NOT output MATCHES "-DBUILD_TESTING=OFF")
  message(FATAL_ERROR "Without GoogleTest: ended with ${result}\n${output}")
endif()
configure(-D BUILD_TESTING=OFF)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "Without tests: ended with ${result}\n${output}")
endif()
