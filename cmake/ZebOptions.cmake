# Options and compiler settings that every room shares.

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

# What every target of our own is compiled with.
add_library(zeb_compile_options INTERFACE)
target_compile_options(zeb_compile_options INTERFACE
  -Wall -Wextra -Wconversion -Wshadow -Wnon-virtual-dtor -Werror
  # Output bytes must not depend on whether a compiler fuses multiply and add.
  -ffp-contract=off
  # GCC 12 sees overlaps and overruns in its own strings and vectors that are not there (its bug 105651 and kin).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict -Wno-array-bounds -Wno-stringop-overflow>
  # Not the tests themselves, which compile for longer than they run.
  $<$<AND:$<BOOL:${ZEB_OPTIMISE_DEBUG}>,$<NOT:$<BOOL:$<TARGET_PROPERTY:ZEB_IS_TEST>>>>:-O1>)
target_include_directories(zeb_compile_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_definitions(zeb_compile_options INTERFACE _FILE_OFFSET_BITS=64)

if(ZEB_SANITIZE)
  target_compile_options(zeb_compile_options INTERFACE
    -fsanitize=${ZEB_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(zeb_compile_options INTERFACE -fsanitize=${ZEB_SANITIZE})
  # Sanitizer run-times start after the resolvers of multi-versioned functions have run.
  target_compile_definitions(zeb_compile_options INTERFACE ZEB_NO_MULTIVERSIONING)
endif()
if(ZEB_BUILD_FUZZERS)
  # Coverage that steers the fuzzer; only the targets themselves link its main function.
  target_compile_options(zeb_compile_options INTERFACE -fsanitize=fuzzer-no-link)
  target_link_options(zeb_compile_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# Windows are compiled ahead of time where they are to open at once; for tests that would cost more than it saves.
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
  set(ZEB_QML_OPTIONS NO_CACHEGEN)
endif()
