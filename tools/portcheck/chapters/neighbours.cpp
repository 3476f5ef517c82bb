// SPDX-License-Identifier: BSD-3-Clause
// Neighbours: the two lists of each interface, and the exact lookup of each entry.
#include "chapters.h"
#include "judge.h"
#include "listing.h"
#include "rows.h"

#include <algorithm>
#include <set>

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
    Judge judge(probe, call, who);
    judge.field(
        Promise::neighbourInterface, "if_index", ipmib_be32_get(entry.if_index),
        [ifIndex](std::uint32_t value) { return value == ifIndex; },
        "the interface asked for, " + std::to_string(ifIndex));
    // One less than what is reported: 2 dynamic, 3 static; 0 would be reported as "other".
    judge.field(
        Promise::neighbourCodes, "type", ipmib_be32_get(entry.type), [](std::uint32_t value) { return value <= 4; },
        "0 to 4");
    judge.field(
        Promise::neighbourCodes, "state", ipmib_be32_get(entry.state),
        [](std::uint32_t value) { return value >= 1 && value <= 7; }, "1 to 7");
    judge.linkLocal(entry.address, ifIndex);
    judge.time(Promise::neighbourTime, "last_updated_s", ipmib_be32_get(entry.last_updated_s), now);
}

FoundRow rowOf(bool succeeded, const NeighbourEntry &entry)
{
    return succeeded ? FoundRow(ListedRow::of(Key::of(entry.address), entry)) : FoundRow();
}

bool findExactly(Probe &probe, std::uint32_t ifIndex, const std::uint8_t *address, std::uintptr_t length,
                 NeighbourEntry &entry)
{
    entry = {};
    return probe.fill("ND_GetNetToPhysicalTable of " + addressText(address), entry, [&](NeighbourEntry *filled) {
        return probe.services().ND_GetNetToPhysicalTable(ifIndex, address, filled, length);
    });
}

FoundRow findNext(Probe &probe, std::uint32_t ifIndex, NeighbourMode mode, const std::uint8_t *address,
                  Cursor cursor = Cursor::cleared)
{
    auto entry = recordFor<NeighbourEntry>(cursor);
    entry.if_index = ipmib_be32(ifIndex);
    std::memcpy(entry.address, address, sizeof entry.address);
    const bool found =
        probe.fill("ND_GetNextNetToPhysicalTable behind " + addressText(address), entry,
                   [&](NeighbourEntry *filled) { return probe.services().ND_GetNextNetToPhysicalTable(mode, filled); });
    return rowOf(found, entry);
}

Listing listingOf(Probe &probe, std::uint32_t ifIndex, NeighbourMode mode)
{
    Listing listing;
    listing.what = "neighbours of interface " + std::to_string(ifIndex) + ", mode " + std::to_string(mode);
    listing.nextCall = "ND_GetNextNetToPhysicalTable";
    listing.exactCall = "ND_GetNetToPhysicalTable";
    listing.ascend = Promise::neighboursAscend;
    listing.move = Promise::neighboursMove;
    listing.begin = listing.follow = Promise::neighboursFollow;
    listing.exactly = Promise::neighbourExact;
    if (mode == withinLinkLocal) {
        listing.start = Key::of(linkLocalStart);
    }
    listing.next = [&probe, ifIndex, mode](const Key &key) { return findNext(probe, ifIndex, mode, key.address); };
    listing.nextOverAnother = [&probe, ifIndex, mode](const Key &key) {
        return findNext(probe, ifIndex, mode, key.address, Cursor::used);
    };
    listing.exact = [&probe, ifIndex](const Key &key) {
        NeighbourEntry entry;
        return rowOf(findExactly(probe, ifIndex, key.address, sizeof key.address, entry), entry);
    };
    listing.text = [](const Key &key) { return addressText(key.address); };
    listing.items = [](const ListedRow &row) { return itemsOf(row.as<NeighbourEntry>()); };
    listing.look = [&probe, ifIndex, mode, now = probe.secondsSinceBoot()](const ListedRow &row) {
        look(probe, ifIndex, mode, row.as<NeighbourEntry>(), now);
    };
    return listing;
}

// In one place the module passes 20, in one an address.
void checkLastArgument(Probe &probe, std::uint32_t ifIndex, const ListedRow &row)
{
    const auto anywhere = reinterpret_cast<std::uintptr_t>(&row);
    for (const std::uintptr_t length : {std::uintptr_t{20}, anywhere}) {
        NeighbourEntry found;
        if (!findExactly(probe, ifIndex, row.key.address, length, found) ||
            std::memcmp(found.address, row.key.address, sizeof found.address) != 0) {
            probe.broken(Promise::neighbourExact, "ND_GetNetToPhysicalTable",
                         "interface " + std::to_string(ifIndex) + ", " + addressText(row.key.address) + " with " +
                             (length == anywhere ? "an address" : "20") + " as the last argument");
            return;
        }
    }
}

// Neighbours that there may be: the default routers, and addresses that differ from a listed one in the last byte.
std::vector<Key> maybeNeighbours(const std::vector<ListedRow> &rows, const std::vector<GatewayRecord> &routers,
                                 std::uint32_t ifIndex, NeighbourMode mode)
{
    std::vector<Key> maybe;
    for (const GatewayRecord &router : routers) {
        if (ipmib_be32_get(router.if_index) == ifIndex && isLinkLocal(router.address) == (mode == withinLinkLocal)) {
            maybe.push_back(Key::of(router.address));
        }
    }
    constexpr std::size_t most = 8;
    for (std::size_t i = 0; i < rows.size(); i += rows.size() / most + 1) {
        addKeysAround(rows[i].key, maybe);
    }
    return maybe;
}

void checkAbsent(Probe &probe, std::uint32_t ifIndex, const std::uint8_t *address)
{
    NeighbourEntry entry;
    if (findExactly(probe, ifIndex, address, sizeof entry.address, entry)) {
        probe.broken(Promise::neighbourAbsent, "ND_GetNetToPhysicalTable",
                     "it finds " + addressText(address) + " on interface " + std::to_string(ifIndex));
    }
}

// Neighbours of an interface that another one does not list are not found there.
void checkElsewhere(Probe &probe, std::uint32_t ifIndex, std::uint32_t other)
{
    constexpr std::size_t lookedUp = 20;
    const std::size_t before = probe.brokenCount();
    std::vector<NeighbourEntry> own;
    std::set<Key> others;
    for (const NeighbourMode mode : {outsideLinkLocal, withinLinkLocal}) {
        const auto more = neighboursOf(probe, ifIndex, mode);
        own.insert(own.end(), more.begin(), more.end());
        for (const NeighbourEntry &entry : neighboursOf(probe, other, mode)) {
            others.insert(Key::of(entry.address));
        }
    }
    probe.forgetSince(before);
    for (std::size_t i = 0; i < std::min(own.size(), lookedUp) && ifIndex != other; ++i) {
        if (others.count(Key::of(own[i].address)) == 0) {
            checkAbsent(probe, other, own[i].address);
        }
    }
}

// Interfaces that can have neighbours are all in their selection.
void checkGroup(Probe &probe, const std::vector<std::uint32_t> &selected)
{
    const std::size_t before = probe.brokenCount();
    const std::vector<std::uint32_t> interfaces = interfacesOf(probe, Selection::standard);
    std::string found;
    for (const std::uint32_t ifIndex : interfaces) {
        for (const NeighbourMode mode : {outsideLinkLocal, withinLinkLocal}) {
            if (found.empty() && std::find(selected.begin(), selected.end(), ifIndex) == selected.end() &&
                !neighboursOf(probe, ifIndex, mode).empty()) {
                found = "it leaves out interface " + std::to_string(ifIndex) + ", which has neighbours";
            }
        }
    }
    probe.forgetSince(before); // of lists that no walk comes to
    if (!found.empty()) {
        probe.broken(Promise::neighbourGroup, "IF_SelectTypeSetGroup", found);
    }
}

} // namespace

std::vector<NeighbourEntry> neighboursOf(Probe &probe, std::uint32_t ifIndex, NeighbourMode mode)
{
    std::vector<NeighbourEntry> entries;
    for (const ListedRow &row : rowsOf(listingOf(probe, ifIndex, mode), probe)) {
        entries.push_back(row.as<NeighbourEntry>());
    }
    return entries;
}

void checkNeighbours(Probe &probe, host::Resolver &)
{
    constexpr std::uint8_t nobody[16] = {0x20, 0x01, 0x0D, 0xB8, 0xFF, 0xFF, 0xFF, 0xFF,
                                         0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE};
    std::size_t count = 0;
    const std::vector<GatewayRecord> routers = routersQuietly(probe);
    const std::vector<std::uint32_t> interfaces = interfacesOf(probe, Selection::withNeighbours);
    for (std::size_t place = 0; place < interfaces.size(); ++place) {
        const std::uint32_t ifIndex = interfaces[place];
        for (const NeighbourMode mode : {outsideLinkLocal, withinLinkLocal}) {
            Listing listing = listingOf(probe, ifIndex, mode);
            listing.elsewhere = [&] {
                findNext(probe, interfaces[(place + 1) % interfaces.size()], mode, listing.start.address);
            };
            const auto rows = checkedRowsOf(listing, probe);
            count += rows.size();
            checkHidden(listing, rows, maybeNeighbours(rows, routers, ifIndex, mode), probe);
            constexpr std::size_t lookedUp = 1000;
            for (std::size_t i = 0; i < rows.size(); i += rows.size() / lookedUp + 1) {
                checkLastArgument(probe, ifIndex, rows[i]);
            }
            for (const ListedRow &row : rows) {
                probe.row("neighbour", listing.items(row));
            }
        }
        checkAbsent(probe, ifIndex, nobody);
        checkElsewhere(probe, ifIndex, interfaces[(place + 1) % interfaces.size()]);
    }
    checkGroup(probe, interfaces);
    probe.fact("neighbours: " + std::to_string(count));
}

} // namespace ipmib::portcheck
