# Removes the files that the last installation from BUILD_DIR installed (in DESTDIR, if set), and the
# project's own directories that become empty.

file(GLOB manifests ${BUILD_DIR}/install_manifest*.txt)
if(NOT manifests)
  message(FATAL_ERROR "Nothing was installed from ${BUILD_DIR}")
endif()
set(files "")
foreach(manifest ${manifests})
  file(STRINGS ${manifest} lines)
  list(APPEND files ${lines})
endforeach()

# The prefix is where the paths part. It may itself contain the project's name.
list(GET files 0 prefix)
foreach(file ${files})
  string(FIND "${file}" "${prefix}/" at)
  while(NOT at EQUAL 0)
    get_filename_component(prefix "${prefix}" DIRECTORY)
    string(FIND "${file}" "${prefix}/" at)
  endwhile()
endforeach()

set(directories "")
foreach(file ${files})
  file(REMOVE "$ENV{DESTDIR}${file}")
  get_filename_component(directory "${file}" DIRECTORY)
  file(RELATIVE_PATH below "${prefix}" "${directory}")
  while(below MATCHES "/ulotaskengine(/|$)")
    list(APPEND directories "${directory}")
    get_filename_component(directory "${directory}" DIRECTORY)
    file(RELATIVE_PATH below "${prefix}" "${directory}")
  endwhile()
endforeach()
# The longest paths first: a directory is empty only without its subdirectories.
list(REMOVE_DUPLICATES directories)
list(SORT directories ORDER DESCENDING)
foreach(directory ${directories})
  # Fails if the directory is not empty.
  execute_process(COMMAND rmdir "$ENV{DESTDIR}${directory}" ERROR_QUIET)
endforeach()
file(REMOVE ${manifests})
