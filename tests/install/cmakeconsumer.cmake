# SPDX-License-Identifier: BSD-3-Clause
# A project of somebody else finds the headers and libraries with find_package.
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

file(REMOVE_RECURSE "${WORK}")
run("configuration" "${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/consumer" -B "${WORK}" -G Ninja
  "-DCMAKE_PREFIX_PATH=${PREFIX}" "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}")
run("build" "${CMAKE_COMMAND}" --build "${WORK}")
run("the program" "${WORK}/consumer")
expect("${run_output}" "camera pattern:back\n" "the program's cameras")
