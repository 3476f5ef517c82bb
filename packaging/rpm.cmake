# SPDX-License-Identifier: BSD-3-Clause
# The same three packages as RPM, built by packaging/build_rpm.sh: ipmib, libipmib and ipmib-devel.

set(CPACK_RPM_COMPONENT_INSTALL ON)
set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_LICENSE BSD-3-Clause)
set(CPACK_RPM_PACKAGE_RELEASE 1)
set(CPACK_RPM_PACKAGE_RELOCATABLE OFF)
set(CPACK_RPM_COMPRESSION_TYPE xz)
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
    /usr/sbin /usr/share/man /usr/share/man/man1 /usr/share/man/man5 /usr/share/man/man8
    /etc /etc/default /etc/snmp /etc/apparmor.d /lib /usr/lib/systemd /usr/lib/systemd/system /usr/lib/sysusers.d
    /usr/lib64 /usr/lib64/cmake /usr/lib64/pkgconfig
    /usr/share/bash-completion /usr/share/bash-completion/completions /usr/share/fish
    /usr/share/fish/vendor_completions.d /usr/share/zsh /usr/share/zsh/vendor-completions)

foreach(part IN ITEMS DAEMON LIBRARY DEVELOPMENT)
  # The first line of a description is the summary.
  string(FIND "${CPACK_COMPONENT_${part}_DESCRIPTION}" "\n" end)
  string(SUBSTRING "${CPACK_COMPONENT_${part}_DESCRIPTION}" 0 ${end} CPACK_RPM_${part}_PACKAGE_SUMMARY)
  math(EXPR end "${end} + 1")
  string(SUBSTRING "${CPACK_COMPONENT_${part}_DESCRIPTION}" ${end} -1 CPACK_RPM_${part}_PACKAGE_DESCRIPTION)
  set(CPACK_RPM_${part}_PACKAGE_NAME ${CPACK_DEBIAN_${part}_PACKAGE_NAME})
  set(CPACK_RPM_${part}_FILE_NAME RPM-DEFAULT)
endforeach()
set(CPACK_RPM_DAEMON_PACKAGE_REQUIRES "libipmib = ${PROJECT_VERSION}")
set(CPACK_RPM_DEVELOPMENT_PACKAGE_REQUIRES "libipmib = ${PROJECT_VERSION}")
set(CPACK_RPM_DAEMON_PACKAGE_GROUP System/Daemons)
set(CPACK_RPM_LIBRARY_PACKAGE_GROUP System/Libraries)
set(CPACK_RPM_DEVELOPMENT_PACKAGE_GROUP Development/Libraries)
# Plug-ins are for programs of these packages to find, not for other packages.
set(CPACK_RPM_SPEC_MORE_DEFINE "%define __provides_exclude_from ^/usr/lib64/ipmib/
%define __requires_exclude ^(libipmib|platform_).*$
%define packager ${CPACK_PACKAGE_CONTACT}
%define _build_id_links none
%define source_date_epoch_from_changelog 0
%define use_source_date_epoch_as_buildtime 1
%define clamp_mtime_to_source_date_epoch 1
%define _buildhost localhost")

if(IPMIB_INSTALL_SERVICE)
  set(CPACK_RPM_DAEMON_USER_FILELIST
      "%config(noreplace) %attr(0640,root,_ipmib) /etc/snmp/ipmibd.conf"
      "%config(noreplace) /etc/default/ipmibd"
      "%config(noreplace) /etc/apparmor.d/ipmibd")
  foreach(step IN ITEMS PRE_INSTALL POST_INSTALL PRE_UNINSTALL POST_UNINSTALL)
    string(TOLOWER ${step} file)
    set(CPACK_RPM_DAEMON_${step}_SCRIPT_FILE ${CMAKE_CURRENT_SOURCE_DIR}/rpm/${file})
  endforeach()
endif()
