// SPDX-License-Identifier: BSD-3-Clause
// The headers of the net-snmp libraries, in the one order that they can be read in.
#pragma once

#include <ipmib/mib_tree.h> // net-snmp's macros take some of its names, so it must have been read before them

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <net-snmp/agent/net-snmp-agent-includes.h>

#include <net-snmp/library/large_fd_set.h>
