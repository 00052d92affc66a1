# SPDX-License-Identifier: BSD-3-Clause
# ocelle_test(<name> [STANDARD 14|17] [SOURCES ...] [LIBRARIES ...] [LABELS ...] [ENVIRONMENT ...]
#             [TIMEOUT seconds] [SERIAL] [X11])
# One Qt Test program from <name>.cpp, run by CTest without a display; with X11, on an X server that
# is there for this test only.
function(ocelle_test name)
  cmake_parse_arguments(ARG "SERIAL;X11" "STANDARD;TIMEOUT" "SOURCES;LIBRARIES;LABELS;ENVIRONMENT" ${ARGN})
  if(NOT ARG_STANDARD)
    set(ARG_STANDARD 17)
  endif()
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  add_executable(${name} ${name}.cpp ${ARG_SOURCES})
  ocelle_qt_target(${name} ${ARG_STANDARD})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} Qt5::Test)
  set_target_properties(${name} PROPERTIES ENABLE_EXPORTS ON)
  if(OCELLE_SANITIZER STREQUAL "tsan")
    target_link_libraries(${name} PRIVATE ocelle-tsan-qt)
  endif()
  set(platform offscreen)
  set(launcher "")
  if(ARG_X11)
    set(platform xcb)
    set(launcher xvfb-run --auto-servernum "--server-args=-screen 0 1280x1024x24")
  endif()
  add_test(NAME ${name} COMMAND ${launcher} $<TARGET_FILE:${name}>)
  set_tests_properties(${name} PROPERTIES
    TIMEOUT ${ARG_TIMEOUT}
    LABELS "${ARG_LABELS}"
    ENVIRONMENT "QT_QPA_PLATFORM=${platform};QT_PLUGIN_PATH=${OCELLE_PLUGIN_OUTPUT_DIR};${ARG_ENVIRONMENT}")
  if(ARG_SERIAL)
    set_tests_properties(${name} PROPERTIES RUN_SERIAL ON)
  endif()
endfunction()
