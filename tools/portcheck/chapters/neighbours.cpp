// SPDX-License-Identifier: BSD-3-Clause
// Neighbours: the two lists of each interface, and the exact lookup of each entry.
#include "chapters.h"
#include "listing.h"
#include "rows.h"

namespace ipmib::portcheck
{

namespace
{

constexpr std::uint8_t linkLocalStart[16] = {0xFE, 0x80};

// What a neighbour's entry says by itself.
void look(Probe &probe, std::uint32_t ifIndex, NeighbourMode mode, const NeighbourEntry &entry, std::uint32_t now)
{
    const std::string call = "ND_GetNextNetToPhysicalTable";
    const std::string who = "interface " + std::to_string(ifIndex) + ", " + addressText(entry.address);
    if (isLinkLocal(entry.address) != (mode == withinLinkLocal)) {
        probe.broken(Promise::neighbourMode, call, who + " in mode " + std::to_string(mode));
    }
    const std::uint32_t entered = ipmib_be32_get(entry.if_index);
    if (entered != ifIndex) {
        probe.broken(Promise::neighbourInterface, call,
                     who + ": the entry's ifIndex reads " + std::to_string(entered) +
                         (swapped(entered) == ifIndex ? ", the right one in the wrong byte order" : ""));
    }
    const std::uint32_t type = ipmib_be32_get(entry.type);
    const std::uint32_t state = ipmib_be32_get(entry.state);
    // One less than what is reported: 2 dynamic, 3 static; 0 would be reported as "other".
    if (type > 4 || state < 1 || state > 7) {
        probe.broken(Promise::neighbourCodes, call,
                     who + ": type " + std::to_string(type) + ", state " + std::to_string(state));
    }
    if (ipmib_be32_get(entry.last_updated_s) > now + 1) {
        probe.broken(Promise::neighbourTime, call,
                     who + " was updated at " + std::to_string(ipmib_be32_get(entry.last_updated_s)) + ", and now is " +
                         std::to_string(now));
    }
}

Listing<NeighbourEntry> listingOf(Probe &probe, std::uint32_t ifIndex, NeighbourMode mode)
{
    Listing<NeighbourEntry> listing;
    listing.what = "neighbours of interface " + std::to_string(ifIndex) + ", mode " + std::to_string(mode);
    listing.nextCall = "ND_GetNextNetToPhysicalTable";
    listing.ascend = Promise::neighboursAscend;
    listing.move = Promise::neighboursMove;
    listing.begin = listing.follow = Promise::neighboursFollow;
    if (mode == withinLinkLocal) {
        listing.start = Key::of(linkLocalStart);
    }
    listing.next = [&probe, ifIndex, mode](const Key &key, NeighbourEntry &row) {
        row = {};
        row.if_index = ipmib_be32(ifIndex);
        std::memcpy(row.address, key.address, sizeof row.address);
        return probe.fill(
            "ND_GetNextNetToPhysicalTable behind " + addressText(key.address), row,
            [&](NeighbourEntry *filled) { return probe.services().ND_GetNextNetToPhysicalTable(mode, filled); });
    };
    listing.keyOf = [](const NeighbourEntry &row) { return Key::of(row.address); };
    listing.text = [](const Key &key) { return addressText(key.address); };
    listing.look = [&probe, ifIndex, mode, now = probe.secondsSinceBoot()](const NeighbourEntry &row) {
        look(probe, ifIndex, mode, row, now);
    };
    return listing;
}

bool findExactly(Probe &probe, std::uint32_t ifIndex, const std::uint8_t *address, std::uintptr_t length,
                 NeighbourEntry &entry)
{
    entry = {};
    return probe.fill("ND_GetNetToPhysicalTable of " + addressText(address), entry, [&](NeighbourEntry *filled) {
        return probe.services().ND_GetNetToPhysicalTable(ifIndex, address, filled, length);
    });
}

void checkExact(Probe &probe, std::uint32_t ifIndex, const NeighbourEntry &listed)
{
    const auto anywhere = reinterpret_cast<std::uintptr_t>(&listed); // in one place the module passes an address
    for (const std::uintptr_t length : {std::uintptr_t{16}, std::uintptr_t{20}, anywhere}) {
        NeighbourEntry found;
        if (!findExactly(probe, ifIndex, listed.address, length, found) ||
            std::memcmp(found.address, listed.address, sizeof found.address) != 0 ||
            found.if_index.raw != listed.if_index.raw) {
            probe.broken(Promise::neighbourExact, "ND_GetNetToPhysicalTable",
                         "interface " + std::to_string(ifIndex) + ", " + addressText(listed.address) +
                             (length == anywhere ? " with an address as the last argument" : ""));
            return;
        }
    }
}

} // namespace

std::vector<NeighbourEntry> neighboursOf(Probe &probe, std::uint32_t ifIndex, NeighbourMode mode)
{
    return rowsOf(listingOf(probe, ifIndex, mode), probe);
}

void checkNeighbours(Probe &probe, host::Resolver &)
{
    constexpr std::uint8_t nobody[16] = {0x20, 0x01, 0x0D, 0xB8, 0xFF, 0xFF, 0xFF, 0xFF,
                                         0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE};
    std::size_t count = 0;
    for (const std::uint32_t ifIndex : interfacesOf(probe, Selection::withNeighbours)) {
        for (const NeighbourMode mode : {outsideLinkLocal, withinLinkLocal}) {
            const auto entries = checkedRowsOf(listingOf(probe, ifIndex, mode), probe);
            count += entries.size();
            constexpr std::size_t lookedUp = 1000;
            for (std::size_t i = 0; i < entries.size(); i += entries.size() / lookedUp + 1) {
                checkExact(probe, ifIndex, entries[i]);
            }
        }
        NeighbourEntry entry;
        if (findExactly(probe, ifIndex, nobody, sizeof nobody, entry)) {
            probe.broken(Promise::neighbourAbsent, "ND_GetNetToPhysicalTable",
                         "interface " + std::to_string(ifIndex) + ", " + addressText(nobody));
        }
    }
    probe.fact("neighbours: " + std::to_string(count));
}

} // namespace ipmib::portcheck
