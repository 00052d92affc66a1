# SPDX-License-Identifier: BSD-3-Clause
# Read by cpack.

set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # else put before those of the packages

# Names the packages of the codec libraries that are opened at run time, where no
# dependency generator sees them. They are those that the development packages stand for.
set(development libvpx-dev)
if(CPACK_OCELLE_GPL_CODECS)
  list(APPEND development libx264-dev libx265-dev)
endif()
set(codecs "")
foreach(package IN LISTS development)
  execute_process(COMMAND dpkg-query -W -f "\${Depends}" ${package}
    OUTPUT_VARIABLE depends RESULT_VARIABLE result ERROR_QUIET)
  string(REGEX REPLACE "-dev$" "" library "${package}")
  if(result EQUAL 0 AND depends MATCHES "(${library}-?[0-9]+)")
    list(APPEND codecs "${CMAKE_MATCH_1}")
  else()
    message(FATAL_ERROR "${package} does not tell which package has its library: ${depends}")
  endif()
endforeach()
list(JOIN codecs ", " CPACK_DEBIAN_STANDIN_PACKAGE_RECOMMENDS)
