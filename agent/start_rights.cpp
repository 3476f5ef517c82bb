// SPDX-License-Identifier: BSD-3-Clause
// Also of an agent that nobody has told of namespaces: it could do with them whatever whoever took it over wanted.
#include "start_rights.h"

#include "net_snmp.h"
#include "support/capabilities.h"

#include <linux/capability.h>

#include <cerrno>
#include <cstring>

namespace ipmib::agent
{

void letGoOfStartRights()
{
    constexpr std::uint64_t ofStart = support::capability(CAP_SYS_ADMIN) | support::capability(CAP_SYS_PTRACE);
    if ((support::heldCapabilities() & ofStart) != 0 && !support::keepCapabilities(~ofStart)) {
        snmp_log(LOG_WARNING, "cannot give up the rights of the start: %s\n", std::strerror(errno));
    }
}

} // namespace ipmib::agent
