# Fails unless a program built against the installed core stores a task, and one built against the
# screens shows it.

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output
                  ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGV}\n${output}\nended with ${result}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

# Tests the commands that the README shows.
file(READ ${README} readme)
file(READ ${SOURCE_DIR}/main.cpp program_text)
string(FIND "${readme}" "```cpp\n${program_text}```" place)
if(place EQUAL -1)
  message(FATAL_ERROR "${README} shows another program")
endif()

file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR}/data)
# The installed tree must be relocatable: install, then move.
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/first)
file(RENAME ${WORK_DIR}/first ${WORK_DIR}/prefix)
set(prefix ${WORK_DIR}/prefix)

# The programs of consumer/, each with the pkg-config module that it is built with and its source.
set(programs consumer:ulotaskcore:main.cpp platform_consumer:uloplatform:platform.cpp
             database_consumer:ulodb2:database.c)
if(SCREENS)
  list(APPEND programs screens_consumer:ulotaskengine:screens/main.cpp
                       widgets_consumer:uloappbase:screens/widgets.cpp)
endif()
set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBRARY_DIR}/pkgconfig)
file(MAKE_DIRECTORY ${WORK_DIR}/bin)
if(WAY STREQUAL "find_package")
  set(directories ${SOURCE_DIR})
  if(SCREENS)
    list(APPEND directories ${SOURCE_DIR}/screens)
  endif()
  foreach(directory ${directories})
    get_filename_component(name ${directory} NAME)
    run(${CMAKE_COMMAND} -G Ninja -S ${directory} -B ${WORK_DIR}/${name}
        -D CMAKE_PREFIX_PATH=${prefix} -D CMAKE_CXX_COMPILER=${COMPILER}
        -D CMAKE_RUNTIME_OUTPUT_DIRECTORY=${WORK_DIR}/bin)
    run(${CMAKE_COMMAND} --build ${WORK_DIR}/${name})
  endforeach()
else()
  # All at once.
  set(commands "")
  foreach(program ${programs})
    string(REPLACE ":" ";" program ${program})
    list(POP_FRONT program name module source)
    set(compiler "${COMPILER} -std=c++20")
    if(source MATCHES "\\.c$")
      set(compiler cc)
    endif()
    string(APPEND commands "${compiler} '${SOURCE_DIR}/${source}' -o '${WORK_DIR}/bin/${name}' \
      $(pkg-config --cflags --libs ${module}) '-Wl,-rpath,${prefix}/${LIBRARY_DIR}'\n")
  endforeach()
  file(WRITE ${WORK_DIR}/commands "${commands}")
  run(sh -ec "tr '\\n' '\\0' < '${WORK_DIR}/commands' | xargs -0 -P 2 -n 1 sh -ec")
endif()

# Each installed header compiles on its own.
if(WAY STREQUAL "pkg_config")
  set(package ulotaskcore)
  if(SCREENS)
    set(package ulotaskengine)
  endif()
  run(sh -c "find '${prefix}/include/ulotaskengine' -name '*.h' | xargs -P 2 -I HEADER sh -c \
      'echo \"#include \\\"HEADER\\\"\" | ${COMPILER} -std=c++20 -fsyntax-only -x c++ - $(pkg-config --cflags ${package})'")
endif()

# The installed files must find each other without environment variables.
unset(ENV{LD_LIBRARY_PATH})
set(ENV{ULO_DATA_DIR} ${WORK_DIR}/data)
set(ENV{ULO_LOG} none)
run(${WORK_DIR}/bin/database_consumer)
if(NOT output MATCHES "database: code 0\n")
  message(FATAL_ERROR "The program on the database said: ${output}")
endif()
run(${WORK_DIR}/bin/platform_consumer)
if(NOT output MATCHES "platform: ${WORK_DIR}/data, 86400\n")
  message(FATAL_ERROR "The program on the platform said: ${output}")
endif()
set(core_program ${WORK_DIR}/bin/consumer)
run(${core_program})
if(NOT output MATCHES "code 0, UID 1\n")
  message(FATAL_ERROR "The program said: ${output}")
endif()
# A program on the core loads no widgets.
run(ldd ${core_program})
if(NOT output MATCHES "libulotaskcore" OR output MATCHES "Qt6Widgets|Qt6Gui")
  message(FATAL_ERROR "A program that links the core loads:\n${output}")
endif()
if(SCREENS)
  set(ENV{QT_QPA_PLATFORM} offscreen)
  run(${WORK_DIR}/bin/widgets_consumer)
  if(NOT output MATCHES "widgets: English\n")
    message(FATAL_ERROR "The program with widgets said: ${output}")
  endif()
  run(${WORK_DIR}/bin/screens_consumer)
  if(NOT output MATCHES "code 0, Buy milk, screen view\n")
    message(FATAL_ERROR "The program with screens said: ${output}")
  endif()
endif()
run(${prefix}/bin/ulotask show 1)
if(NOT output MATCHES "Summary   Buy milk\n")
  message(FATAL_ERROR "ulotask said: ${output}")
endif()
