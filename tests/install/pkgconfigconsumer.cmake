# SPDX-License-Identifier: BSD-3-Clause
# The same program, found and built with pkg-config.
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
set(ENV{PKG_CONFIG_PATH} "${PREFIX}/${LIBDIR}/pkgconfig")
run("pkg-config" pkg-config --cflags --libs ocelle-qt5 ocelle Qt5Palaver)
separate_arguments(flags UNIX_COMMAND "${run_output}")
separate_arguments(cxx_flags UNIX_COMMAND "${CXX_FLAGS}")
run("pkg-config" pkg-config --variable=libdir ocelle)
string(STRIP "${run_output}" libdir)
run("compilation" c++ -std=c++14 -fPIC ${cxx_flags} -o "${WORK}/consumer"
  "${CMAKE_CURRENT_LIST_DIR}/consumer/main.cpp" ${flags} "-Wl,-rpath,${libdir}")
run("the program" "${WORK}/consumer")
expect("${run_output}" "camera pattern:back\n" "the program's cameras")
