# Checks that no #include under src/ and include/ points against the layers:
#
#   foundation  <-  text         <-  display
#   foundation  <-  persistence  <-  display
#   foundation  <-  numerics     <-  display
#
# text, persistence and numerics do not know each other. The files directly in
# src/ (the library-lifetime unit) and the umbrella header stand above the
# layers: they may include anything, and nothing inside a layer may include them.
#
# A file in src/<subsystem>/ belongs to that subsystem. A public header belongs
# to the subsystem whose src folder holds the unit of the same name (compared
# without case: GroupDestructor.h is implemented by Groupdestructor.cpp), or to
# the one kHeaderOwners names for it; a public header that neither places fails
# the check, so every new header is placed on purpose.
#
# Usage: cmake -DROOT=<directory holding src/ and include/> -P CheckLayering.cmake
# Prints one "layering: " line per violation and fails when there is any.

cmake_minimum_required(VERSION 3.25)

if(NOT DEFINED ROOT)
  message(FATAL_ERROR "usage: cmake -DROOT=<source directory> -P CheckLayering.cmake")
endif()

set(kSubsystems foundation text persistence numerics display)
# Public headers whose family has no unit of the same name.
set(kHeaderOwners
  Export=foundation
  QvCallbackProt=foundation
  RefCounterProt=foundation
  CellValue=text
  IntelSPLHandler=numerics
  RandomStreams=numerics
  LbVector=display
  qvsysbase=top)

# What each layer may include besides itself and foundation.
set(kAllowed_display text persistence numerics)

# Sets <out> to the layer of <file> (relative to ROOT), "" when unknown.
function(layer_of file out)
  set(layer "")
  if(file MATCHES "^src/[^/]+$")
    set(layer top)
  elseif(file MATCHES "^src/([^/]+)/")
    set(layer ${CMAKE_MATCH_1})
  elseif(file MATCHES "^include/qvsysbase/([^/]+)\\.h$")
    string(TOLOWER "${CMAKE_MATCH_1}" name)
    if(DEFINED owner_${name})
      set(layer ${owner_${name}})
    endif()
  endif()
  set(${out} "${layer}" PARENT_SCOPE)
endfunction()

# Sets <out> to the file (relative to ROOT) that `#include <path>` in <from>
# reaches, "" for a header outside the tree. Quoted includes look beside the
# including file first; both forms then search src/ and include/, as the build does.
function(resolve from path quoted out)
  get_filename_component(dir "${from}" DIRECTORY)
  set(candidates src/${path} include/${path})
  if(quoted)
    list(PREPEND candidates ${dir}/${path})
  endif()
  foreach(candidate IN LISTS candidates)
    if(EXISTS "${ROOT}/${candidate}" AND NOT IS_DIRECTORY "${ROOT}/${candidate}")
      file(REAL_PATH "${ROOT}/${candidate}" absolute)
      file(REAL_PATH "${ROOT}" root)
      file(RELATIVE_PATH relative "${root}" "${absolute}")
      set(${out} "${relative}" PARENT_SCOPE)
      return()
    endif()
  endforeach()
  set(${out} "" PARENT_SCOPE)
endfunction()

function(is_allowed from to out)
  set(allowed FALSE)
  if(from STREQUAL to OR from STREQUAL "top" OR to STREQUAL "foundation")
    set(allowed TRUE)
  elseif(to IN_LIST kAllowed_${from})
    set(allowed TRUE)
  endif()
  set(${out} ${allowed} PARENT_SCOPE)
endfunction()

set(problems "")

# Owners of the public headers: the explicit table, then the units' folders.
foreach(entry IN LISTS kHeaderOwners)
  string(REPLACE "=" ";" pair "${entry}")
  list(GET pair 0 name)
  list(GET pair 1 layer)
  string(TOLOWER "${name}" name)
  set(owner_${name} ${layer})
endforeach()
file(GLOB_RECURSE units RELATIVE "${ROOT}" "${ROOT}/src/*/*.cpp")
foreach(unit IN LISTS units)
  string(REGEX MATCH "^src/([^/]+)/" _ "${unit}")
  set(layer ${CMAKE_MATCH_1})
  get_filename_component(name "${unit}" NAME_WE)
  string(TOLOWER "${name}" name)
  if(NOT DEFINED owner_${name})
    set(owner_${name} ${layer})
  endif()
endforeach()

file(GLOB_RECURSE files RELATIVE "${ROOT}"
  "${ROOT}/src/*.h" "${ROOT}/src/*.hpp" "${ROOT}/src/*.cpp" "${ROOT}/src/*.cc"
  "${ROOT}/include/*.h" "${ROOT}/include/*.hpp")
list(SORT files)
foreach(file IN LISTS files)
  layer_of("${file}" from)
  if(NOT from IN_LIST kSubsystems AND NOT from STREQUAL "top")
    list(APPEND problems "layering: ${file}: belongs to no known layer")
    continue()
  endif()
  file(STRINGS "${ROOT}/${file}" includes REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"][^>\"]+[>\"]")
  foreach(line IN LISTS includes)
    string(REGEX MATCH "[<\"]([^>\"]+)([>\"])" _ "${line}")
    set(path "${CMAKE_MATCH_1}")
    if(CMAKE_MATCH_2 STREQUAL "\"")
      set(quoted TRUE)
    else()
      set(quoted FALSE)
    endif()
    resolve("${file}" "${path}" ${quoted} target)
    if(target STREQUAL "")
      continue()  # a system or third-party header
    endif()
    layer_of("${target}" to)
    if(to STREQUAL "")
      continue()  # reported once as a file of its own
    endif()
    is_allowed(${from} ${to} allowed)
    if(NOT allowed)
      list(APPEND problems "layering: ${file}: ${from} -> ${to} (${path})")
    endif()
  endforeach()
endforeach()

if(problems)
  foreach(problem IN LISTS problems)
    message(NOTICE "${problem}")
  endforeach()
  list(LENGTH problems count)
  message(FATAL_ERROR "${count} problem(s) with the layering")
endif()
list(LENGTH files count)
message(STATUS "layering: ${count} files, no include against the layers")
