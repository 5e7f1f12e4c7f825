# Warning flags live here only; presets switch -Werror on through QVSYSBASE_WERROR.
function(qv_target_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  if(QVSYSBASE_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
