// SPDX-License-Identifier: BSD-3-Clause
// The IPv6 neighbour cache.
#include "services/service.h"

using namespace ipmib::platform;

namespace
{

void fillNeighbour(const LinuxPlatform &platform, const Neighbour &row, NeighbourEntry *entry)
{
    *entry = entryOf(row);
    entry->last_updated_s = ipmib_be32(platform.uptime().atSecond(row.lastUpdatedS) / Uptime::ticksPerSecond);
}

} // namespace

uint32_t ND_GetNetToPhysicalTable(uint32_t if_index, const uint8_t *address, NeighbourEntry *entry, uintptr_t)
{
    LinuxPlatform *platform = running();
    const Neighbour *row =
        platform == nullptr ? nullptr : platform->neighbours().ask(NeighbourKey::of(if_index, address));
    if (row == nullptr) {
        return notFound;
    }
    fillNeighbour(*platform, *row, entry);
    return success;
}

uint32_t ND_GetNextNetToPhysicalTable(uint32_t mode, NeighbourEntry *entry)
{
    LinuxPlatform *platform = running();
    if (platform == nullptr || (mode != neighboursGlobal && mode != neighboursLinkLocal)) {
        return noMore;
    }
    const NeighbourKey key = NeighbourKey::of(ipmib_be32_get(entry->if_index), entry->address);
    Neighbours &neighbours = platform->neighbours();
    const Neighbour *row =
        mode == neighboursGlobal ? neighbours.askAfterGlobal(key) : neighbours.askAfterLinkLocal(key);
    if (row == nullptr) {
        return noMore;
    }
    fillNeighbour(*platform, *row, entry);
    return success;
}
