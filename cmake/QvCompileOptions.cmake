# Warning flags live here only; presets switch -Werror on through QVSYSBASE_WERROR.
function(qv_target_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  # Checks the lock annotations of qvsysbase/CriticalSection.h (clang only).
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(${target} PRIVATE -Wthread-safety)
  endif()
  if(QVSYSBASE_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# For units whose loops are written to be vectorised: without errno the compiler
# may turn sqrt into one instruction, and GCC's default cost model at -O2 refuses
# loops that need a run-time overlap check between their arrays.
set(QV_VECTOR_LOOP_OPTIONS -fno-math-errno $<$<CXX_COMPILER_ID:GNU>:-fvect-cost-model=dynamic>)
