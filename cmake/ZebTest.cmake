# zeb_test(NAME SOURCES file... [USES target...] [ALONE])
# One GoogleTest program whose cases CTest knows one by one. ALONE: nothing else is tested meanwhile.
include(GoogleTest)
find_package(GTest REQUIRED)

function(zeb_test name)
  cmake_parse_arguments(TEST "ALONE" "" "SOURCES;USES" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_link_libraries(${name} PRIVATE zeb_compile_options ${TEST_USES} GTest::gmock_main)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300 RUN_SERIAL ${TEST_ALONE})
endfunction()
