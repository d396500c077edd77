# Installs as a distribution does and fails unless desktops, shells and readers of the manuals find
# what they look for. Tools that are not installed are not run.
cmake_minimum_required(VERSION 3.25)

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output
                  ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGV}\n${output}\nended with ${result}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_file path)
  if(NOT EXISTS ${path})
    message(FATAL_ERROR "${path} is not installed")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} -E env DESTDIR=${WORK_DIR}/root
    ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix /usr)
set(usr ${WORK_DIR}/root/usr)
set(share ${usr}/share)

# Each program has a manual page and a completion.
file(GLOB programs RELATIVE ${usr}/bin ${usr}/bin/*)
if(NOT programs)
  message(FATAL_ERROR "No programs are installed")
endif()
foreach(program ${programs})
  expect_file(${share}/man/man1/${program}.1)
  expect_file(${share}/bash-completion/completions/${program})
endforeach()
expect_file(${share}/man/man5/ulotaskengine.5)
expect_file(${share}/man/man7/ulodb2.7)
# Debian's zsh looks for files of packages there.
expect_file(${share}/zsh/vendor-completions/_ulotask)
if(EXISTS ${share}/zsh/site-functions)
  message(FATAL_ERROR "${share}/zsh/site-functions is for other prefixes than /usr")
endif()

# The documents link to files that are installed. Debian compresses the changelog.
set(documents ${share}/doc/ulotaskengine)
file(REMOVE ${documents}/CHANGELOG.md)
file(GLOB_RECURSE pages ${documents}/*.md)
if(NOT pages)
  message(FATAL_ERROR "No documents are installed")
endif()
foreach(page ${pages})
  get_filename_component(directory ${page} DIRECTORY)
  file(READ ${page} text)
  # Brackets and semicolons have a meaning in lists.
  string(REGEX REPLACE "\\]\\(|src=\"" "<to:" text "${text}")
  string(REGEX REPLACE "[][;]" "" text "${text}")
  string(REGEX MATCHALL "<to:[^):#\"]+[#)\"]" links "${text}")
  foreach(link ${links})
    string(REGEX REPLACE "^<to:(.*).$" "\\1" link "${link}")
    if(NOT EXISTS ${directory}/${link})
      message(FATAL_ERROR "${page} links to ${link}, which is not installed")
    endif()
  endforeach()
endforeach()

# The unit runs a command that exists.
file(STRINGS ${usr}/lib/systemd/user/ulotask-watch.service command REGEX "^ExecStart=")
if(NOT command MATCHES "^ExecStart=/usr/bin/env ulotask (.+)$")
  message(FATAL_ERROR "ulotask-watch.service runs another program: ${command}")
endif()
run(${ULOTASK} ${CMAKE_MATCH_1} --help)

if(NOT SCREENS)
  return()
endif()

foreach(size 16 22 24 32 48 64 128 256)
  # The width and the height in the first chunk of a PNG file.
  file(READ ${share}/icons/hicolor/${size}x${size}/apps/ulo-tasks.png bytes
       OFFSET 16 LIMIT 8 HEX)
  math(EXPR width "0x0${bytes} >> 32")
  math(EXPR height "0x0${bytes} & 0xffffffff")
  if(NOT width EQUAL size OR NOT height EQUAL size)
    message(FATAL_ERROR "The icon of size ${size} has ${width}x${height} pixels")
  endif()
endforeach()
expect_file(${share}/icons/hicolor/scalable/apps/ulo-tasks.svg)

set(metainfo ${share}/metainfo/org.ulotaskengine.tasks.metainfo.xml)
file(READ ${metainfo} text)
if(NOT text MATCHES "<release version=\"${VERSION}\" ")
  message(FATAL_ERROR "${metainfo} does not name the release ${VERSION}")
endif()
if(NOT text MATCHES "<launchable type=\"desktop-id\">([^<]*)<")
  message(FATAL_ERROR "${metainfo} names no desktop entry")
endif()
expect_file(${share}/applications/${CMAKE_MATCH_1})
if(APPSTREAMCLI)
  # AppStream 1.0 asks for a home page, which the project does not have, and for a form of the
  # developer's name that earlier versions do not know. Everything else still fails.
  run(${APPSTREAMCLI} --version)
  string(REGEX MATCH "[0-9.]+" version "${output}")
  set(overrides "")
  if(version VERSION_GREATER_EQUAL 1.0)
    string(CONCAT overrides "--override=url-homepage-missing=pedantic,"
           "developer-name-tag-deprecated=pedantic,developer-info-missing=pedantic")
  endif()
  run(${APPSTREAMCLI} validate --strict --no-net ${overrides} ${metainfo})
endif()

file(GLOB entries ${share}/applications/*.desktop)
if(DESKTOP_FILE_VALIDATE)
  run(${DESKTOP_FILE_VALIDATE} ${entries})
  if(output)
    message(FATAL_ERROR "${output}")
  endif()
endif()

if(UPDATE_MIME_DATABASE)
  run(${UPDATE_MIME_DATABASE} ${share}/mime)
  file(STRINGS ${share}/mime/globs2 globs)
  if(NOT "60:text/x-vcalendar:*.vcs" IN_LIST globs)
    message(FATAL_ERROR "The ending .vcs is not that of vCalendar files: ${globs}")
  endif()
endif()

# Exactly one application opens calendar files.
if(UPDATE_DESKTOP_DATABASE)
  run(${UPDATE_DESKTOP_DATABASE} ${share}/applications)
  file(READ ${share}/applications/mimeinfo.cache cache)
  foreach(type text/calendar text/x-vcalendar)
    if(NOT cache MATCHES "\n${type}=ulo-tasks.desktop;\n")
      message(FATAL_ERROR "Other applications than ulo-tasks open ${type}:\n${cache}")
    endif()
    if(XDG_MIME)
      run(${CMAKE_COMMAND} -E env --unset=XDG_CURRENT_DESKTOP --unset=DESKTOP_SESSION
          XDG_DATA_DIRS=${share} XDG_CONFIG_DIRS=${WORK_DIR}/none HOME=${WORK_DIR}/none
          XDG_DATA_HOME=${WORK_DIR}/none XDG_CONFIG_HOME=${WORK_DIR}/none
          ${XDG_MIME} query default ${type})
      if(NOT output STREQUAL "ulo-tasks.desktop\n")
        message(FATAL_ERROR "The default application for ${type} is ${output}")
      endif()
    endif()
  endforeach()
endif()
