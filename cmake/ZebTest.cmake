# zeb_test(NAME SOURCES file... [USES target...] [ALONE] [SEPARATE])
# Adds one GoogleTest program whose cases are separate CTest tests. ALONE: no other test runs at the same
# time. The sources are compiled as one unit, because most of the time is spent on GoogleTest's headers;
# SEPARATE: as for rooms.
include(GoogleTest)
find_package(GTest REQUIRED)

function(zeb_test name)
  cmake_parse_arguments(TEST "ALONE;SEPARATE" "" "SOURCES;USES" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  set_target_properties(${name} PROPERTIES ZEB_IS_TEST ON)
  if(NOT TEST_SEPARATE)
    set_target_properties(${name} PROPERTIES UNITY_BUILD ON)
  endif()
  target_link_libraries(${name} PRIVATE zeb_compile_options ${TEST_USES} GTest::gmock_main)
  set(labels)
  if(TEST_ALONE)
    set(labels LABELS alone)
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300 RUN_SERIAL ${TEST_ALONE} ${labels})
endfunction()
