# SPDX-License-Identifier: BSD-3-Clause
# Builds the plugins by the commands of docs/platform.md against libraries as they are on a device, each
# a single file named like its soname, and lets an application use what they install.
include("${CMAKE_CURRENT_LIST_DIR}/documented.cmake")

set(device "${WORK}/device")
foreach(name IN ITEMS libocelle.so.0 libocelle-qt5.so.0 libQt5Palaver.so.0)
  file(REAL_PATH "${PREFIX}/${LIBDIR}/${name}" real)
  file(MAKE_DIRECTORY "${device}/lib")
  file(COPY_FILE "${real}" "${device}/lib/${name}" ONLY_IF_DIFFERENT)
endforeach()

file(REMOVE_RECURSE "${WORK}/image")
set(in_place_of_/path/to/the/device/usr "${device}")
set(in_place_of_/path/to/image "${WORK}/image")
documented(platform.md "cmake --preset external"
  -DCMAKE_BUILD_TYPE=None "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}")
documented(platform.md "cmake --build --preset external")
documented(platform.md "DESTDIR=")

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
