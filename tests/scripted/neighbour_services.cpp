// SPDX-License-Identifier: BSD-3-Clause
// Scripted services: the neighbour cache.
#include "state.h"

using namespace ipmib::scripted;

namespace
{

bool isLinkLocal(const std::uint8_t *address)
{
    return address[0] == 0xFE && (address[1] & 0xC0) == 0x80;
}

bool isAfter(const std::uint8_t *address, const std::uint8_t *key)
{
    return std::memcmp(address, key, 16) > 0;
}

} // namespace

uint32_t ND_GetNetToPhysicalTable(uint32_t if_index, const uint8_t *address, NeighbourEntry *entry, uintptr_t length)
{
    // In one place the module passes an address instead of a length.
    note([&] {
        return "ND_GetNetToPhysicalTable(" + number(if_index) + ", " + addressText(address) + ", " +
               (length < 0x1000 ? number(length) : "address") + ")";
    });
    expectCleared("ND_GetNetToPhysicalTable", entry, sizeof *entry);
    const NeighbourEntry *found = nullptr;
    for (const NeighbourEntry &candidate : world().neighbours) {
        if (ipmib_be32_get(candidate.if_index) == if_index && std::memcmp(candidate.address, address, 16) == 0) {
            found = &candidate;
        }
    }
    return answer("ND_GetNetToPhysicalTable", found, entry);
}

uint32_t ND_GetNextNetToPhysicalTable(uint32_t mode, NeighbourEntry *entry)
{
    const std::uint32_t ifIndex = ipmib_be32_get(entry->if_index);
    note([&] {
        return "ND_GetNextNetToPhysicalTable(" + number(mode) + ", " + number(ifIndex) + " " +
               addressText(entry->address) + ")";
    });
    expectCleared("ND_GetNextNetToPhysicalTable", entry->link_layer,
                  sizeof *entry - offsetof(NeighbourEntry, link_layer));
    const NeighbourEntry *next = nullptr;
    for (const NeighbourEntry &candidate : world().neighbours) {
        if (ipmib_be32_get(candidate.if_index) == ifIndex && isLinkLocal(candidate.address) == (mode == 2) &&
            isAfter(candidate.address, entry->address) &&
            (next == nullptr || isAfter(next->address, candidate.address))) {
            next = &candidate;
        }
    }
    return answer("ND_GetNextNetToPhysicalTable", next, entry);
}
