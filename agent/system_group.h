// SPDX-License-Identifier: BSD-3-Clause
// The system group (sysDescr, sysName, ...) of an agent that has nobody beside it to serve it.
#pragma once

namespace ipmib::agent
{

// To be called before the configuration is read, which names the system, its contact and its location (sysname,
// syscontact, syslocation, ...) as for snmpd.
void serveSystemGroup();

} // namespace ipmib::agent
