# zeb_test(NAME SOURCES file... [USES target...])
# One GoogleTest program whose cases CTest knows one by one.
include(GoogleTest)
find_package(GTest REQUIRED)

function(zeb_test name)
  cmake_parse_arguments(TEST "" "" "SOURCES;USES" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_link_libraries(${name} PRIVATE zeb_compile_options ${TEST_USES} GTest::gmock_main)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()
