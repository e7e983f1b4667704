# Tests: one executable a folder below Test/, registered with CTest case by case (or suite by
# suite); and tests that run the command or a script.

# What the tests' processes are told through the environment.
set(ZORB_TEST_ENVIRONMENT)
if(ZORB_SANITIZE)
  set(ZORB_TEST_ENVIRONMENT ASAN_OPTIONS=detect_stack_use_after_return=1:strict_string_checks=1
                            UBSAN_OPTIONS=print_stacktrace=1)
endif()

# zorb_test_folder(NAME <folder below Test/> LINKS <target>...)
# In builds with a sanitizer the executable is registered twice, with slabs on and off.
function(zorb_test_folder)
  cmake_parse_arguments(PARSE_ARGV 0 FOLDER "" "NAME" "LINKS")
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/Test/${FOLDER_NAME}/*.cpp)
  set(target ${FOLDER_NAME}Test)
  add_executable(${target} ${sources})
  target_link_libraries(${target} PRIVATE ${FOLDER_LINKS} TestMain)
  target_precompile_headers(${target} REUSE_FROM TestMain)
  zorb_discover(TARGET ${target} PREFIX ${ZORB_TEST_PREFIX}${FOLDER_NAME}.)
  if(ZORB_SANITIZE)
    zorb_discover(TARGET ${target} PREFIX ${ZORB_TEST_PREFIX}noslabs.${FOLDER_NAME}.
                  ARGUMENTS --no-slabs)
  endif()
endfunction()

# zorb_discover(TARGET <executable> PREFIX <before the tests' names> [ARGUMENTS <argument>...])
# Has CTest ask the executable for its tests, when it runs, if it changed since the last time.
function(zorb_discover)
  cmake_parse_arguments(PARSE_ARGV 0 TESTS "" "TARGET;PREFIX" "ARGUMENTS")
  set(file ${CMAKE_CURRENT_BINARY_DIR}/${TESTS_PREFIX}cmake)
  file(GENERATE OUTPUT ${file} CONTENT "\
set(PROGRAM [==[$<TARGET_FILE:${TESTS_TARGET}>]==])
set(PREFIX [==[${TESTS_PREFIX}]==])
set(ARGUMENTS [==[${TESTS_ARGUMENTS}]==])
set(GRAIN [==[${ZORB_TEST_GRAIN}]==])
set(ENVIRONMENT [==[${ZORB_TEST_ENVIRONMENT}]==])
set(DIRECTORY [==[${PROJECT_SOURCE_DIR}]==])
set(SETTINGS [==[${file}]==])
set(CACHE_FILE [==[${CMAKE_CURRENT_BINARY_DIR}/${TESTS_PREFIX}${ZORB_TEST_GRAIN}.tests.cmake]==])
include([==[${PROJECT_SOURCE_DIR}/cmake/DiscoverTests.cmake]==])
")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${file})
endfunction()

# zorb_run_test(NAME <test> COMMAND <command> [<argument>...]): a test that is a run of the command.
function(zorb_run_test)
  cmake_parse_arguments(PARSE_ARGV 0 RUN "" "NAME" "COMMAND")
  set(name ${ZORB_TEST_PREFIX}${RUN_NAME})
  add_test(NAME ${name} COMMAND ${RUN_COMMAND} WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
  set_tests_properties(${name} PROPERTIES TIMEOUT 60 ENVIRONMENT "${ZORB_TEST_ENVIRONMENT}")
endfunction()

# zorb_check(NAME <test> COMMAND <command> [<argument>...] [SLOW]): a test of the sources, whatever
# the compiler. SLOW: it takes the whole machine for some time.
function(zorb_check)
  cmake_parse_arguments(PARSE_ARGV 0 CHECK "SLOW" "NAME" "COMMAND")
  set(name check.${CHECK_NAME})
  add_test(NAME ${name} COMMAND ${CHECK_COMMAND} WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
  set_tests_properties(${name} PROPERTIES TIMEOUT 60)
  if(CHECK_SLOW)
    set_tests_properties(${name} PROPERTIES TIMEOUT 900 PROCESSORS 2 LABELS slow)
  endif()
endfunction()
