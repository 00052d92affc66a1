# SPDX-License-Identifier: BSD-3-Clause
# The installed plugins give an ordinary Qt application its cameras.
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

run("an application with the installed plugins" "${CAMERA_CHOICE}" "${PREFIX}/${PLUGIN_DIR}")
expect("${run_output}" "service OcelleCaptureService" "the camera service")
expect("${run_output}" "camera pattern:back[|]" "the cameras")
run("the installed tool" "${CMAKE_COMMAND}" -E env "QT_PLUGIN_PATH=${PREFIX}/${PLUGIN_DIR}"
  "${PREFIX}/bin/ocelle" list)
expect("${run_output}" "pattern:front" "the tool's list")
