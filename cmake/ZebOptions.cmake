# Options and compiler settings shared by all rooms.

option(ZEB_BUILD_TESTS "Build the test suite" ON)
option(ZEB_BUILD_BENCHMARKS "Build the benchmarks" ON)
option(ZEB_BUILD_FUZZERS "Build the libFuzzer targets (clang only)" OFF)
option(ZEB_OPTIMISE_DEBUG "Optimise debug builds lightly, so that tests over real films stay quick" OFF)
option(ZEB_DEVELOPMENT_RESOURCES "Look for resources in the source tree first" ON)
option(ZEB_JOIN_SOURCES "Compile a room's sources as one: quicker for builds that are made once" OFF)
set(ZEB_SANITIZE "" CACHE STRING "Sanitizers to build with, e.g. address,undefined")

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# Kernels need -O3: -O2 does not vectorise them.
set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")

# Compiler settings of all targets of this project.
add_library(zeb_compile_options INTERFACE)
target_compile_options(zeb_compile_options INTERFACE
  -Wall -Wextra -Wconversion -Wshadow -Wnon-virtual-dtor -Werror
  # Output bytes must not depend on whether a compiler fuses multiply and add.
  -ffp-contract=off
  # GCC 12 reports false overlaps and overruns in its strings and vectors (GCC bug 105651 and related).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict -Wno-array-bounds -Wno-stringop-overflow>
  # Not for the tests themselves, whose compile time exceeds their run time.
  $<$<AND:$<BOOL:${ZEB_OPTIMISE_DEBUG}>,$<NOT:$<BOOL:$<TARGET_PROPERTY:ZEB_IS_TEST>>>>:-O1>)
target_include_directories(zeb_compile_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_definitions(zeb_compile_options INTERFACE _FILE_OFFSET_BITS=64)

if(ZEB_SANITIZE)
  target_compile_options(zeb_compile_options INTERFACE
    -fsanitize=${ZEB_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(zeb_compile_options INTERFACE -fsanitize=${ZEB_SANITIZE})
  # Sanitizer run-times start after the resolvers of multi-versioned functions have been called.
  target_compile_definitions(zeb_compile_options INTERFACE ZEB_NO_MULTIVERSIONING)
endif()
if(ZEB_BUILD_FUZZERS)
  # Coverage instrumentation for the fuzzer; only the fuzz targets link its main function.
  target_compile_options(zeb_compile_options INTERFACE -fsanitize=fuzzer-no-link)
  target_link_options(zeb_compile_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# Compile QML ahead of time where windows must open quickly; in Debug builds this would cost more time than it
# saves.
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
  set(ZEB_QML_OPTIONS NO_CACHEGEN)
endif()
