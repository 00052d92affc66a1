# SPDX-License-Identifier: BSD-3-Clause
# What every target here shares: warnings, hidden symbols, language level and where plugins go.

set(OCELLE_PLUGIN_OUTPUT_DIR "${CMAKE_BINARY_DIR}/plugins")

# Qt's plugin folder, relative to the prefix where Qt lives below it.
get_target_property(_qmake Qt5::qmake IMPORTED_LOCATION)
execute_process(COMMAND "${_qmake}" -query QT_INSTALL_PLUGINS
  OUTPUT_VARIABLE _qt_plugins OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${_qmake}" -query QT_INSTALL_PREFIX
  OUTPUT_VARIABLE _qt_prefix OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
file(RELATIVE_PATH _qt_plugins_relative "${_qt_prefix}" "${_qt_plugins}")
set(OCELLE_QT_PLUGIN_DIR "${_qt_plugins_relative}" CACHE STRING
  "Qt's plugin folder; a relative path is below the install prefix")

add_library(ocelle-warnings INTERFACE)
target_compile_options(ocelle-warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align
  -Wunused -Wformat=2 -Wimplicit-fallthrough -Werror
  $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments>) # of Qt's logging macros
if(NOT OCELLE_SANITIZER) # whose checks hide from the compiler what is known of a pointer
  target_compile_options(ocelle-warnings INTERFACE -Wnull-dereference)
endif()

# ocelle_target(<target> <standard>): the settings of every target of this project.
function(ocelle_target target standard)
  set_target_properties(${target} PROPERTIES
    CXX_STANDARD ${standard}
    CXX_STANDARD_REQUIRED ON
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  target_compile_definitions(${target} PRIVATE
    QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:ocelle-warnings>)
endfunction()

# ocelle_qt_target(<target> <standard>): the same, with moc.
function(ocelle_qt_target target standard)
  ocelle_target(${target} ${standard})
  set_target_properties(${target} PROPERTIES AUTOMOC ON)
endfunction()

# ocelle_plugin(<target> <component>): a Qt media service plugin, found below
# ${OCELLE_PLUGIN_OUTPUT_DIR} and installed with that component. It exports the two functions of a
# Qt plugin and nothing else.
function(ocelle_plugin target component)
  set(map "${PROJECT_SOURCE_DIR}/cmake/qtplugin.map")
  set_target_properties(${target} PROPERTIES
    LIBRARY_OUTPUT_DIRECTORY "${OCELLE_PLUGIN_OUTPUT_DIR}/mediaservice"
    LINK_DEPENDS "${map}")
  target_link_options(${target} PRIVATE
    "LINKER:--no-undefined" "LINKER:--as-needed" "LINKER:--version-script=${map}")
  install(TARGETS ${target} LIBRARY DESTINATION "${OCELLE_QT_PLUGIN_DIR}/mediaservice"
    COMPONENT ${component})
endfunction()
