# SPDX-License-Identifier: BSD-3-Clause
# Debian packages, built by packaging/build_packages.sh: ipmib (daemon), libipmib (library) and ipmib-dev (development).

file(STRINGS debian/changelog latest_change LIMIT_COUNT 1)
string(REGEX MATCH "\\(([^-)]+)-([^)]+)\\)" version ${latest_change})
if(NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
  message(FATAL_ERROR "packaging/debian/changelog is about ${CMAKE_MATCH_1}, the project is ${PROJECT_VERSION}")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_2})
set(package_version ${CMAKE_MATCH_1}-${CMAKE_MATCH_2})
file(STRINGS ${PROJECT_SOURCE_DIR}/NEWS.md news REGEX "^## ${PROJECT_VERSION} ")
if(NOT news)
  message(FATAL_ERROR "NEWS.md says nothing of ${PROJECT_VERSION}")
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ipmib)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGE_VENDOR "The ipmib maintainers")
# Who answers for packages is whoever builds them, as Debian's own tools take it; or whom the changelog names.
if(DEFINED ENV{DEBEMAIL} AND DEFINED ENV{DEBFULLNAME})
  set(CPACK_PACKAGE_CONTACT "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
else()
  file(STRINGS debian/changelog signature LIMIT_COUNT 1 REGEX "^ -- ")
  string(REGEX REPLACE "^ -- (.*>) .*" "\\1" CPACK_PACKAGE_CONTACT "${signature}")
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL daemon library development)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_STRIP_FILES ON)
# Units and settings have absolute places.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/debian/compress.cmake)

set(CPACK_DEBIAN_DAEMON_PACKAGE_NAME ipmib)
set(CPACK_DEBIAN_DAEMON_PACKAGE_SECTION net)
set(CPACK_COMPONENT_DAEMON_DESCRIPTION "IP-MIB over SNMP: agent and terminal tool
Serves the IPv6 side of the IP-MIB (RFC 4293), complete and live: interface
settings, traffic counters of the system and of each interface, prefixes,
addresses, neighbours, default routers, router advertisements and ICMPv6.

This package contains ipmibd, an SNMP agent of its own or a sub-agent of the
snmpd that already runs, its service, and ipmibctl, which shows the same
tables on the terminal without SNMP.")
set(CPACK_DEBIAN_DAEMON_PACKAGE_DEPENDS
    "libipmib (= ${package_version}), systemd-standalone-sysusers | systemd | systemd-sysusers")
set(CPACK_DEBIAN_DAEMON_PACKAGE_SUGGESTS "snmp, snmpd, radvd")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libipmib)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "IP-MIB over SNMP: plug-in and device services
The IPv6 side of the IP-MIB (RFC 4293) as a plug-in that an SNMP agent loads.

This package contains the plug-in, and the services that it asks, as libraries
that are loaded beside it: those of a Linux kernel, and those of a device that
is simulated from a file.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${development_package})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "IP-MIB over SNMP: headers and porting kit
The IPv6 side of the IP-MIB (RFC 4293) as a plug-in that an SNMP agent loads.

This package contains what it takes to bring the plug-in to another device, or
another plug-in to the same agent: the headers, files for pkg-config and CMake,
ipmib-portcheck, which says in words which promise a device's services break,
and ipmib-agentcheck, which does the same for any agent, over SNMP.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libipmib (= ${package_version})")

# Beside the files: the lists and scripts of the daemon's package.
if(IPMIB_INSTALL_SERVICE)
  file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/conffiles "/etc/apparmor.d/ipmibd\n/etc/default/ipmibd\n/etc/snmp/ipmibd.conf\n")
  set(CPACK_DEBIAN_DAEMON_PACKAGE_CONTROL_EXTRA
      ${CMAKE_CURRENT_BINARY_DIR}/conffiles ${CMAKE_CURRENT_SOURCE_DIR}/debian/postinst
      ${CMAKE_CURRENT_SOURCE_DIR}/debian/prerm ${CMAKE_CURRENT_SOURCE_DIR}/debian/postrm)
  set(CPACK_DEBIAN_DAEMON_PACKAGE_CONTROL_STRICT_PERMISSION ON)
endif()

# The licence goes wherever a part goes; Debian has a form of its own for it, which names it alone.
foreach(part IN ITEMS daemon library development)
  string(TOUPPER ${part} upper)
  set(place ${doc_dir}/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  if(IPMIB_INSTALL_SERVICE AND IPMIB_PACKAGE_FORMAT STREQUAL DEB)
    install(FILES debian/copyright DESTINATION ${place} COMPONENT ${part})
    install(FILES debian/changelog DESTINATION ${place} RENAME changelog.Debian COMPONENT ${part})
  else()
    install(FILES ${PROJECT_SOURCE_DIR}/LICENSES/BSD-3-Clause.txt DESTINATION ${place} RENAME LICENSE COMPONENT ${part})
  endif()
endforeach()
if(IPMIB_INSTALL_SERVICE AND IPMIB_PACKAGE_FORMAT STREQUAL DEB)
  install(FILES debian/libipmib.lintian-overrides DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides RENAME libipmib
          COMPONENT library)
endif()
