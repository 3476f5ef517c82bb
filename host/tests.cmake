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
target_link_libraries(ipmib_host_testing PUBLIC ipmib_host GTest::gtest)
ipmib_test_library(ipmib_host_testing)

# A device's rows, for the scripted platform, which whoever links this links behind it.
add_library(ipmib_scripted_device STATIC testing/device.cpp testing/identifiers.cpp)
target_include_directories(ipmib_scripted_device PUBLIC ${PROJECT_SOURCE_DIR} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
target_link_libraries(ipmib_scripted_device PUBLIC ipmib_contract)
ipmib_test_library(ipmib_scripted_device)

ipmib_test(host_property_test SOURCES merged_property_test.cpp resolver_property_test.cpp LIBS ipmib_host_testing)

# The module in the same program, over the scripted platform; its message layer is the host's.
ipmib_test(host_whole_module_test
    SOURCES whole_module_test.cpp
    LIBS ipmib_host_testing ipmib_host ipmib_module_objects ipmib_scripted_device ipmib_scripted)
ipmib_test(host_unit_test
    SOURCES
    allocation_test.cpp
    command_line_test.cpp
    hostile_module_test.cpp
    key_below_test.cpp
    message_test.cpp
    recorded_over_test.cpp
    registry_test.cpp
    resolver_test.cpp
    row_cursors_test.cpp
    row_index_test.cpp
    row_source_test.cpp
    syntax_test.cpp
    LIBS ipmib_host_testing)

# Plug-ins, good and broken, and a program that loads them.
set(plugins ${CMAKE_CURRENT_BINARY_DIR}/plugins)
function(host_test_plugin name source)
  add_library(${name} MODULE testing/plugins/${source})
  target_compile_definitions(${name} PRIVATE ${ARGN})
  target_link_libraries(${name} PRIVATE ipmib_options ipmib_contract)
  set_target_properties(${name} PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${plugins})
  list(APPEND host_test_plugins ${name})
  set(host_test_plugins ${host_test_plugins} PARENT_SCOPE)
endfunction()
host_test_plugin(platform_test platform.cpp)
host_test_plugin(platform_plain platform.cpp WITHOUT_HOOKS)
host_test_plugin(platform_before_sizes platform.cpp SIZE=3)
host_test_plugin(platform_future platform.cpp SIZE=1000)
host_test_plugin(platform_of_many platform.cpp WITH_INSTANCES)
host_test_plugin(platform_tiny platform.cpp SIZE=2)
host_test_plugin(module_good module.cpp)
host_test_plugin(module_again module.cpp)
host_test_plugin(module_of_other_records module.cpp RECORDS_VERSION=IPMIB_CONTRACT_VERSION\(2,3\))
host_test_plugin(module_of_later_records module.cpp RECORDS_VERSION=IPMIB_CONTRACT_VERSION\(1,99\))
host_test_plugin(module_missing_symbol module.cpp WITH_MISSING_SYMBOL)
host_test_plugin(module_without_tree module.cpp WITHOUT_TREE)
host_test_plugin(module_without_callback module.cpp WITHOUT_CALLBACK)
host_test_plugin(module_broken_tree module.cpp WITH_BROKEN_TREE)
host_test_plugin(platform_scripted scripted_device.cpp)
target_link_libraries(platform_scripted PRIVATE ipmib_scripted_device $<LINK_LIBRARY:WHOLE_ARCHIVE,ipmib_scripted>)

ipmib_test(host_plugin_test
    SOURCES plugin_test.cpp
    LIBS ipmib_host_testing ipmib_host ipmib_scripted_device ipmib_scripted)
target_compile_definitions(host_plugin_test PRIVATE
    IPMIB_TEST_PLUGINS="${plugins}" IPMIB_LIBRARY="$<TARGET_FILE:ipmib>")
add_dependencies(host_plugin_test ipmib ${host_test_plugins})
