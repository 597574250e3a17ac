# Runs a program and compares its standard output with a file.
#   cmake -DPROGRAM=... -DARG=... -DEXPECTED=... -P check_output.cmake
execute_process(COMMAND ${PROGRAM} ${ARG} OUTPUT_VARIABLE out RESULT_VARIABLE status TIMEOUT 30)
file(READ ${EXPECTED} expected)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} exited with ${status}; output:\n${out}")
endif()
if(NOT out STREQUAL expected)
  message(FATAL_ERROR "output differs.\nexpected:\n${expected}\nactual:\n${out}")
endif()
