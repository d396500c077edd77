# Fails unless configuring without Qt Widgets stops with an error that names the remedy, and the
# core, the command line and their tests can be built. (./test --without-screens builds and runs
# them.)

include(${CMAKE_CURRENT_LIST_DIR}/configure.cmake)

set(without_widgets
  -D CMAKE_DISABLE_FIND_PACKAGE_Qt6Widgets=ON -D CMAKE_DISABLE_FIND_PACKAGE_Qt6Gui=ON)
configure(${without_widgets})
if(result EQUAL 0 OR NOT output MATCHES "qt6-base-dev" OR NOT output MATCHES "-DULO_SCREENS=OFF")
  message(FATAL_ERROR "Without Qt Widgets: ended with ${result}\n${output}")
endif()
configure(${without_widgets} -D ULO_SCREENS=OFF)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "Without screens: ended with ${result}\n${output}")
endif()

execute_process(COMMAND ninja -C ${WORK_DIR} -t targets all
                OUTPUT_VARIABLE targets COMMAND_ERROR_IS_FATAL ANY)
foreach(target ulotask libulotaskcore.so libulodb2.so ulotask_test odb_api_test store_tasks_test)
  if(NOT targets MATCHES "/${target}: ")
    message(FATAL_ERROR "Without screens, ${target} is not built")
  endif()
endforeach()
# Commands that compile or link with widgets contain their directory or library.
file(READ ${WORK_DIR}/build.ninja commands)
if(commands MATCHES "(QtWidgets|QtGui|libQt6Widgets|libQt6Gui)")
  message(FATAL_ERROR "Without screens, ${CMAKE_MATCH_1} is used")
endif()
