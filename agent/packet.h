// SPDX-License-Identifier: BSD-3-Clause
// When a packet of requests begins, for whoever answers part of it.
#pragma once

#include "net_snmp.h"

#include "host/catalogue.h"

namespace ipmib::agent
{

// Tells the catalogue that a packet begins, unless it has been told already of this one, or of one that began when this
// one was there. `isOfAnother`: that one asks another instance of the platform than the one before it.
void beginPacketOnce(host::Catalogue &catalogue, netsnmp_agent_request_info *info, bool isOfAnother);

} // namespace ipmib::agent
