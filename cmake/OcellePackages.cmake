# SPDX-License-Identifier: BSD-3-Clause
# Debian packages: "cpack -G DEB" makes one of each install component, after the target
# package-files was built. What is known only then is in packaging/debian/cpackproject.cmake.

set(OCELLE_PACKAGE_MAINTAINER "Ocelle developers <developers@ocelle.example>" CACHE STRING
  "Who answers for the packages: a name and an address")
set(_debian "${PROJECT_SOURCE_DIR}/packaging/debian")
set(_made "${PROJECT_BINARY_DIR}/debian") # what is written for them

add_custom_target(package-files)
add_dependencies(package-files ocellebackend ocellebridge ocelle ocelle-qt5 Qt5Palaver)
if(TARGET ocelle-tool)
  add_dependencies(package-files ocelle-tool)
endif()

string(TIMESTAMP _date "%a, %d %b %Y %H:%M:%S +0000" UTC) # heeds SOURCE_DATE_EPOCH
file(WRITE "${_made}/changelog" "ocelle (${PROJECT_VERSION}) unstable; urgency=medium

  * Version ${PROJECT_VERSION}.

 -- ${OCELLE_PACKAGE_MAINTAINER}  ${_date}
")
find_program(OCELLE_GZIP gzip REQUIRED)
execute_process(COMMAND "${OCELLE_GZIP}" -9nf "${_made}/changelog" COMMAND_ERROR_IS_FATAL ANY)

# ocelle_copyright(<file> <comment> <licence>...): as Debian wants it, with the licence's text.
function(ocelle_copyright file comment)
  file(READ "${PROJECT_SOURCE_DIR}/LICENSE" text)
  string(STRIP "${text}" text)
  string(REGEX REPLACE "^Copyright[^\n]*\n\n" "" text "${text}")
  string(REPLACE "\n\n" "\n.\n" text "${text}")
  string(REPLACE "\n" "\n " text "${text}")
  file(WRITE "${file}"
    "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n"
    "Upstream-Name: Ocelle\n${comment}\n"
    "Files: *\nCopyright: 2026 the Ocelle developers\nLicense: BSD-3-Clause\n ${text}\n")
endfunction()
ocelle_copyright("${_made}/copyright" "")
if(OCELLE_GPL_CODECS)
  set(_codecs "built to use the H.264 encoder x264 and the H.265 encoder x265")
else()
  set(_codecs "built without x264 and x265")
endif()
ocelle_copyright("${_made}/copyright-standin" "Comment:
 The source is under the BSD licence below. This package's libocelle is
 ${_codecs}.
 x264 and x265 are under the GNU General Public License, version 2 or later,
 and so are FFmpeg's libavformat, libavcodec, libavutil and libswscale, which it
 links, where they were configured with such parts, as Debian's are.
 Combined with any of them the library may only be passed on under the terms
 of that licence: /usr/share/common-licenses/GPL-2 on Debian systems.
 .
 The CMake option OCELLE_GPL_CODECS=OFF builds the library without x264 and x265.
")
ocelle_copyright("${_made}/copyright-tools" "Comment:
 The source is under the BSD licence below. The programs ocelle and
 ocelle-viewer link FFmpeg's libavformat, libavcodec, libavutil and libswscale.
 These are under the GNU General Public License, version 2 or later, where they
 were configured with parts that are, as Debian's are. Combined with them the
 programs may only be passed on under the terms of that licence:
 /usr/share/common-licenses/GPL-2 on Debian systems.
")

# ocelle_debian_package(<component> <section> <summary> <description>)
macro(ocelle_debian_package component section summary description)
  string(TOUPPER ${component} _key)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  set(CPACK_DEBIAN_${_key}_PACKAGE_NAME ocelle-${component})
  set(CPACK_DEBIAN_${_key}_PACKAGE_SECTION ${section})
  set(CPACK_COMPONENT_${_key}_DESCRIPTION "${summary}\n${description}")
  set(_copyright "${_made}/copyright")
  if(EXISTS "${_made}/copyright-${component}")
    set(_copyright "${_made}/copyright-${component}")
  endif()
  # No part of an ordinary installation.
  install(FILES "${_copyright}" DESTINATION share/doc/ocelle-${component} RENAME copyright
    COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES "${_made}/changelog.gz" DESTINATION share/doc/ocelle-${component}
    COMPONENT ${component} EXCLUDE_FROM_ALL)
endmacro()

set(CPACK_COMPONENTS_ALL "")
ocelle_debian_package(backend libs "camera and video codecs for Qt 5 Multimedia: the plugin"
"Gives Qt applications camera preview with a second consumer of the same
pictures, a video encoder and a video decoder. The cameras and codecs are
those of three platform libraries, libocelle, libocelle-qt5 and libQt5Palaver:
a device brings its own, on a desktop ocelle-standin has them.")
ocelle_debian_package(standin libs "camera and video codecs for Qt 5 Multimedia: desktop platform"
"The platform libraries libocelle, libocelle-qt5 and libQt5Palaver as they are
on an ordinary computer: webcams, video files and a test pattern as cameras,
video encoders and decoders, and pictures on Qt's video surfaces.
A device with platform libraries of its own must not have this package.")
ocelle_debian_package(bridge libs "camera and video codecs for Qt 5 Multimedia: standard camera"
"Offers the back end's cameras as Qt's standard ones, so that applications
which know nothing of it have them.")
ocelle_debian_package(tools video "camera and video codecs for Qt 5 Multimedia: tools"
"The command ocelle lists, shows, records and checks cameras, encodes, plays and
verifies videos, and finds out why a camera does not work. ocelle-viewer is a
camera application.")
ocelle_debian_package(dev libdevel "camera and video codecs for Qt 5 Multimedia: development files"
"Headers of the platform libraries, and what CMake, pkg-config and the linker
need to build programs with them.")

# The plugin's platform libraries are the device's; packages that have them provide ocelle-platform.
set(CPACK_DEBIAN_BACKEND_PACKAGE_SUGGESTS "ocelle-platform, ocelle-bridge, ocelle-tools")
set(CPACK_DEBIAN_STANDIN_PACKAGE_PROVIDES "ocelle-platform")
set(CPACK_DEBIAN_STANDIN_PACKAGE_CONFLICTS "ocelle-platform")
set(CPACK_DEBIAN_STANDIN_PACKAGE_SUGGESTS "ocelle-backend")
set(CPACK_DEBIAN_BRIDGE_PACKAGE_DEPENDS "ocelle-backend (= ${PROJECT_VERSION})")
# The tools ask the stand-in more than a platform library has to answer.
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "ocelle-standin (= ${PROJECT_VERSION}), \
ocelle-backend (= ${PROJECT_VERSION}), ocelle-bridge (= ${PROJECT_VERSION}), \
qml-module-qtmultimedia, qml-module-qtquick2, qml-module-qtquick-controls2, \
qml-module-qtquick-layouts, qml-module-qtquick-window2, libqt5svg5")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
  "ocelle-standin (= ${PROJECT_VERSION}), qtbase5-dev, qtmultimedia5-dev")
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS "ocelle-backend, ocelle-tools")

# Programs that link the libraries take any platform's.
file(WRITE "${_made}/shlibs" "")
foreach(_library IN ITEMS libocelle libocelle-qt5 libQt5Palaver)
  file(APPEND "${_made}/shlibs"
    "${_library} 0 ocelle-standin (>= ${PROJECT_VERSION}) | ocelle-platform\n")
endforeach()
file(WRITE "${_made}/triggers" "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_STANDIN_PACKAGE_CONTROL_EXTRA "${_made}/shlibs" "${_made}/triggers")
install(FILES "${_debian}/lintian-overrides" DESTINATION share/lintian/overrides
  RENAME ocelle-standin COMPONENT standin EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ocelle)
set(CPACK_PACKAGE_VENDOR "Ocelle developers")
set(CPACK_PACKAGE_CONTACT "${OCELLE_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
  GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE ocelle)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
# Our own libraries are found here, and belong to no package whose name could be added.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  "${PROJECT_BINARY_DIR}/lib" "${PROJECT_BINARY_DIR}/standin/ocelle-qt5")
set(CPACK_PROJECT_CONFIG_FILE "${_debian}/cpackproject.cmake")
set(CPACK_PRE_BUILD_SCRIPTS "${_debian}/systempaths.cmake")
set(CPACK_OCELLE_GPL_CODECS "${OCELLE_GPL_CODECS}")
include(CPack)
