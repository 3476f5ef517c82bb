// SPDX-License-Identifier: BSD-3-Clause
// The system group (sysDescr, sysName, ...) of an agent that has nobody beside it to serve it.
#pragma once

#include "host/catalogue.h"

namespace ipmib::agent
{

// Of a device that says itself what it is, the front end serves the group, and the library what else there is.
enum class SystemGroupOf { agent, device };

// To be called before the configuration is read, which names the system, its contact and its location (sysname,
// syscontact, syslocation, ...) as for snmpd.
void serveSystemGroup(SystemGroupOf whose);

// Instead of that, for an agent that leaves the group to its master: the same configuration is read without complaint.
void passOverSystemGroup();

// The lines of sysORTable for what else the agent can do, as long as it lives.
class SystemCapabilities
{
  public:
    // The catalogue must outlive them.
    explicit SystemCapabilities(const host::Catalogue &catalogue);
    ~SystemCapabilities();
    SystemCapabilities(const SystemCapabilities &) = delete;
    SystemCapabilities &operator=(const SystemCapabilities &) = delete;

  private:
    const host::Catalogue &catalogue_;
};

} // namespace ipmib::agent
