# SPDX-License-Identifier: BSD-3-Clause
# The camera library builds by the commands of docs/packages.md without the GPL's codecs, and then has no
# encoder of theirs.
include("${CMAKE_CURRENT_LIST_DIR}/documented.cmake")

# Of all that would be built only the library is another one then. Not wholly without optimization:
# libvpx's header has functions that would have to be linked then.
documented(packages.md "cmake --preset release" -DCMAKE_BUILD_TYPE=None
  "-DCMAKE_CXX_FLAGS=${CXX_FLAGS} -O1" -DOCELLE_TOOLS=OFF -DOCELLE_BENCHMARKS=OFF -DBUILD_TESTING=OFF)
documented(packages.md "cmake --build --preset release" --target ocelle)
set(built "${tree}/build/release/lib")
# Neither what it needs nor what it opens by itself.
file(STRINGS "${built}/libocelle.so.0" traces REGEX "x26[45]")
if(traces)
  message(FATAL_ERROR "the library knows of x264 or x265: ${traces}")
endif()

# A device may encode by itself; only what the processor does is told from the codecs' libraries.
set(list "${CMAKE_COMMAND}" -E env "QT_PLUGIN_PATH=${PREFIX}/${PLUGIN_DIR}")
run("the tool" ${list} "${PREFIX}/bin/ocelle" list)
expect("${run_output}" "software[.]h264[.]encoder" "the codecs of the ordinary library")
run("the tool with this library" ${list} "LD_LIBRARY_PATH=${built}" "${PREFIX}/bin/ocelle" list)
foreach(codec IN ITEMS vp8.encoder vp9.encoder h264.decoder h265.decoder vp8.decoder vp9.decoder)
  expect("${run_output}" "software.${codec}" "the codecs without the GPL's")
endforeach()
if(run_output MATCHES "software[.]h26[45][.]encoder")
  message(FATAL_ERROR "there is an encoder of the GPL's:\n${run_output}")
endif()
