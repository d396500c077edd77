# Fails unless a program built against the installed package stores a task.

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output
                  ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGV}\n${output}\nended with ${result}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

set(flags "")
if(SANITIZE)
  set(flags -fsanitize=address,undefined)
endif()

# What the README shows is what is tried here.
file(READ ${README} readme)
file(READ ${SOURCE_DIR}/main.cpp program_text)
string(FIND "${readme}" "```cpp\n${program_text}```" place)
if(place EQUAL -1)
  message(FATAL_ERROR "${README} shows another program")
endif()

file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR}/data)
# Nothing may depend on where it was first put: install, then move.
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/first)
file(RENAME ${WORK_DIR}/first ${WORK_DIR}/prefix)
set(prefix ${WORK_DIR}/prefix)

if(WAY STREQUAL "find_package")
  string(JOIN " " flags_text ${flags})
  run(${CMAKE_COMMAND} -G Ninja -S ${SOURCE_DIR} -B ${WORK_DIR}/build
      -D CMAKE_PREFIX_PATH=${prefix} -D CMAKE_CXX_COMPILER=${COMPILER}
      -D CMAKE_CXX_FLAGS=${flags_text})
  run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
  set(program ${WORK_DIR}/build/consumer)
else()
  set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBRARY_DIR}/pkgconfig)
  run(pkg-config --cflags --libs ulotaskengine)
  separate_arguments(package_flags UNIX_COMMAND "${output}")
  set(program ${WORK_DIR}/consumer)
  # Every installed header stands on its own.
  file(GLOB headers ${prefix}/include/ulotaskengine/*.h)
  foreach(header ${headers})
    file(WRITE ${WORK_DIR}/header.cpp "#include \"${header}\"\n")
    run(${COMPILER} -std=c++20 -fsyntax-only ${WORK_DIR}/header.cpp ${package_flags})
  endforeach()
  run(${COMPILER} -std=c++20 ${flags} ${SOURCE_DIR}/main.cpp -o ${program} ${package_flags}
      -Wl,-rpath,${prefix}/${LIBRARY_DIR})
endif()

# The installed files find one another without help.
unset(ENV{LD_LIBRARY_PATH})
set(ENV{ULO_DATA_DIR} ${WORK_DIR}/data)
set(ENV{ULO_LOG} none)
run(${program})
if(NOT output MATCHES "code 0, UID 1\n")
  message(FATAL_ERROR "The program said: ${output}")
endif()
run(${prefix}/bin/ulotask show 1)
if(NOT output MATCHES "Summary   Buy milk\n")
  message(FATAL_ERROR "ulotask said: ${output}")
endif()

# The journal's readers find its header, and each shell the completion of the program.
foreach(file include/ulotaskengine/change_journal.h share/bash-completion/completions/ulotask
             share/zsh/site-functions/_ulotask share/fish/vendor_completions.d/ulotask.fish)
  if(NOT EXISTS ${prefix}/${file})
    message(FATAL_ERROR "${file} is not installed")
  endif()
endforeach()
