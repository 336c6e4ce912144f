# zr7700_unit_test(NAME LIBRARIES...): builds NAME.cc of this folder against the libraries and
# registers each of its cases with CTest. NAME ends in _test and stands beside the source it tests.
function(zr7700_unit_test name)
  add_executable(${name} ${name}.cc)
  target_link_libraries(${name} PRIVATE zr7700_options GTest::gmock_main ${ARGN})
  gtest_discover_tests(${name} TEST_PREFIX "${name}: " DISCOVERY_TIMEOUT 60)
endfunction()
