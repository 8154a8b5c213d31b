# One way to build every library and every test of the project.
include(GenerateExportHeader)

add_library(qvstats_build_flags INTERFACE)
target_compile_options(qvstats_build_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast -Werror
  $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion>)  # as GCC understands -Wconversion
if(QVSTATS_SANITIZE)
  target_compile_options(qvstats_build_flags INTERFACE -fsanitize=${QVSTATS_SANITIZE}
    -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(qvstats_build_flags INTERFACE -fsanitize=${QVSTATS_SANITIZE})
endif()
if(QVSTATS_BUILD_FUZZERS)
  target_compile_options(qvstats_build_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# qvstats_library(<component> TARGET <name> DIRECTORY <dir> SOURCES ... [PUBLIC ...] [PRIVATE ...])
#
# The objects are compiled once and linked twice: into the shared library <name>, installed as
# qvstats::<component>, which hides its internals, and into the static <name>_testable, through
# which tests and benchmarks reach them. PUBLIC and PRIVATE name what the objects link; a component
# of ours is given by its target name and is linked shared to shared and testable to testable.
function(qvstats_library component)
  cmake_parse_arguments(LIB "" "TARGET;DIRECTORY" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  set(objects ${LIB_TARGET}_objects)
  add_library(${objects} OBJECT ${LIB_SOURCES})
  target_compile_features(${objects} PUBLIC cxx_std_17)
  target_include_directories(${objects} PUBLIC
    ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/generated)
  target_link_libraries(${objects} PRIVATE qvstats_build_flags ${LIB_PRIVATE})
  set_target_properties(${objects} PROPERTIES POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)

  add_library(${LIB_TARGET} SHARED $<TARGET_OBJECTS:${objects}>)
  add_library(qvstats::${component} ALIAS ${LIB_TARGET})
  add_library(${LIB_TARGET}_testable STATIC $<TARGET_OBJECTS:${objects}>)
  foreach(target ${LIB_TARGET} ${LIB_TARGET}_testable)
    target_compile_features(${target} PUBLIC cxx_std_17)
    target_include_directories(${target} PUBLIC
      "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR};${PROJECT_BINARY_DIR}/generated>"
      $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    target_link_libraries(${target} PRIVATE ${LIB_PRIVATE})
  endforeach()
  foreach(dependency ${LIB_PUBLIC})
    target_link_libraries(${objects} PUBLIC ${dependency})
    target_link_libraries(${LIB_TARGET} PUBLIC ${dependency})
    if(TARGET ${dependency}_testable)
      target_link_libraries(${LIB_TARGET}_testable PUBLIC ${dependency}_testable)
    else()
      target_link_libraries(${LIB_TARGET}_testable PUBLIC ${dependency})
    endif()
  endforeach()
  target_link_libraries(${LIB_TARGET} PRIVATE $<BUILD_INTERFACE:qvstats_build_flags>)
  if(NOT QVSTATS_SANITIZE)  # whose runtime is in the program
    target_link_options(${LIB_TARGET} PRIVATE -Wl,--no-undefined)
  endif()
  set_target_properties(${LIB_TARGET} PROPERTIES EXPORT_NAME ${component}
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} INSTALL_RPATH "\$ORIGIN")

  string(TOUPPER ${LIB_TARGET} prefix)
  generate_export_header(${LIB_TARGET} BASE_NAME ${prefix}
    EXPORT_FILE_NAME ${PROJECT_BINARY_DIR}/generated/${LIB_DIRECTORY}/export.h)
  install(TARGETS ${LIB_TARGET} EXPORT qvstatsTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${LIB_DIRECTORY}/
    ${PROJECT_BINARY_DIR}/generated/${LIB_DIRECTORY}/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${LIB_DIRECTORY}
    COMPONENT Development FILES_MATCHING PATTERN "*.h" PATTERN "internal" EXCLUDE)
endfunction()

# qvstats_test(<area> [sources ...]): the test program of an area, <area>_test.cpp by default.
function(qvstats_test area)
  set(sources ${ARGN})
  if(NOT sources)
    set(sources ${area}_test.cpp)
  endif()
  add_executable(${area}_test ${sources})
  target_link_libraries(${area}_test PRIVATE qvstats_testable qvstats_build_flags Eigen3::Eigen
    GTest::gmock_main)
  # What is tested is optimised; the tests themselves had better compile quickly.
  target_compile_options(${area}_test PRIVATE $<$<CONFIG:Release>:-O1> $<$<CONFIG:Debug>:-O0>)
  target_compile_definitions(${area}_test PRIVATE
    QVSTATS_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data")
  # A process for each test names what fails; under a sanitizer its start takes longer than the test.
  if(NOT QVSTATS_SANITIZE)
    gtest_discover_tests(${area}_test DISCOVERY_TIMEOUT 60)
    return()
  endif()
  add_test(NAME ${area} COMMAND ${area}_test)
  # The font library keeps a few patterns until the process ends.
  set_tests_properties(${area} PROPERTIES
    ENVIRONMENT LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/leaks.supp:print_suppressions=0)
endfunction()
