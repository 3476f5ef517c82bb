// SPDX-License-Identifier: BSD-3-Clause
// The system group (sysDescr, sysName, ...) of an agent that has nobody beside it to serve it.
#pragma once

namespace ipmib::agent
{

// To be called before the configuration is read, which names the system, its contact and its location (sysname,
// syscontact, syslocation, ...) as for snmpd.
void serveSystemGroup();

// Instead of that, for an agent that leaves the group to its master: the same configuration is read without complaint.
void passOverSystemGroup();

} // namespace ipmib::agent
