# SPDX-License-Identifier: BSD-3-Clause
# The camera library builds without the GPL's codecs, and then has no encoder of theirs.
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

# Not wholly without optimization: libvpx's header has functions that would have to be linked then.
run("configuration" "${CMAKE_COMMAND}" -S "${SOURCE}" -B "${WORK}" -G Ninja
  -DCMAKE_BUILD_TYPE=None "-DCMAKE_CXX_FLAGS=${CXX_FLAGS} -O1" -DOCELLE_GPL_CODECS=OFF
  -DOCELLE_TOOLS=OFF -DOCELLE_BENCHMARKS=OFF -DBUILD_TESTING=OFF)
run("build" "${CMAKE_COMMAND}" --build "${WORK}" --target ocelle)
file(STRINGS "${WORK}/lib/libocelle.so.0" traces REGEX "x26[45]")
if(traces)
  message(FATAL_ERROR "the library knows of x264 or x265: ${traces}")
endif()

# A device may encode by itself; only what the processor does is told from the codecs' libraries.
set(list "${CMAKE_COMMAND}" -E env "QT_PLUGIN_PATH=${PREFIX}/${PLUGIN_DIR}")
run("the tool" ${list} "${PREFIX}/bin/ocelle" list)
expect("${run_output}" "software[.]h264[.]encoder" "the codecs of the ordinary library")
run("the tool with this library" ${list} "LD_LIBRARY_PATH=${WORK}/lib" "${PREFIX}/bin/ocelle" list)
expect("${run_output}" "software[.]vp8[.]encoder" "the codecs without the GPL's")
if(run_output MATCHES "software[.]h26[45][.]encoder")
  message(FATAL_ERROR "there is an encoder of the GPL's:\n${run_output}")
endif()
