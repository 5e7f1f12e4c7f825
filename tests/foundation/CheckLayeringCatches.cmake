# Proves that CheckLayering.cmake catches what it is for: builds a small source
# tree with known good and bad includes under WORK_DIR, runs the checker on it
# and requires it to fail with exactly the expected reports.
#
# Usage: cmake -DCHECKER=<CheckLayering.cmake> -DWORK_DIR=<scratch dir> -P CheckLayeringCatches.cmake

cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE "${WORK_DIR}")

# Writes a file of the fixture holding one #include line per argument.
function(fixture file)
  set(text "")
  foreach(include IN LISTS ARGN)
    string(APPEND text "#include ${include}\n")
  endforeach()
  file(WRITE "${WORK_DIR}/${file}" "${text}")
endfunction()

# Allowed: within a layer, down to foundation, display down to the middle layers,
# the top unit and the umbrella header to anything, headers outside the tree.
fixture(src/foundation/Base.cpp [["qvsysbase/Base.h"]] <vector>)
fixture(include/qvsysbase/Base.h <cstdint>)
fixture(src/text/Words.cpp [["Words.h"]] [["qvsysbase/Words.h"]] [["qvsysbase/Base.h"]])
fixture(src/text/Words.h)
fixture(include/qvsysbase/Words.h [["qvsysbase/Base.h"]])
fixture(src/persistence/Format.h [["foundation/Base.h"]])
fixture(src/foundation/Base.h)
fixture(src/display/Grid.cpp [["qvsysbase/Words.h"]] [["persistence/Format.h"]] <qvsysbase/Kernels.h>)
fixture(include/qvsysbase/Kernels.h [["qvsysbase/Base.h"]])
fixture(src/numerics/Kernels.cpp [["qvsysbase/Kernels.h"]])
fixture(include/qvsysbase/qvsysbase.h [["qvsysbase/Words.h"]] [["qvsysbase/Kernels.h"]])
fixture(src/Library.cpp [["text/Words.h"]] [["LibraryHooks.h"]])
fixture(src/LibraryHooks.h)
# Against the layers, one of each kind.
fixture(src/text/Spell.cpp [["persistence/Format.h"]] [["LibraryHooks.h"]])
fixture(src/numerics/Solve.cpp <qvsysbase/Words.h> [["../display/Grid.cpp"]])
fixture(include/qvsysbase/Base2.h [["qvsysbase/Kernels.h"]] [["qvsysbase/qvsysbase.h"]])
fixture(src/foundation/Base2.cpp)
fixture(include/qvsysbase/Stray.h)
fixture(src/tools/Odd.cpp)

set(expected
  "layering: include/qvsysbase/Base2.h: foundation -> numerics (qvsysbase/Kernels.h)"
  "layering: include/qvsysbase/Base2.h: foundation -> top (qvsysbase/qvsysbase.h)"
  "layering: include/qvsysbase/Stray.h: belongs to no known layer"
  "layering: src/numerics/Solve.cpp: numerics -> text (qvsysbase/Words.h)"
  "layering: src/numerics/Solve.cpp: numerics -> display (../display/Grid.cpp)"
  "layering: src/text/Spell.cpp: text -> persistence (persistence/Format.h)"
  "layering: src/text/Spell.cpp: text -> top (LibraryHooks.h)"
  "layering: src/tools/Odd.cpp: belongs to no known layer")

execute_process(COMMAND "${CMAKE_COMMAND}" -DROOT=${WORK_DIR} -P "${CHECKER}"
  RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
string(REGEX MATCHALL "layering: [^\n]*" reported "${out}${err}")
list(JOIN expected "\n" expectedText)
list(JOIN reported "\n" reportedText)
if(result EQUAL 0 OR NOT reportedText STREQUAL expectedText)
  message(FATAL_ERROR "the checker exited with ${result} and reported\n${reportedText}\n"
                      "instead of failing with\n${expectedText}")
endif()
message(STATUS "the checker caught every planted violation")
