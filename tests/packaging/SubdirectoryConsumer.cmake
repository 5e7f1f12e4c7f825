# Builds a consumer that adds the checkout with add_subdirectory() and
# BUILD_TESTING OFF: the library alone, with no test dependency.
include(${CMAKE_CURRENT_LIST_DIR}/QvRun.cmake)
file(REMOVE_RECURSE ${QV_WORK_DIR})
qv_run(${CMAKE_COMMAND} -S ${QV_CONSUMER_DIR} -B ${QV_WORK_DIR} -G ${QV_GENERATOR}
  -DQVSYSBASE_SOURCE=${QV_SOURCE_DIR} -DBUILD_TESTING=OFF)
qv_run(${CMAKE_COMMAND} --build ${QV_WORK_DIR})
qv_run(${QV_WORK_DIR}/consumer)
if(NOT QV_LAST_OUTPUT MATCHES "Cause: consumer")
  message(FATAL_ERROR "unexpected consumer output: ${QV_LAST_OUTPUT}")
endif()
