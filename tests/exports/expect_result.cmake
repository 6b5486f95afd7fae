# Runs PROGRAM and fails unless its result is EXPECTED.
execute_process(COMMAND ${PROGRAM} RESULT_VARIABLE result)
if(NOT result EQUAL EXPECTED)
  message(FATAL_ERROR "${PROGRAM} gave ${result} instead of ${EXPECTED}")
endif()
