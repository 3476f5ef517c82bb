# SPDX-License-Identifier: BSD-3-Clause
# Tests of the Linux platform.

ipmib_test(platform_linux_test
    SOURCES core/proc_file_test.cpp core/rtnetlink_test.cpp core/uptime_test.cpp counters/counter_layout_test.cpp
            counters/ipv4_counter_text_test.cpp counters/snmp6_text_test.cpp hooks_test.cpp
            addresses/ipv4_address_table_test.cpp links/link_parse_test.cpp
    LIBS ipmib_platform_linux_objects)

ipmib_test(links_netns_test
    SOURCES core/mirror_netns_test.cpp counters/counters_netns_test.cpp links/links_netns_test.cpp
    LIBS ipmib_platform_linux_objects ipmib_netns JSON)

ipmib_test(radvd_test
    SOURCES advertisements/config_info_test.cpp advertisements/radvd_conf_test.cpp advertisements/radvd_file_test.cpp
    LIBS ipmib_platform_linux_objects)

ipmib_test(accounting_netns_test
           SOURCES accounting/accounting_table_netns_test.cpp accounting/ipv4_accounting_netns_test.cpp
                   accounting/ipv4_rows_netns_test.cpp
           LIBS ipmib_platform_linux_objects ipmib_netns)

ipmib_test(ip_netns_test SOURCES ipv4_netns_test.cpp rows/ip_counters_netns_test.cpp
                   rows/ip_tables_netns_test.cpp rows/link_tables_netns_test.cpp
           LIBS ipmib_platform_linux_objects ipmib_netns JSON)

ipmib_test(neighbours_netns_test
    SOURCES neighbours/neighbour_scale_netns_test.cpp neighbours/neighbour_states_netns_test.cpp
            neighbours/neighbour_testing.cpp
    LIBS ipmib_platform_linux_objects ipmib_netns JSON)

if(IPMIB_BUILD_TESTS)
  add_test(NAME platform_linux_exports
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/exports_test.sh $<TARGET_FILE:ipmib_platform_linux>
                   ${PROJECT_SOURCE_DIR}/include/ipmib/platform.h)
endif()

ipmib_test(addressing_netns_test
    SOURCES addresses/addresses_netns_test.cpp addresses/prefixes_netns_test.cpp
            addresses/test_rows.cpp routes/routers_netns_test.cpp
    LIBS ipmib_platform_linux_objects ipmib_netns
    COST 20 JSON) # what routers advertise

ipmib_test(addressing_test
    SOURCES addresses/messages_test.cpp routes/forwarding_table_test.cpp
            addresses/prefix_table_test.cpp
    LIBS ipmib_platform_linux_objects)

ipmib_test(connections_netns_test SOURCES connections/connections_netns_test.cpp connections/test_sockets.cpp
           LIBS ipmib_platform_linux_objects ipmib_netns JSON)

ipmib_test(routes_netns_test SOURCES routes/routes_netns_test.cpp
           LIBS ipmib_platform_linux_objects ipmib_netns JSON)

if(IPMIB_BUILD_TESTS)
  ipmib_test(netns_helper_netns_test SOURCES namespaces/helper_netns_test.cpp
             LIBS ipmib_platform_linux_objects ipmib_netns)
  add_dependencies(netns_helper_netns_test ipmib-netns)
  target_compile_definitions(netns_helper_netns_test PRIVATE IPMIB_NETNS_PROGRAM="$<TARGET_FILE:ipmib-netns>")
endif()
