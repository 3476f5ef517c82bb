// SPDX-License-Identifier: BSD-3-Clause
// The neighbour discovery settings of one interface: the kernel's timers, and what radvd advertises.
#pragma once

#include "advertisements/radvd_conf.h"
#include "links/ip6_link.h"
#include "links/link_table.h"

#include <ipmib/records.h>

namespace ipmib::platform
{

// `radvd` is null for an interface that radvd's configuration does not name.
NdIfConfigInfo configInfo(const Link &link, const Ip6Link &ip6, const RadvdInterface *radvd);

} // namespace ipmib::platform
