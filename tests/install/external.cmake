# SPDX-License-Identifier: BSD-3-Clause
# Builds the plugins against libraries as they are on a device, each a single file named like its
# soname, and lets an application use the result.
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

set(device "${WORK}/device")
foreach(name IN ITEMS libocelle.so.0 libocelle-qt5.so.0 libQt5Palaver.so.0)
  file(REAL_PATH "${PREFIX}/${LIBDIR}/${name}" real)
  file(MAKE_DIRECTORY "${device}/lib")
  file(COPY_FILE "${real}" "${device}/lib/${name}" ONLY_IF_DIFFERENT)
endforeach()
run("configuration" "${CMAKE_COMMAND}" --preset external -S "${SOURCE}" -B "${WORK}/build"
  -DCMAKE_BUILD_TYPE=None "-DOCELLE_PLATFORM_DIR=${device}" "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}")
run("build" "${CMAKE_COMMAND}" --build "${WORK}/build")

set(backend "${WORK}/build/plugins/mediaservice/libocellebackend.so")
run("readelf" readelf --dynamic --wide "${backend}")
foreach(name IN ITEMS libocelle.so.0 libocelle-qt5.so.0 libQt5Palaver.so.0)
  expect("${run_output}" "NEEDED[^\n]*\\[${name}\\]" "what the plugin needs")
endforeach()
run("an application with the plugins" "${CAMERA_CHOICE}" "${WORK}/build/plugins")
expect("${run_output}" "service OcelleCaptureService" "the camera service")
expect("${run_output}" "camera pattern:back[|]" "the cameras")
