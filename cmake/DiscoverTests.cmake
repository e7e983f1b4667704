# Read by CTest, once for each test executable: registers what the executable lists.
#
# A test case a CTest test shows every name, and one can be picked with `ctest -R`; a process each
# costs under a sanitizer as much as a hundred cases. So builds that run everything register a test
# suite a CTest test (GRAIN "suite"); the case that failed is in the output.
#
# In: PROGRAM, ARGUMENTS, PREFIX, GRAIN, ENVIRONMENT, DIRECTORY (to run in), SETTINGS (the file that
# sets all these), CACHE_FILE (the last list).

cmake_policy(VERSION 3.25)

if(NOT EXISTS "${PROGRAM}")
  add_test("${PREFIX}NotBuilt" "${PROGRAM}")
  return()
endif()

if("${PROGRAM}" IS_NEWER_THAN "${CACHE_FILE}" OR "${SETTINGS}" IS_NEWER_THAN "${CACHE_FILE}"
   OR "${CMAKE_CURRENT_LIST_FILE}" IS_NEWER_THAN "${CACHE_FILE}")
  execute_process(COMMAND "${PROGRAM}" --gtest_list_tests OUTPUT_VARIABLE listed
                  ERROR_VARIABLE errors RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${PROGRAM} --gtest_list_tests: ${status}\n${errors}")
  endif()
  string(REGEX REPLACE "[ ]+#[^\n]*" "" listed "${listed}")
  string(REGEX REPLACE "[][;]" "_" listed "${listed}")
  string(REPLACE "\n" ";" listed "${listed}")
  set(names)
  foreach(line IN LISTS listed)
    if(line MATCHES "^([^ ]+)\\.$")
      set(suite "${CMAKE_MATCH_1}")
      if(GRAIN STREQUAL "suite")
        list(APPEND names "${suite}")
      endif()
    elseif(line MATCHES "^  ([^ ]+)$" AND GRAIN STREQUAL "case")
      list(APPEND names "${suite}.${CMAKE_MATCH_1}")
    endif()
  endforeach()

  set(script)
  foreach(name IN LISTS names)
    set(filter "${name}")
    if(GRAIN STREQUAL "suite")
      string(APPEND filter ".*")
    endif()
    set(arguments)
    foreach(argument IN LISTS ARGUMENTS)
      string(APPEND arguments " [==[${argument}]==]")
    endforeach()
    string(APPEND script "add_test([==[${PREFIX}${name}]==] [==[${PROGRAM}]==] "
           "[==[--gtest_filter=${filter}]==] --gtest_brief=1${arguments})\n"
           "set_tests_properties([==[${PREFIX}${name}]==] PROPERTIES TIMEOUT 120 "
           "ENVIRONMENT [==[${ENVIRONMENT}]==] WORKING_DIRECTORY [==[${DIRECTORY}]==])\n")
  endforeach()
  file(WRITE "${CACHE_FILE}" "${script}")
endif()

include("${CACHE_FILE}")
