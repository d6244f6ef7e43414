# Language, warnings, sanitizers and coverage: every switch stands here.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# -O3 takes a third more time to compile and gains some percent: the reader and the
# content view have it.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")

option(DORVEX_WARNINGS_AS_ERRORS "Treat warnings in the project's own code as errors" ON)
set(DORVEX_SANITIZERS "" CACHE STRING "Comma-separated list for -fsanitize=, e.g. address,undefined")
option(DORVEX_COVERAGE "Instrument for gcov" OFF)
option(DORVEX_FUZZERS "Link the fuzz targets with libFuzzer (clang only) instead of a plain main" OFF)
if(DORVEX_FUZZERS AND NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  message(FATAL_ERROR "DORVEX_FUZZERS needs clang: use the preset fuzz")
endif()

# The schema takes minutes to compile: reuse it between build folders. What is new goes
# through the preprocessor once (CCACHE_DEPEND), not once more to be looked up.
find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER
      ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1
      CCACHE_DEPEND=1 CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE_PROGRAM})
endif()

# A unique symbol pins a module in its process for ever: dlclose would do nothing.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fno-gnu-unique>)
endif()

if(DORVEX_SANITIZERS)
  add_link_options(-fsanitize=${DORVEX_SANITIZERS})
endif()
if(DORVEX_COVERAGE)
  add_link_options(--coverage)
endif()

# Warnings, sanitizers and coverage concern our own code. The generated classes
# and protobuf are compiled alike in every preset, so that the compiler cache
# serves them; what they allocate and free is checked all the same.
add_library(dorvex_warnings INTERFACE)
target_include_directories(dorvex_warnings INTERFACE ${PROJECT_SOURCE_DIR}/Core/src)
target_compile_options(dorvex_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion
  $<$<BOOL:${DORVEX_WARNINGS_AS_ERRORS}>:-Werror>
  "$<$<BOOL:${DORVEX_COVERAGE}>:--coverage;-O0>")
add_library(dorvex_options INTERFACE)
target_link_libraries(dorvex_options INTERFACE dorvex_warnings)
# Not a generator expression: a comma in the list would end its argument. gcc's
# own instrumentation makes it see uninitialized variables where there are none,
# and takes minutes to optimise the tests further than -O1.
if(DORVEX_SANITIZERS)
  target_compile_options(dorvex_options INTERFACE
    -fsanitize=${DORVEX_SANITIZERS} -fno-omit-frame-pointer -g1 -O1
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()
if(DORVEX_FUZZERS)
  target_compile_options(dorvex_options INTERFACE
    -fsanitize=fuzzer-no-link -fno-sanitize-recover=all)
endif()
