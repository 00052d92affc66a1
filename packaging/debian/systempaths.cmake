# SPDX-License-Identifier: BSD-3-Clause
# Run by cpack on the files of the packages: these are in the system's folders, so no program and no
# library has to be told where its libraries are.
file(GLOB_RECURSE files LIST_DIRECTORIES OFF
  "${CPACK_TEMPORARY_DIRECTORY}/*/usr/bin/*" "${CPACK_TEMPORARY_DIRECTORY}/*/usr/lib/*.so*")
foreach(file IN LISTS files)
  if(NOT IS_SYMLINK "${file}")
    file(RPATH_REMOVE FILE "${file}")
  endif()
endforeach()
