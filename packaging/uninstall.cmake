# Removes the files that the last installation from BUILD_DIR installed (in DESTDIR, if set), and the
# project's own directories that become empty.

file(GLOB manifests ${BUILD_DIR}/install_manifest*.txt)
if(NOT manifests)
  message(FATAL_ERROR "Nothing was installed from ${BUILD_DIR}")
endif()
set(directories "")
foreach(manifest ${manifests})
  file(STRINGS ${manifest} files)
  foreach(file ${files})
    file(REMOVE "$ENV{DESTDIR}${file}")
    get_filename_component(directory "${file}" DIRECTORY)
    while(directory MATCHES "/ulotaskengine(/|$)")
      list(APPEND directories "${directory}")
      get_filename_component(directory "${directory}" DIRECTORY)
    endwhile()
  endforeach()
endforeach()
# The longest paths first: a directory is empty only without its subdirectories.
list(REMOVE_DUPLICATES directories)
list(SORT directories ORDER DESCENDING)
foreach(directory ${directories})
  # Fails if the directory is not empty.
  execute_process(COMMAND rmdir "$ENV{DESTDIR}${directory}" ERROR_QUIET)
endforeach()
file(REMOVE ${manifests})
