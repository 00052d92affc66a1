# SPDX-License-Identifier: BSD-3-Clause
# Builds the plugins by the commands of docs/platform.md against libraries as they are on a device, each
# a single file named like its soname, and lets an application use what they install.
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

set(device "${WORK}/device")
foreach(name IN ITEMS libocelle.so.0 libocelle-qt5.so.0 libQt5Palaver.so.0)
  file(REAL_PATH "${PREFIX}/${LIBDIR}/${name}" real)
  file(MAKE_DIRECTORY "${device}/lib")
  file(COPY_FILE "${real}" "${device}/lib/${name}" ONLY_IF_DIFFERENT)
endforeach()

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

# documented(<line>): runs the one command of docs/platform.md that begins like that, with the folders
# here in place of the document's and with more arguments behind it.
function(documented line)
  file(STRINGS "${SOURCE}/docs/platform.md" lines REGEX "^${line}")
  list(LENGTH lines count)
  if(NOT count EQUAL 1)
    message(FATAL_ERROR "docs/platform.md has ${count} commands that begin with ${line}")
  endif()
  string(REPLACE "/path/to/the/device/usr" "${device}" command "${lines}")
  string(REPLACE "/path/to/image" "${WORK}/image" command "${command}")
  run("${lines}" "${CMAKE_COMMAND}" -E chdir "${tree}" bash -c "${command} \"$@\"" bash ${ARGN})
endfunction()
file(REMOVE_RECURSE "${WORK}/image")
documented("cmake --preset external" -DCMAKE_BUILD_TYPE=None "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}")
documented("cmake --build --preset external")
documented("DESTDIR=")

set(plugins "usr/${PLUGIN_DIR}")
file(GLOB_RECURSE installed LIST_DIRECTORIES false RELATIVE "${WORK}/image" "${WORK}/image/*")
list(SORT installed)
set(expected "${plugins}/mediaservice/libocellebackend.so" "${plugins}/mediaservice/libocellebridge.so")
if(NOT installed STREQUAL expected)
  message(FATAL_ERROR "installed is ${installed} and not ${expected}")
endif()
run("readelf" readelf --dynamic --wide "${WORK}/image/${plugins}/mediaservice/libocellebackend.so")
foreach(name IN ITEMS libocelle.so.0 libocelle-qt5.so.0 libQt5Palaver.so.0)
  expect("${run_output}" "NEEDED[^\n]*\\[${name}\\]" "what the plugin needs")
endforeach()
if(run_output MATCHES "R(UN)?PATH[^\n]*")
  message(FATAL_ERROR "the plugin has a path of where it was built: ${CMAKE_MATCH_0}")
endif()
run("an application with the plugins" "${CMAKE_COMMAND}" -E env "LD_LIBRARY_PATH=${device}/lib"
  "${CAMERA_CHOICE}" "${WORK}/image/${plugins}")
expect("${run_output}" "service OcelleCaptureService" "the camera service")
expect("${run_output}" "camera pattern:back[|]" "the cameras")
