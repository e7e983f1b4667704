# What can be chosen when the build is configured, and the flags that follow from it.

option(ZORB_HOST "Build the fabric document and the command `zorb`" ${PROJECT_IS_TOP_LEVEL})
option(ZORB_TESTS "Register the tests with CTest" ${PROJECT_IS_TOP_LEVEL})
option(ZORB_UNIT_TESTS "Build the unit tests; OFF: only what runs the command, and the checks" ON)
option(ZORB_BENCH "Build the benchmarks of single parts beside their peers" OFF)
option(ZORB_WERROR "Warnings are errors" ${PROJECT_IS_TOP_LEVEL})
option(ZORB_SLABS "Entities and machines come from slabs; OFF: each from operator new" ON)
option(ZORB_TRACES "Trace statements are there; OFF: to measure what they cost while they are off" ON)
option(ZORB_AUDIT "Keep books of all handles and reactors, for zorb soak to compare; slow" OFF)
option(ZORB_CHECK_HEADERS "Compile every header alone" OFF)
option(ZORB_CHECKS "Tests of the sources: formatting, includes, clang-tidy, the installed library" OFF)
option(ZORB_FUZZ "Fuzz targets with libFuzzer in them (clang); OFF: they replay kept inputs" OFF)
option(ZORB_COVERAGE "Count what runs, for tools/coverage (g++)" OFF)
option(ZORB_IPO "Optimise across translation units" OFF)
set(ZORB_SANITIZE "" CACHE STRING "Sanitizers: \"address;undefined\" or \"thread\"")
set(ZORB_TEST_PREFIX "" CACHE STRING "Put before the names of all tests but the checks")
set(ZORB_TEST_GRAIN "case" CACHE STRING
    "One CTest test per \"case\", or per \"suite\" for fewer processes")
set_property(CACHE ZORB_TEST_GRAIN PROPERTY STRINGS case suite)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_VERIFY_INTERFACE_HEADER_SETS ${ZORB_CHECK_HEADERS})

# -O2 rather than CMake's -O3: the time goes into chasing pointers and hashing, which -O3 does not
# speed up, and its larger code costs instruction cache. Assertions are the library's own and on in
# every build type, so NDEBUG is not defined anywhere.
set(CMAKE_CXX_FLAGS_RELEASE "-O2")
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g")

# A file of machines is made of small functions of the framework. g++ stops putting them in place
# when a file has grown by two fifths, and calls the rest, handles' counts among them: a tenth of
# all instructions.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  string(APPEND CMAKE_CXX_FLAGS_RELEASE " --param=inline-unit-growth=200")
  string(APPEND CMAKE_CXX_FLAGS_RELWITHDEBINFO " --param=inline-unit-growth=200")
endif()
if(NOT ZORB_SANITIZE AND NOT ZORB_COVERAGE)
  set(CMAKE_CXX_FLAGS_DEBUG "-Og -g")
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(ZORB_WERROR)
  add_compile_options(-Werror)
endif()

# Virtual time is a double: no contraction into fused operations, so that two compilers (and two
# machines) compute the same instants and documents can be compared byte for byte.
add_compile_options(-ffp-contract=off)

# Blocks are given back with their sizes. g++ does so by itself, clang 14 must be told.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  add_compile_options(-fsized-deallocation)
endif()

# Source places in messages are relative to the repository, whoever built it and wherever.
add_compile_options(-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)

if(NOT ZORB_TRACES)
  include_directories(${PROJECT_SOURCE_DIR})
  add_compile_definitions(ZORB_SLABS=$<BOOL:${ZORB_SLABS}>)
  add_compile_options(-include ${PROJECT_SOURCE_DIR}/Bench/Converge/Untraced.h)
endif()

if(ZORB_SANITIZE)
  list(JOIN ZORB_SANITIZE "," ZORB_SANITIZE_FLAGS)
  add_compile_options(-fsanitize=${ZORB_SANITIZE_FLAGS} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ZORB_SANITIZE_FLAGS})
endif()

if(ZORB_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
  add_link_options(-fsanitize=fuzzer-no-link)
endif()

# Counts are atomic because some tests have threads.
if(ZORB_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()

if(ZORB_IPO)
  include(CheckIPOSupported)
  check_ipo_supported()
  set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
endif()

# Compiled objects are kept between builds where ccache is installed; nothing depends on it.
find_program(ZORB_CCACHE ccache)
if(ZORB_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${ZORB_CCACHE})
endif()
