# qv_run(<args>...): runs a command and stops the script when it fails.
function(qv_run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed (${rc}): ${ARGN}\n${out}\n${err}")
  endif()
  set(QV_LAST_OUTPUT "${out}" PARENT_SCOPE)
endfunction()
