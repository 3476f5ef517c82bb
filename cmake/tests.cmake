# SPDX-License-Identifier: BSD-3-Clause
# How tests are built and started.

option(IPMIB_TEST_PROGRAMS "Start each test program once for all of its cases" OFF)

if(IPMIB_BUILD_TESTS)
  if(CMAKE_CROSSCOMPILING)
    # Debian ships GoogleTest for the build machine alone, and its sources for everybody else.
    add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  else()
    find_package(GTest REQUIRED)
  endif()
  include(GoogleTest)
endif()

# Where ccache does not remember them, tests are compiled more often than they run: without optimisation, which takes half the
# time, whatever the product is built with. They keep the sanitizers, since the linker may choose a test's copy of an inline
# function of the product.
add_library(ipmib_test_options INTERFACE)
target_link_libraries(ipmib_test_options INTERFACE ipmib_options)
if(NOT CMAKE_CXX_COMPILER_LAUNCHER MATCHES ccache)
  target_compile_options(ipmib_test_options INTERFACE -O0)
endif()

if(IPMIB_BUILD_TESTS)
  # An executable, because these are compiled with other flags than libraries.
  add_executable(ipmib_test_headers EXCLUDE_FROM_ALL ${PROJECT_BINARY_DIR}/empty.cpp)
  target_link_libraries(ipmib_test_headers PRIVATE ipmib_test_options GTest::gtest GTest::gtest_main)
  set(headers <algorithm> <array> <chrono> <cstdint> <cstring> <fstream> <functional> <map> <optional> <random> <set> <span>
              <sstream> <string> <vector>)
  target_precompile_headers(ipmib_test_headers PRIVATE <gtest/gtest.h> ${headers})

  # The same for tests on what `ip -j` writes: with the JSON library, whose functions are compiled once, in ipmib_netns.
  add_executable(ipmib_json_test_headers EXCLUDE_FROM_ALL ${PROJECT_BINARY_DIR}/empty.cpp)
  target_link_libraries(ipmib_json_test_headers PRIVATE ipmib_test_options GTest::gtest GTest::gtest_main
                                                        nlohmann_json::nlohmann_json)
  target_precompile_headers(ipmib_json_test_headers PRIVATE <gtest/gtest.h> ${headers}
                                                            ${PROJECT_SOURCE_DIR}/tests/netns/json_compiled_once.h)

  # Likewise for libraries.
  add_library(ipmib_test_library_headers OBJECT ${PROJECT_BINARY_DIR}/empty.cpp)
  target_link_libraries(ipmib_test_library_headers PRIVATE ipmib_test_options)
  target_precompile_headers(ipmib_test_library_headers PRIVATE ${headers})
endif()

# ipmib_test_library(TARGET): a library of tests alone is compiled as tests are.
function(ipmib_test_library target)
  target_link_libraries(${target} PRIVATE ipmib_test_options)
  if(IPMIB_BUILD_TESTS)
    target_precompile_headers(${target} REUSE_FROM ipmib_test_library_headers)
  endif()
endfunction()

# ipmib_test(NAME SOURCES... [ALONE...] [LIBS...] [COST N] [JSON]): one GoogleTest program, each of its cases a ctest of its own. Those
# that take long have a COST, some of their seconds, and begin first. JSON: most of its sources read the JSON library, and
# ipmib_netns is one of its libraries. ALONE: sources as those of ipmib_unite.
# With IPMIB_TEST_PROGRAMS, where a start is dear (sanitizers, emulation), the program is one ctest, and what became of each
# case stands in cases/NAME.xml, for tests/cases.py.
function(ipmib_test name)
  cmake_parse_arguments(arg "JSON" "COST" "SOURCES;ALONE;LIBS" ${ARGN})
  set(cost ${arg_COST})
  if(NOT cost)
    set(cost 0)
  endif()
  if(NOT IPMIB_BUILD_TESTS)
    return()
  endif()
  add_executable(${name} ${arg_SOURCES} ${arg_ALONE})
  ipmib_unite(${name} ALONE ${arg_ALONE})
  target_link_libraries(${name} PRIVATE ipmib_test_options ipmib_contract ${arg_LIBS} GTest::gtest GTest::gtest_main)
  if(arg_JSON)
    target_precompile_headers(${name} REUSE_FROM ipmib_json_test_headers)
  else()
    target_precompile_headers(${name} REUSE_FROM ipmib_test_headers)
  endif()
  if(IPMIB_TEST_PROGRAMS)
    add_test(NAME ${name} COMMAND ${name} --gtest_brief=1 --gtest_output=xml:${PROJECT_BINARY_DIR}/cases/${name}.xml)
    set_tests_properties(${name} PROPERTIES TIMEOUT 900 COST ${cost})
  else()
    # Without values in the names, which may be bytes of a record: a test has one name on every machine.
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 NO_PRETTY_VALUES PROPERTIES COST ${cost})
  endif()
endfunction()
