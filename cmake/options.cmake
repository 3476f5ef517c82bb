# SPDX-License-Identifier: BSD-3-Clause
# What every target of the project is built with, and where it is put.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

option(IPMIB_BUILD_TESTS "Build the tests" ON)
option(IPMIB_BUILD_BENCH "Build the benchmarks" ON)
option(IPMIB_WERROR "Treat warnings as errors" ON)
option(IPMIB_DEVICE_ONLY "Build only what runs on any machine: no Linux platform, no SNMP front end" ${CMAKE_CROSSCOMPILING})
set(IPMIB_SANITIZE "" CACHE STRING "Sanitizers to build with, e.g. address,undefined")

add_library(ipmib_options INTERFACE)
target_compile_options(ipmib_options INTERFACE -Wall -Wextra -Wconversion -Wshadow -Wundef)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # When it optimises, GCC 12 sees overlapping copies inside std::string's own operator+.
  target_compile_options(ipmib_options INTERFACE -Wno-restrict)
endif()
if(IPMIB_WERROR)
  target_compile_options(ipmib_options INTERFACE -Werror)
endif()
if(IPMIB_SANITIZE)
  target_compile_options(ipmib_options INTERFACE -fsanitize=${IPMIB_SANITIZE} -fno-sanitize-recover=all
                                                 -fno-omit-frame-pointer)
  target_link_options(ipmib_options INTERFACE -fsanitize=${IPMIB_SANITIZE})
endif()

# The contract: headers alone.
add_library(ipmib_contract INTERFACE)
target_include_directories(ipmib_contract INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)

# The build tree has the shape of the installed tree, so that programs find the plug-ins in the same place in both.
set(IPMIB_PLUGIN_DIR ${CMAKE_INSTALL_LIBDIR}/ipmib)
set(IPMIB_BUILD_SBINDIR ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_SBINDIR})
set(IPMIB_BUILD_BINDIR ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_BINDIR})
set(IPMIB_BUILD_PLUGIN_DIR ${PROJECT_BINARY_DIR}/${IPMIB_PLUGIN_DIR})
file(RELATIVE_PATH IPMIB_PLUGIN_FROM_SBIN /prefix/${CMAKE_INSTALL_SBINDIR} /prefix/${IPMIB_PLUGIN_DIR})
file(RELATIVE_PATH IPMIB_PLUGIN_FROM_BIN /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${IPMIB_PLUGIN_DIR})

if(IPMIB_BUILD_TESTS)
  if(CMAKE_CROSSCOMPILING)
    # Debian ships GoogleTest for the build machine alone, and its sources for everybody else.
    add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  else()
    find_package(GTest REQUIRED)
  endif()
  include(GoogleTest)
endif()

# ipmib_test(NAME SOURCES... [LIBS...]): one GoogleTest program, each of its cases a ctest of its own.
function(ipmib_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBS" ${ARGN})
  if(NOT IPMIB_BUILD_TESTS)
    return()
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ipmib_options ipmib_contract ${arg_LIBS} GTest::gtest GTest::gtest_main)
  # Without values in the names, which may be bytes of a record: a test has one name on every machine.
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 NO_PRETTY_VALUES)
endfunction()
