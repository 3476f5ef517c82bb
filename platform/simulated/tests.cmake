# SPDX-License-Identifier: BSD-3-Clause
# Tests of the simulated platform.

if(NOT IPMIB_BUILD_TESTS)
  return()
endif()

ipmib_test(platform_simulated_test
    SOURCES device/counters_test.cpp device/device_test.cpp device/growth_test.cpp change_test.cpp generate/generate_test.cpp
            hooks_test.cpp ip_rows_test.cpp route_rows_test.cpp scenario/schedule_test.cpp scenario/scenario_test.cpp services/services_test.cpp
    LIBS ipmib_platform_simulated_objects)
target_compile_definitions(platform_simulated_test PRIVATE IPMIB_SOURCE_DIR="${PROJECT_SOURCE_DIR}")

# The same scenarios as the schema sees them. Python stands beside the project, it is no part of what is built.
add_test(NAME scenario_schema COMMAND python3 ${CMAKE_CURRENT_SOURCE_DIR}/schema_test.py ${PROJECT_SOURCE_DIR})
set_tests_properties(scenario_schema PROPERTIES SKIP_RETURN_CODE 77)
