# SPDX-License-Identifier: BSD-3-Clause
# run(<what> <command...>): ends the test where the command fails; its output is in run_output.
function(run what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${what} failed (${result}):\n${output}")
  endif()
  set(run_output "${output}" PARENT_SCOPE)
endfunction()

# expect(<text> <regular expression> <what>): ends the test where the text does not match.
function(expect text pattern what)
  if(NOT text MATCHES "${pattern}")
    message(FATAL_ERROR "${what}: nothing matches \"${pattern}\" in:\n${text}")
  endif()
endfunction()
