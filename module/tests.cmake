# SPDX-License-Identifier: BSD-3-Clause
# Tests of the module's rooms over a scripted platform, all in one program.

ipmib_test(
  module_test
  SOURCES
  addr/ip_address_next_test.cpp
  addr/ip_address_prefix_next_test.cpp
  addr/ip_address_prefix_test.cpp
  addr/ip_address_test.cpp
  addr/ip_default_router_test.cpp
  addr/prefix_pointer_model_test.cpp
  addr/prefix_pointer_test.cpp
  frame/dispatcher_test.cpp
  frame/lifecycle_test.cpp
  frame/walk_test.cpp
  mibtree/catalogue_test.cpp
  mibtree/link_invariants_test.cpp
  mibtree/record_invariants_test.cpp
  mibtree/tree_objects_test.cpp
  mibtree/tree_test.cpp
  nd_icmp/icmp_msg_stats_test.cpp
  nd_icmp/icmp_stats_test.cpp
  nd_icmp/ip_net_to_physical_next_test.cpp
  nd_icmp/ip_net_to_physical_test.cpp
  nd_icmp/ipv6_router_advert_test.cpp
  stats/ip_if_stats_test.cpp
  stats/ip_system_stats_test.cpp
  stats/ipv6_interface_test.cpp
  stats/ipv6_scalars_test.cpp
  ALONE
  mibtree/tree_walk_test.cpp
  LIBS
  ipmib_module_objects
  ipmib_scripted)
target_include_directories(module_test PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_compile_definitions(module_test PRIVATE IPMIB_TREE_OBJECTS="${CMAKE_CURRENT_SOURCE_DIR}/mibtree/objects.txt")

# Sanitizers and coverage add code and imports of their own.
if(NOT IPMIB_SANITIZE)
  add_test(NAME tree_object
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/mibtree/object_test.sh ${CMAKE_NM} ${CMAKE_READELF}
                   $<FILTER:$<TARGET_OBJECTS:ipmib_module_objects>,INCLUDE,mibtree/tree\\.cpp>)
endif()

# `make test-all` runs these two, in the release. valgrind looks at what a sanitizer does not: values that nobody has set. It
# runs programs of the build machine alone.
if(NOT IPMIB_SANITIZE AND NOT IPMIB_DEVICE_ONLY)
  add_test(NAME module_with_older_compilers COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/older_compilers_test.sh
                                                    ${IPMIB_MODULE_SOURCES})
  add_test(NAME module_under_valgrind
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/valgrind_test.sh $<TARGET_FILE:module_test>)
  set_tests_properties(module_with_older_compilers module_under_valgrind
                       PROPERTIES LABELS test-all SKIP_RETURN_CODE 77 TIMEOUT 600)
endif()
