# SPDX-License-Identifier: BSD-3-Clause
# cmake -DNM=... -DLIBRARY=... -P exports.cmake
# Fails if a library exports anything but the platform's interfaces.
execute_process(COMMAND "${NM}" --dynamic --defined-only --demangle "${LIBRARY}"
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "\n$" "" symbols "${symbols}")
string(REPLACE "\n" ";" symbols "${symbols}")
set(classes "Camera|CameraListener|CameraManager|CameraManagerListener|CodecManager")
string(APPEND classes "|VideoDecoder|VideoDecoderListener|VideoEncoder|VideoEncoderListener")
set(member "Veltra::Ocelle::(${classes})::(~?[A-Za-z0-9]+)\\(.*\\)")
set(data "(vtable|typeinfo|typeinfo name) for Veltra::Ocelle::(${classes})")
set(function "OcelleManager|OcelleCodecManager")
string(APPEND function # for tools
  "|Veltra::Ocelle::(cameraRates|cameraStatistics|examineCameraNodes)\\(\\)"
  "|Veltra::Ocelle::examineCameraSelection.*\\(char const\\*\\)")
set(found 0)
foreach(symbol IN LISTS symbols)
  string(REGEX REPLACE "^[0-9a-f]+ [A-Za-z] " "" name "${symbol}")
  if(NOT name MATCHES "^(${member}|${data}|${function})$")
    message(SEND_ERROR "exported, but not meant to be: ${name}")
  endif()
  if(name MATCHES "^(${function}|vtable for Veltra::Ocelle::(${classes}))$")
    math(EXPR found "${found} + 1")
  endif()
endforeach()
if(NOT found EQUAL 15)
  message(SEND_ERROR "6 functions and 9 virtual tables are to be exported, ${found} are")
endif()
