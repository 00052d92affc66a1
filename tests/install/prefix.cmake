# SPDX-License-Identifier: BSD-3-Clause
# Installs into an empty prefix and checks that everything is where it belongs.
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

file(REMOVE_RECURSE "${PREFIX}")
run("installation" "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${PREFIX}")
foreach(file IN ITEMS
    "${PLUGIN_DIR}/mediaservice/libocellebackend.so"
    "${PLUGIN_DIR}/mediaservice/libocellebridge.so"
    "${LIBDIR}/libocelle.so" "${LIBDIR}/libocelle.so.0"
    "${LIBDIR}/libocelle-qt5.so" "${LIBDIR}/libocelle-qt5.so.0"
    "${LIBDIR}/libQt5Palaver.so" "${LIBDIR}/libQt5Palaver.so.0"
    "${LIBDIR}/cmake/Ocelle/OcelleConfig.cmake"
    "${LIBDIR}/cmake/Ocelle/OcelleConfigVersion.cmake"
    "${LIBDIR}/cmake/Ocelle/OcelleTargets.cmake"
    "${LIBDIR}/pkgconfig/ocelle.pc" "${LIBDIR}/pkgconfig/ocelle-qt5.pc"
    "${LIBDIR}/pkgconfig/Qt5Palaver.pc"
    include/ocelle/cameramanager.h include/ocelle/camera.h include/ocelle/videooutputqt5.h
    include/palaver/qpvrawvideosourcecontrol.h
    bin/ocelle "${LIBDIR}/ocelle/ocelle-commands.so"
    share/man/man1/ocelle.1.gz share/bash-completion/completions/ocelle
    bin/ocelle-viewer share/man/man1/ocelle-viewer.1.gz
    share/bash-completion/completions/ocelle-viewer)
  if(NOT EXISTS "${PREFIX}/${file}")
    message(FATAL_ERROR "${file} is not installed below ${PREFIX}")
  endif()
endforeach()
# What belongs to no component is in no package.
file(GLOB_RECURSE scripts "${BUILD}/*/cmake_install.cmake")
foreach(script IN LISTS scripts)
  file(STRINGS "${script}" bare REGEX "CMAKE_INSTALL_COMPONENT.*Unspecified")
  if(bare)
    message(FATAL_ERROR "${script} installs something without a component")
  endif()
endforeach()
# Somebody who moves the tree must not be led back to where it was built.
file(GLOB texts "${PREFIX}/${LIBDIR}/cmake/Ocelle/*.cmake" "${PREFIX}/${LIBDIR}/pkgconfig/*.pc")
foreach(text IN LISTS texts)
  file(READ "${text}" content)
  foreach(path IN ITEMS "${SOURCE}" "${BUILD}" "${PREFIX}")
    string(FIND "${content}" "${path}" position)
    if(NOT position EQUAL -1)
      message(FATAL_ERROR "${text} names ${path}")
    endif()
  endforeach()
endforeach()
