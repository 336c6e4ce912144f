# One precompiled header for all unit tests: most of a test's compile time is GoogleTest's headers.
# It is made by a program without tests, since a library is compiled with other flags. Tests are
# compiled with little optimisation, whatever the sources under test are, and without two warnings
# that GCC 12 gives for string expressions that it has optimised.
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

set(unit_test_options -Wno-array-bounds $<$<CXX_COMPILER_ID:GNU>:-Wno-stringop-overflow>
  $<$<CONFIG:Release,RelWithDebInfo>:-O1>)
file(WRITE ${CMAKE_BINARY_DIR}/unit_test_headers.cc "")
add_executable(zr7700_unit_test_headers ${CMAKE_BINARY_DIR}/unit_test_headers.cc)
target_link_libraries(zr7700_unit_test_headers PRIVATE zr7700_options GTest::gmock_main)
target_compile_options(zr7700_unit_test_headers PRIVATE ${unit_test_options})
target_precompile_headers(zr7700_unit_test_headers PRIVATE
  <gmock/gmock.h> <gtest/gtest.h> <string> <vector>)

# zr7700_unit_test(NAME LIBRARIES... [SOURCE FILE]): builds FILE (NAME.cc unless named) of this folder
# against the libraries and registers each of its cases with CTest. NAME ends in _test; the file
# stands beside the source it tests.
function(zr7700_unit_test name)
  cmake_parse_arguments(arg "" "SOURCE" "" ${ARGN})
  if(NOT arg_SOURCE)
    set(arg_SOURCE ${name}.cc)
  endif()
  add_executable(${name} ${arg_SOURCE})
  target_link_libraries(${name} PRIVATE
    zr7700_options GTest::gmock_main ${arg_UNPARSED_ARGUMENTS})
  target_compile_options(${name} PRIVATE ${unit_test_options})
  target_precompile_headers(${name} REUSE_FROM zr7700_unit_test_headers)
  gtest_discover_tests(${name} TEST_PREFIX "${name}: " DISCOVERY_TIMEOUT 60)
endfunction()
