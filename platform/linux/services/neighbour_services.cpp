// SPDX-License-Identifier: BSD-3-Clause
// The IPv6 neighbour cache. Not followed yet: there are no neighbours.
#include "services/service.h"

using namespace ipmib::platform;

uint32_t ND_GetNetToPhysicalTable(uint32_t, const uint8_t *, NeighbourEntry *, uintptr_t)
{
    return notFound;
}

uint32_t ND_GetNextNetToPhysicalTable(uint32_t, NeighbourEntry *)
{
    return noMore;
}
