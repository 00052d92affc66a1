# SPDX-License-Identifier: BSD-3-Clause
# How others find the installed headers and libraries, with CMake or pkg-config. The installed tree
# can be moved: every path in it is relative to the file that names it.
include(CMakePackageConfigHelpers)

set(OCELLE_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/Ocelle")
set(OCELLE_PKGCONFIG_DIR "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

# ocelle_relative_rpath(<from folder> <targets...>): what the installed targets, which go to that
# folder, need is found beside them in the library folder.
function(ocelle_relative_rpath from)
  set(rpath "${CMAKE_INSTALL_FULL_LIBDIR}")
  if(NOT IS_ABSOLUTE "${from}" AND NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    file(RELATIVE_PATH up "/prefix/${from}" "/prefix/${CMAKE_INSTALL_LIBDIR}")
    string(REGEX REPLACE "/$" "" rpath "\$ORIGIN/${up}")
  endif()
  foreach(target IN LISTS ARGN)
    if(TARGET ${target})
      set_target_properties(${target} PROPERTIES INSTALL_RPATH "${rpath}")
    endif()
  endforeach()
endfunction()
ocelle_relative_rpath("${CMAKE_INSTALL_LIBDIR}" ocelle ocelle-qt5 Qt5Palaver)
ocelle_relative_rpath("${OCELLE_QT_PLUGIN_DIR}/mediaservice" ocellebackend)
ocelle_relative_rpath("${CMAKE_INSTALL_LIBDIR}/ocelle" ocelle-commands)
ocelle_relative_rpath("${CMAKE_INSTALL_BINDIR}" ocelle-viewer)

set_target_properties(ocelle-platform PROPERTIES EXPORT_NAME platform)
install(TARGETS ocelle-platform EXPORT OcelleTargets)
install(EXPORT OcelleTargets NAMESPACE Ocelle:: DESTINATION "${OCELLE_CMAKE_DIR}" COMPONENT dev)
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/OcelleConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/OcelleConfig.cmake" INSTALL_DESTINATION "${OCELLE_CMAKE_DIR}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/OcelleConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/OcelleConfig.cmake" "${PROJECT_BINARY_DIR}/OcelleConfigVersion.cmake"
  DESTINATION "${OCELLE_CMAKE_DIR}" COMPONENT dev)

if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(pc_prefix "${CMAKE_INSTALL_PREFIX}")
  set(pc_libdir "${CMAKE_INSTALL_LIBDIR}")
else()
  file(RELATIVE_PATH up "/prefix/${OCELLE_PKGCONFIG_DIR}" "/prefix")
  string(REGEX REPLACE "/$" "" pc_prefix "\${pcfiledir}/${up}")
  set(pc_libdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(pc_includedir "${CMAKE_INSTALL_INCLUDEDIR}")
else()
  set(pc_includedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
foreach(name IN ITEMS ocelle ocelle-qt5 Qt5Palaver)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in" "${PROJECT_BINARY_DIR}/${name}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${name}.pc" DESTINATION "${OCELLE_PKGCONFIG_DIR}" COMPONENT dev)
endforeach()
