# Fails unless configuring without GoogleTest stops with an error that names the remedies, and
# succeeds if no tests are wanted.

include(${CMAKE_CURRENT_LIST_DIR}/configure.cmake)

configure(-D CMAKE_DISABLE_FIND_PACKAGE_GTest=ON)
if(result EQUAL 0 OR NOT output MATCHES "libgtest-dev" OR NOT output MATCHES "-DBUILD_TESTING=OFF")
  message(FATAL_ERROR "Without GoogleTest: ended with ${result}\n${output}")
endif()
configure(-D BUILD_TESTING=OFF)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "Without tests: ended with ${result}\n${output}")
endif()
