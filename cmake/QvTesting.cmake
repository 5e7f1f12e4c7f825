# Test helpers: one executable per subsystem, every test visible to CTest.
find_package(GTest REQUIRED)
include(GoogleTest)

# qv_add_test_suite(<subsystem> <sources>...): builds qvsysbase_<subsystem>_tests
# from the listed files, linked against the library's objects (so internal units
# are reachable) and GoogleTest/GoogleMock.
function(qv_add_test_suite subsystem)
  set(target qvsysbase_${subsystem}_tests)
  add_executable(${target} ${ARGN})
  target_link_libraries(${target} PRIVATE qvsysbase_objects GTest::gmock GTest::gtest_main)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/tests)
  target_compile_definitions(${target} PRIVATE
    QV_TEST_DATA_DIR="${PROJECT_SOURCE_DIR}/data"
    QV_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  qv_target_warnings(${target})
  gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60 PROPERTIES LABELS ${subsystem})
endfunction()

# qv_add_thread_test_suite(<subsystem> <sources>...): tests of what promises thread
# safety, in their own executable labelled "<subsystem>-threads", which scripts/test
# also builds and runs under ThreadSanitizer (the tsan preset, target
# qvsysbase_thread_tests). One label, because a list given to gtest_discover_tests
# arrives split into separate arguments; `ctest -L` takes a regular expression, so
# both -L threads and -L <subsystem> select these tests.
if(NOT TARGET qvsysbase_thread_tests)
  add_custom_target(qvsysbase_thread_tests)
endif()
function(qv_add_thread_test_suite subsystem)
  set(target qvsysbase_${subsystem}_thread_tests)
  add_executable(${target} ${ARGN})
  target_link_libraries(${target} PRIVATE qvsysbase_objects GTest::gmock GTest::gtest_main)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/tests)
  qv_target_warnings(${target})
  gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60 PROPERTIES LABELS "${subsystem}-threads")
  add_dependencies(qvsysbase_thread_tests ${target})
endfunction()

# qv_add_fuzz_replay(<subsystem> <name> <fuzz source> <corpus>): a fuzz target's
# entry point linked with the replay main and run over a committed seed corpus
# (fuzz/corpus/<corpus>/), so the seeds stay valid inputs in every ordinary build.
function(qv_add_fuzz_replay subsystem name source corpus)
  set(target qvsysbase_${name}_replay)
  add_executable(${target} ${PROJECT_SOURCE_DIR}/fuzz/${source} ${PROJECT_SOURCE_DIR}/fuzz/ReplayMain.cpp)
  target_link_libraries(${target} PRIVATE qvsysbase_objects)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/fuzz)
  qv_target_warnings(${target})
  file(GLOB seeds CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/fuzz/corpus/${corpus}/*)
  add_test(NAME ${subsystem}.${name}CorpusReplay COMMAND ${target} ${seeds})
  set_tests_properties(${subsystem}.${name}CorpusReplay PROPERTIES LABELS ${subsystem})
endfunction()
