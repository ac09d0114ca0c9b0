# Runs a generator that writes a folder of files and compares every file with
# the copy stored in the project; a stored file the generator no longer makes
# counts as a difference too.
file(REMOVE_RECURSE ${OUT})
file(MAKE_DIRECTORY ${OUT})
execute_process(COMMAND ${GENERATOR} ${OUT} RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "generator ${GENERATOR} failed: ${rc}")
endif()
file(GLOB made RELATIVE ${OUT} ${OUT}/*)
file(GLOB stored RELATIVE ${STORED} ${STORED}/${PATTERN})
foreach(f IN LISTS made stored)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${OUT}/${f} ${STORED}/${f} RESULT_VARIABLE diff)
  if(NOT diff EQUAL 0)
    message(FATAL_ERROR "${STORED}/${f} differs from the generator's ${OUT}/${f}; regenerate with 'make data'")
  endif()
endforeach()
message(STATUS "${STORED}: ${made} match the generator")
