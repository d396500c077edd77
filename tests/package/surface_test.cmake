# Fails if the installed headers or the exported symbols differ from the lists in LISTS, so that
# every change of the public interface also changes a list.
# With -D RENEW=ON, rewrites the lists (tools/renew-surface).
# The lists are those of 64-bit systems. On others (POINTER_SIZE), std::int64_t and std::size_t are
# different integers, so the comparison does not distinguish long from int.

if(RENEW AND NOT POINTER_SIZE EQUAL 8)
  message(FATAL_ERROR "The lists must be written on a 64-bit system.")
endif()

file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix
                OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)

set(differing "")
# Writes the lines, sorted, to a file of WORK_DIR.
function(write_sorted name lines)
  if(NOT POINTER_SIZE EQUAL 8)
    string(REGEX REPLACE "long( long)?" "int" lines "${lines}")
  endif()
  list(SORT lines)
  list(REMOVE_DUPLICATES lines)
  list(JOIN lines "\n" text)
  string(REPLACE "\\" "" text "${text}")
  file(WRITE ${WORK_DIR}/${name} "${text}\n")
  set(text "${text}" PARENT_SCOPE)
endfunction()
function(check name lines)
  write_sorted(${name} "${lines}")
  if(RENEW)
    file(WRITE ${LISTS}/${name} "${text}\n")
    return()
  endif()
  file(STRINGS ${LISTS}/${name} expected)
  write_sorted(expected_${name} "${expected}")
  execute_process(COMMAND diff -u ${WORK_DIR}/expected_${name} ${WORK_DIR}/${name} RESULT_VARIABLE result
                  OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    set(differing "${differing}\n${output}" PARENT_SCOPE)
  endif()
endfunction()

file(GLOB_RECURSE headers RELATIVE ${WORK_DIR}/prefix/include ${WORK_DIR}/prefix/include/*)
check(headers.txt "${headers}")

# Omits the symbols that the compiler generates for templates and inline functions of other
# libraries, which depend on its version and options. Those of the standard library must not be
# exported at all (cmake/symbols.map.in).
foreach(library ulotaskcore ulotaskengine uloplatform uloappbase ulodb2)
  execute_process(
    COMMAND ${NM} --dynamic --defined-only --format=just-symbols
            ${WORK_DIR}/prefix/${LIBRARY_DIR}/lib${library}.so
    OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "_Z(GV|T[ISTV])?Z?N?K?(St|9__gnu_cxx)[^\n]*" foreign "\n${output}")
  if(foreign)
    list(JOIN foreign "\n" foreign)
    string(APPEND differing "\nlib${library} exports instances of foreign templates:\n${foreign}")
  endif()
  execute_process(
    COMMAND ${NM} --dynamic --defined-only --demangle
            ${WORK_DIR}/prefix/${LIBRARY_DIR}/lib${library}.so
    OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE ";" "\\;" output "${output}")
  string(REPLACE "\n" ";" output "${output}")
  set(symbols "")
  foreach(line IN LISTS output)
    if(line MATCHES "^[0-9a-f]+ ([A-Zu]) (.*)$")
      set(kind "${CMAKE_MATCH_1}")
      set(symbol "${CMAKE_MATCH_2}")
      if(NOT kind STREQUAL "W" AND NOT symbol MATCHES "^(std::|(typeinfo|vtable).* for (Q|std::))")
        list(APPEND symbols "${symbol}")
      endif()
    endif()
  endforeach()
  check(lib${library}.txt "${symbols}")
endforeach()

if(NOT differing STREQUAL "")
  message(FATAL_ERROR "What programs can use has changed:${differing}\n"
    "If that is intended, renew the lists with tools/renew-surface and see docs/compatibility.md.")
endif()
