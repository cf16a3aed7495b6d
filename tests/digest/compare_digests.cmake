# Runs two digest programs (OWN through EMULATOR, REFERENCE through
# REFERENCE_EMULATOR; either may be empty) and fails unless they print the
# same line.
if(NOT EXISTS ${REFERENCE})
  message(FATAL_ERROR "no x86-64 digest program at ${REFERENCE}: build the default preset first")
endif()
execute_process(COMMAND ${EMULATOR} ${OWN} OUTPUT_VARIABLE own RESULT_VARIABLE own_status)
execute_process(COMMAND ${REFERENCE_EMULATOR} ${REFERENCE} OUTPUT_VARIABLE reference RESULT_VARIABLE reference_status)
if(NOT own_status EQUAL 0 OR NOT reference_status EQUAL 0)
  message(FATAL_ERROR "a digest program failed (${own_status}, ${reference_status})")
endif()
if(NOT own STREQUAL reference)
  message(FATAL_ERROR "results differ:\n  ${OWN}: ${own}  ${REFERENCE}: ${reference}")
endif()
message(STATUS "bit-identical: ${own}")
