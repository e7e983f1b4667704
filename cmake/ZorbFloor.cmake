# A floor is one folder and one target: its sources are whatever lies in the folder, its headers are
# seen as "<folder>/<Header>.h" from the root of the repository, and what it links is what it may
# include.

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(ZORB_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/zorb)
set(ZORB_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Zorb)

# zorb_floor(NAME <target> DIR <folder> [DEPENDS <floor>...] [DEFINES <definition>...]
#            [PACKAGES <target>...] [HEADERS <top folder of a package's headers>...]
#            [EXCLUDE <file>...] [HOST])
# A folder without sources gives an interface library. HOST floors are not installed.
function(zorb_floor)
  cmake_parse_arguments(PARSE_ARGV 0 FLOOR "HOST" "NAME;DIR" 
                        "DEPENDS;DEFINES;PACKAGES;HEADERS;EXCLUDE")
  set(dir ${PROJECT_SOURCE_DIR}/${FLOOR_DIR})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${dir}/*.cpp)
  file(GLOB_RECURSE headers CONFIGURE_DEPENDS ${dir}/*.h)
  list(TRANSFORM FLOOR_EXCLUDE PREPEND ${dir}/)
  list(REMOVE_ITEM sources ${FLOOR_EXCLUDE})

  if(sources)
    set(visibility PUBLIC)
    add_library(${FLOOR_NAME} STATIC ${sources})
  else()
    set(visibility INTERFACE)
    add_library(${FLOOR_NAME} INTERFACE)
  endif()
  add_library(Zorb::${FLOOR_NAME} ALIAS ${FLOOR_NAME})
  if(headers)
    target_sources(${FLOOR_NAME} ${visibility} FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}
                                                                FILES ${headers})
  endif()
  target_include_directories(${FLOOR_NAME} ${visibility} $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                                                         $<INSTALL_INTERFACE:${ZORB_INCLUDE_DIR}>)
  target_link_libraries(${FLOOR_NAME} ${visibility} ${FLOOR_DEPENDS} ${FLOOR_PACKAGES})
  target_compile_features(${FLOOR_NAME} ${visibility} cxx_std_20)
  target_compile_definitions(${FLOOR_NAME} ${visibility} ${FLOOR_DEFINES})
  set_target_properties(${FLOOR_NAME} PROPERTIES OUTPUT_NAME Zorb${FLOOR_NAME})

  if(ZORB_CHECK_HEADERS AND headers)
    zorb_check_headers(${FLOOR_NAME})
  endif()

  list(JOIN FLOOR_DEPENDS "," depends)
  list(JOIN FLOOR_HEADERS "," packageHeaders)
  set_property(GLOBAL APPEND PROPERTY ZORB_FLOORS
                                      "${FLOOR_NAME} ${FLOOR_DIR} [${depends}] [${packageHeaders}]")
  if(NOT FLOOR_HOST)
    set_property(GLOBAL APPEND PROPERTY ZORB_INSTALLED ${FLOOR_NAME})
    if(headers)
      set_property(GLOBAL APPEND PROPERTY ZORB_INSTALLED_HEADERS ${FLOOR_NAME})
    endif()
  endif()
endfunction()

# zorb_library(NAME <target> DEPENDS <floor>...): several floors under one name.
function(zorb_library)
  cmake_parse_arguments(PARSE_ARGV 0 LIBRARY "" "NAME" "DEPENDS")
  add_library(${LIBRARY_NAME} INTERFACE)
  add_library(Zorb::${LIBRARY_NAME} ALIAS ${LIBRARY_NAME})
  target_link_libraries(${LIBRARY_NAME} INTERFACE ${LIBRARY_DEPENDS})
  list(JOIN LIBRARY_DEPENDS "," depends)
  set_property(GLOBAL APPEND PROPERTY ZORB_FLOORS "${LIBRARY_NAME} - [${depends}] []")
  set_property(GLOBAL APPEND PROPERTY ZORB_INSTALLED ${LIBRARY_NAME})
endfunction()

# zorb_program(NAME <target> MAIN <file> DEPENDS <floor>...)
function(zorb_program)
  cmake_parse_arguments(PARSE_ARGV 0 PROGRAM "" "NAME;MAIN" "DEPENDS")
  file(GLOB main CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${PROGRAM_MAIN})
  if(main)
    add_executable(${PROGRAM_NAME} ${main})
    target_link_libraries(${PROGRAM_NAME} PRIVATE ${PROGRAM_DEPENDS})
    install(TARGETS ${PROGRAM_NAME} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  endif()
endfunction()

# Makes the default build compile each header of the floor as a translation unit of its own.
function(zorb_check_headers floor)
  if(NOT TARGET check_headers)
    add_custom_target(check_headers ALL)
  endif()
  # CMake defines <floor>_verify_interface_header_sets when it generates, and this target, which
  # gathers them, with it.
  add_dependencies(check_headers all_verify_interface_header_sets)
endfunction()

# Installs the library and what find_package(Zorb) needs. Call it after the last floor.
function(zorb_install)
  get_property(installed GLOBAL PROPERTY ZORB_INSTALLED)
  get_property(withHeaders GLOBAL PROPERTY ZORB_INSTALLED_HEADERS)
  foreach(floor IN LISTS installed)
    set(headerSet)
    if(floor IN_LIST withHeaders)
      set(headerSet FILE_SET HEADERS DESTINATION ${ZORB_INCLUDE_DIR})
    endif()
    install(TARGETS ${floor} EXPORT ZorbTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
            ${headerSet})
  endforeach()
  install(EXPORT ZorbTargets NAMESPACE Zorb:: DESTINATION ${ZORB_PACKAGE_DIR})
  configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/ZorbConfig.cmake.in
                                ${PROJECT_BINARY_DIR}/ZorbConfig.cmake
                                INSTALL_DESTINATION ${ZORB_PACKAGE_DIR})
  write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZorbConfigVersion.cmake
                                   COMPATIBILITY SameMinorVersion)
  install(FILES ${PROJECT_BINARY_DIR}/ZorbConfig.cmake ${PROJECT_BINARY_DIR}/ZorbConfigVersion.cmake
          DESTINATION ${ZORB_PACKAGE_DIR})

  # For the check of includes: one line a floor, "name folder [depends] [package headers]".
  get_property(floors GLOBAL PROPERTY ZORB_FLOORS)
  list(JOIN floors "\n" floors)
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/floors.txt CONTENT "@floors@\n" @ONLY)
endfunction()
