// SPDX-License-Identifier: BSD-3-Clause
// The IPv6 neighbour cache.
#include "services/call.h"

using namespace ipmib::simulated;

namespace
{

NeighbourEntry entryAt(const Device &device, const Neighbour &row)
{
    NeighbourEntry entry = entryOf(row);
    entry.last_updated_s = ipmib_be32(device.uptimeAtSecond(row.lastUpdatedS) / ticksPerSecond);
    return entry;
}

} // namespace

uint32_t ND_GetNetToPhysicalTable(uint32_t if_index, const uint8_t *address, NeighbourEntry *entry, uintptr_t)
{
    const Call call(Service::ND_GetNetToPhysicalTable, if_index);
    const Neighbour *row = call ? call.device().neighbour(NeighbourKey::of(if_index, address)) : nullptr;
    if (row == nullptr) {
        return call ? notFound : call.result();
    }
    *entry = entryAt(call.device(), *row);
    return success;
}

uint32_t ND_GetNextNetToPhysicalTable(uint32_t mode, NeighbourEntry *entry)
{
    const uint32_t ifIndex = ipmib_be32_get(entry->if_index);
    const Call call(Service::ND_GetNextNetToPhysicalTable, ifIndex);
    if (!call) {
        return call.result();
    }
    const NeighbourKey key = NeighbourKey::of(ifIndex, entry->address);
    const Neighbour *row = mode == ipmib::platform::neighboursGlobal      ? call.device().globalNeighbourAfter(key)
                           : mode == ipmib::platform::neighboursLinkLocal ? call.device().linkLocalNeighbourAfter(key)
                                                                          : nullptr;
    if (row == nullptr) {
        return noMore;
    }
    *entry = entryAt(call.device(), *row);
    return success;
}
