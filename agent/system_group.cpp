// SPDX-License-Identifier: BSD-3-Clause
// Two of snmpd's own MIB modules, which do nothing unless they are asked.

#include "system_group.h"

// The library exports them and declares them in none of its installed headers.
extern "C" {
void init_system_mib(void);
void init_sysORTable(void);
}

namespace ipmib::agent
{

void serveSystemGroup()
{
    init_system_mib();
    init_sysORTable();
}

} // namespace ipmib::agent
