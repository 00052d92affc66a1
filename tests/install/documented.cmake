# SPDX-License-Identifier: BSD-3-Clause
# documented(<document of docs/> <line> [<more arguments>...]): runs the one command of the document that
# begins like that, with more arguments behind it, in a folder that has the sources: ${WORK}/tree. What
# the document calls /path/to/... is in a variable named in_place_of_/path/to/...
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

# Presets build below the sources: these are the same ones in another folder.
set(tree "${WORK}/tree")
file(MAKE_DIRECTORY "${tree}")
file(GLOB entries "${SOURCE}/*")
foreach(entry IN LISTS entries)
  get_filename_component(name "${entry}" NAME)
  if(NOT name MATCHES "^(build|out)$")
    file(CREATE_LINK "${entry}" "${tree}/${name}" SYMBOLIC)
  endif()
endforeach()

# What was configured once must not stand in for what the document tells now.
file(GLOB caches "${tree}/build/*/CMakeCache.txt")
foreach(cache IN LISTS caches)
  file(REMOVE "${cache}")
endforeach()
cmake_host_system_information(RESULT processors QUERY NUMBER_OF_LOGICAL_CORES)
set(ENV{CMAKE_BUILD_PARALLEL_LEVEL} "${processors}")

function(documented document line)
  file(STRINGS "${SOURCE}/docs/${document}" lines REGEX "^${line}")
  list(LENGTH lines count)
  if(NOT count EQUAL 1)
    message(FATAL_ERROR "docs/${document} has ${count} commands that begin with ${line}")
  endif()
  set(command "${lines}")
  string(REGEX MATCHALL "/path/to/[a-z/]*" paths "${command}")
  foreach(path IN LISTS paths)
    if(NOT in_place_of_${path})
      message(FATAL_ERROR "nothing is there in place of ${path} of docs/${document}")
    endif()
    string(REPLACE "${path}" "${in_place_of_${path}}" command "${command}")
  endforeach()
  run("${lines}" bash -c "cd \"$0\" && ${command} \"$@\"" "${tree}" ${ARGN})
  set(run_output "${run_output}" PARENT_SCOPE)
endfunction()
