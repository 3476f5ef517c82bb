// SPDX-License-Identifier: BSD-3-Clause
// Two of snmpd's own MIB modules, which do nothing unless they are asked.

#include "system_group.h"

#include "net_snmp.h"
#include "snmp_library.h"
#include "varbind.h"

#include <net-snmp/agent/agent_sysORTable.h>

// The library exports them and declares them in none of its installed headers.
extern "C" {
void init_system_mib(void);
void init_sysORTable(void);
}

namespace ipmib::agent
{

void serveSystemGroup(SystemGroupOf whose)
{
    if (whose == SystemGroupOf::agent) {
        init_system_mib();
    } else {
        passOverSystemGroup();
    }
    init_sysORTable();
}

void passOverSystemGroup()
{
    for (const char *word : {"syscontact", "sysdescr", "syslocation", "sysname", "sysobjectid", "sysservices"}) {
        register_config_handler(
            SnmpLibrary::applicationName, word, [](const char *, char *) {}, nullptr, "VALUE");
    }
}

SystemCapabilities::SystemCapabilities(const host::Catalogue &catalogue) : catalogue_(catalogue)
{
    for (const host::Capability &capability : catalogue_.capabilities()) {
        LibraryOid place(capability.oid.view());
        register_sysORTable(place.data(), place.size(), capability.text);
    }
}

SystemCapabilities::~SystemCapabilities()
{
    for (const host::Capability &capability : catalogue_.capabilities()) {
        LibraryOid place(capability.oid.view());
        unregister_sysORTable(place.data(), place.size());
    }
}

} // namespace ipmib::agent
