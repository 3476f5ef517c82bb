// SPDX-License-Identifier: BSD-3-Clause
// Default routers of both classes.
#include "chapters.h"
#include "judge.h"
#include "listing.h"
#include "rows.h"

#include <algorithm>

namespace ipmib::portcheck
{

namespace
{

std::string routerText(const Key &key)
{
    return addressText(key.address) + " on interface " + std::to_string(key.number);
}

Key keyOf(const GatewayRecord &record)
{
    return Key::of(record.address, ipmib_be32_get(record.if_index));
}

GatewayKey gatewayKey(const Key &key)
{
    GatewayKey result{};
    result.if_index = ipmib_be32(key.number);
    std::memcpy(result.address, key.address, sizeof result.address);
    return result;
}

// What a default router says by itself.
void look(Probe &probe, RouterClass routerClass, const GatewayRecord &record, std::uint32_t now)
{
    const std::string call = "IP6Mib_GetNextGatewayInVrf";
    const std::string which = routerText(keyOf(record));
    if (isLinkLocal(record.address) != (routerClass == linkLocalRouters)) {
        probe.broken(Promise::routerClass, call, which + " in class " + std::to_string(routerClass));
    }
    Judge judge(probe, call, which);
    judge.field(
        Promise::routerInterface, "if_index", ipmib_be32_get(record.if_index),
        [&probe](std::uint32_t value) { return probe.isInterface(value); }, "the ifIndex of an existing interface");
    judge.field(
        Promise::routerLead, "lead", ipmib_be32_get(record.lead), [](std::uint32_t value) { return value >> 16 == 0; },
        "below 65536");
    judge.field(
        Promise::routerCodes, "flags", ipmib_be32_get(record.flags),
        [](std::uint32_t value) {
            constexpr std::uint32_t reserved = 0x10000000; // as a preference
            const bool looksSwapped = value >> 24 == 0 && (value == 0x08 || value == 0x10 || value == 0x18);
            return (value & 0x18000000) != reserved && !looksSwapped;
        },
        "with a preference of 0 (medium), 0x08 (high) or 0x18 (low) in its first byte");
    judge.field(
        Promise::routerLifetime, "lifetime_s", ipmib_be32_get(record.lifetime_s),
        [](std::uint32_t value) { return value <= UINT16_MAX; }, "0 to 65535");
    judge.linkLocal(record.address, ipmib_be32_get(record.if_index));
    judge.time(Promise::routerTime, "learned_at_s", ipmib_be32_get(record.learned_at_s), now);
}

FoundRow rowOf(bool succeeded, const GatewayRecord &record)
{
    return succeeded ? FoundRow(ListedRow::of(keyOf(record), record)) : FoundRow();
}

FoundRow findExactly(Probe &probe, const char *service, decltype(Services::IP6Mib_GetGatewayByKey) lookup,
                     const Key &key)
{
    const GatewayKey asked = gatewayKey(key);
    GatewayRecord record{};
    const bool found = probe.fill(std::string(service) + " of " + routerText(key), record,
                                  [&](GatewayRecord *filled) { return lookup(&asked, filled); });
    return rowOf(found, record);
}

Listing listingOf(Probe &probe, RouterClass routerClass)
{
    const Services &services = probe.services();
    Listing listing;
    listing.what = "default routers of class " + std::to_string(routerClass);
    listing.firstCall = "IP6Mib_GetFirstGatewayInVrf";
    listing.nextCall = "IP6Mib_GetNextGatewayInVrf";
    listing.exactCall = "IP6Mib_GetGatewayByKey";
    listing.ascend = Promise::routersAscend;
    listing.move = Promise::routersMove;
    listing.begin = Promise::routersBegin;
    listing.follow = Promise::routersFollow;
    listing.exactly = Promise::routerExact;
    listing.keys = Promise::routerInterface;
    listing.first = [&probe, &services, routerClass] {
        GatewayRecord record{};
        const bool found =
            probe.fill(callText("IP6Mib_GetFirstGatewayInVrf", routerClass), record, [&](GatewayRecord *filled) {
                return services.IP6Mib_GetFirstGatewayInVrf(defaultVrf, routerClass, filled);
            });
        return rowOf(found, record);
    };
    listing.next = [&probe, &services, routerClass](const Key &key) {
        GatewayRecord record{};
        const GatewayKey behind = gatewayKey(key);
        const bool found =
            probe.fill("IP6Mib_GetNextGatewayInVrf behind " + routerText(key), record, [&](GatewayRecord *filled) {
                return services.IP6Mib_GetNextGatewayInVrf(defaultVrf, routerClass, &behind, filled);
            });
        return rowOf(found, record);
    };
    listing.exact = [&probe](const Key &key) {
        return findExactly(probe, "IP6Mib_GetGatewayByKey", probe.services().IP6Mib_GetGatewayByKey, key);
    };
    listing.insteadOf = [&probe](const Key &key) {
        for (const std::uint32_t ifIndex : interfacesOf(probe, Selection::withNeighbours)) {
            if (findExactly(probe, "IP6Mib_GetGatewayByKey", probe.services().IP6Mib_GetGatewayByKey,
                            Key::of(key.address, ifIndex))) {
                return ", and succeeds for an if_index of " + std::to_string(ifIndex);
            }
        }
        return std::string();
    };
    listing.text = routerText;
    listing.items = [](const ListedRow &row) { return itemsOf(row.as<GatewayRecord>()); };
    listing.look = [&probe, routerClass, now = probe.secondsSinceBoot()](const ListedRow &row) {
        look(probe, routerClass, row.as<GatewayRecord>(), now);
    };
    return listing;
}

// The second service of the same answer.
void checkSecondExact(Probe &probe, const ListedRow &row)
{
    const char *service = "IP6ADDR_DRVK_GetGatewayByKey";
    const Services &services = probe.services();
    for (int tries = 0; tries < 3; ++tries) { // the router may be changing
        const FoundRow first = findExactly(probe, "IP6Mib_GetGatewayByKey", services.IP6Mib_GetGatewayByKey, row.key);
        const FoundRow found = findExactly(probe, service, services.IP6ADDR_DRVK_GetGatewayByKey, row.key);
        if (!found || !(found->key == row.key)) {
            probe.broken(Promise::routerExact, service,
                         routerText(row.key) + (found ? ": it answers another record" : ": it fails"));
            return;
        }
        const std::string difference =
            first ? differenceOf(itemsOf(first->as<GatewayRecord>()), itemsOf(found->as<GatewayRecord>())) : "";
        if (difference.empty()) {
            return;
        }
        if (tries == 2) {
            probe.broken(Promise::routerExact, service,
                         routerText(row.key) + ": in IP6Mib_GetGatewayByKey its " + difference + " here");
        }
    }
}

// Default routers of an interface that another one does not list are not found there.
void checkElsewhere(Probe &probe, const std::vector<ListedRow> &rows)
{
    constexpr std::size_t lookedUp = 20;
    const Services &services = probe.services();
    const std::vector<std::uint32_t> interfaces = interfacesOf(probe, Selection::withNeighbours);
    for (std::size_t i = 0; i < std::min(rows.size(), lookedUp); ++i) {
        for (std::size_t place = 0; place < std::min(interfaces.size(), lookedUp); ++place) {
            const Key key = Key::of(rows[i].key.address, interfaces[place]);
            if (std::any_of(rows.begin(), rows.end(), [&](const ListedRow &row) { return row.key == key; })) {
                continue;
            }
            const auto check = [&](const char *service, decltype(Services::IP6Mib_GetGatewayByKey) lookup) {
                if (const FoundRow found = findExactly(probe, service, lookup, key); found && !(found->key == key)) {
                    probe.broken(Promise::routerAbsent, service,
                                 "it is asked for " + routerText(key) + " and answers " + routerText(found->key));
                }
            };
            check("IP6Mib_GetGatewayByKey", services.IP6Mib_GetGatewayByKey);
            check("IP6ADDR_DRVK_GetGatewayByKey", services.IP6ADDR_DRVK_GetGatewayByKey);
        }
    }
}

// Default routers that there may be: every neighbour, and those that are listed on another interface.
std::vector<Key> maybeRouters(Probe &probe, RouterClass routerClass, const std::vector<ListedRow> &rows)
{
    constexpr std::size_t most = 500; // of an interface
    std::vector<Key> maybe;
    for (const std::uint32_t ifIndex : interfacesOf(probe, Selection::withNeighbours)) {
        for (const ListedRow &row : rows) {
            maybe.push_back(Key::of(row.key.address, ifIndex));
        }
        const auto neighbours =
            neighboursOf(probe, ifIndex, routerClass == linkLocalRouters ? withinLinkLocal : outsideLinkLocal);
        for (std::size_t i = 0; i < std::min(neighbours.size(), most); ++i) {
            maybe.push_back(Key::of(neighbours[i].address, ifIndex));
        }
    }
    for (std::size_t i = 0; i < rows.size(); i += rows.size() / 8 + 1) {
        addKeysAround(rows[i].key, maybe);
    }
    return maybe;
}

// How many routers the class has.
std::size_t checkClass(Probe &probe, RouterClass routerClass)
{
    const Listing listing = listingOf(probe, routerClass);
    const std::vector<ListedRow> rows = checkedRowsOf(listing, probe);
    for (const ListedRow &row : rows) {
        checkSecondExact(probe, row);
        probe.row("router", listing.items(row));
    }
    checkElsewhere(probe, rows);
    const std::size_t before = probe.brokenCount();
    const std::vector<Key> maybe = maybeRouters(probe, routerClass, rows);
    probe.forgetSince(before); // what is wrong with neighbours stands in their chapter
    checkHidden(listing, rows, maybe, probe);
    return rows.size();
}

// A router that was learned at boot, to be one for 0 seconds: such a record has no more than its key. One of them may
// be made up; all are not.
void checkThatTheyAreFilled(Probe &probe)
{
    const std::vector<GatewayRecord> routers = routersQuietly(probe);
    const auto isEmpty = [](const GatewayRecord &record) {
        return ipmib_be32_get(record.lifetime_s) == 0 && ipmib_be32_get(record.learned_at_s) == 0 &&
               ipmib_be32_get(record.flags) == 0;
    };
    if (!routers.empty() && std::all_of(routers.begin(), routers.end(), isEmpty)) {
        probe.broken(Promise::routerLifetime, "IP6Mib_GetNextGatewayInVrf",
                     routerText(keyOf(routers.front())) +
                         ": lifetime_s, learned_at_s and flags are 0, as those of all default routers: they are not "
                         "filled");
    }
}

} // namespace

std::vector<GatewayRecord> routersOf(Probe &probe, RouterClass routerClass)
{
    std::vector<GatewayRecord> routers;
    for (const ListedRow &row : rowsOf(listingOf(probe, routerClass), probe)) {
        routers.push_back(row.as<GatewayRecord>());
    }
    return routers;
}

std::vector<GatewayRecord> routersQuietly(Probe &probe)
{
    const std::size_t before = probe.brokenCount();
    std::vector<GatewayRecord> routers = routersOf(probe, globalRouters);
    const std::vector<GatewayRecord> others = routersOf(probe, linkLocalRouters);
    routers.insert(routers.end(), others.begin(), others.end());
    probe.forgetSince(before);
    return routers;
}

void checkRouters(Probe &probe, host::Resolver &)
{
    probe.know(interfacesOf(probe, Selection::withNeighbours));
    const std::size_t count = checkClass(probe, globalRouters) + checkClass(probe, linkLocalRouters);
    checkThatTheyAreFilled(probe);
    probe.fact("default routers: " + std::to_string(count));
}

} // namespace ipmib::portcheck
