# SPDX-License-Identifier: BSD-3-Clause
# Tests of the host, over modules that the tests write.

if(NOT IPMIB_BUILD_TESTS)
  return()
endif()

add_library(ipmib_host_testing STATIC
    testing/identifiers.cpp
    testing/packets.cpp
    testing/sorted_table.cpp
    testing/test_tree.cpp)
target_link_libraries(ipmib_host_testing PRIVATE ipmib_options PUBLIC ipmib_host GTest::gtest)

ipmib_test(host_property_test SOURCES resolver_property_test.cpp LIBS ipmib_host_testing)

# The module in the same program, over the scripted platform; its message layer is the host's.
ipmib_test(host_whole_module_test
    SOURCES whole_module_test.cpp testing/device.cpp
    LIBS ipmib_host_testing ipmib_host ipmib_module_objects ipmib_scripted)
