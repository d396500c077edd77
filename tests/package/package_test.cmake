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

# Builds ${directory}/main.cpp; sets `program` to the executable.
function(build directory package name)
  if(WAY STREQUAL "find_package")
    run(${CMAKE_COMMAND} -G Ninja -S ${directory} -B ${WORK_DIR}/${name}
        -D CMAKE_PREFIX_PATH=${prefix} -D CMAKE_CXX_COMPILER=${COMPILER})
    run(${CMAKE_COMMAND} --build ${WORK_DIR}/${name})
    set(program ${WORK_DIR}/${name}/consumer PARENT_SCOPE)
  else()
    run(pkg-config --cflags --libs ${package})
    separate_arguments(package_flags UNIX_COMMAND "${output}")
    run(${COMPILER} -std=c++20 ${directory}/main.cpp -o ${WORK_DIR}/${name}
        ${package_flags} -Wl,-rpath,${prefix}/${LIBRARY_DIR})
    set(program ${WORK_DIR}/${name} PARENT_SCOPE)
  endif()
endfunction()
set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBRARY_DIR}/pkgconfig)

build(${SOURCE_DIR} ulotaskcore core_consumer)
set(core_program ${program})
if(SCREENS)
  build(${SOURCE_DIR}/screens ulotaskengine screens_consumer)
  set(screens_program ${program})
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
  run(${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen ${screens_program})
  if(NOT output MATCHES "code 0, Buy milk, screen view\n")
    message(FATAL_ERROR "The program with screens said: ${output}")
  endif()
endif()
run(${prefix}/bin/ulotask show 1)
if(NOT output MATCHES "Summary   Buy milk\n")
  message(FATAL_ERROR "ulotask said: ${output}")
endif()

# The header for readers of the journal and the completions of each shell are installed.
foreach(file include/ulotaskengine/ulo/change_journal.h share/bash-completion/completions/ulotask
             share/zsh/site-functions/_ulotask share/fish/vendor_completions.d/ulotask.fish)
  if(NOT EXISTS ${prefix}/${file})
    message(FATAL_ERROR "${file} is not installed")
  endif()
endforeach()
