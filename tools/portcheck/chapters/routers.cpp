// SPDX-License-Identifier: BSD-3-Clause
// Default routers of both classes.
#include "chapters.h"
#include "listing.h"
#include "rows.h"

namespace ipmib::portcheck
{

namespace
{

constexpr std::uint32_t defaultVrf = 0;

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
    const std::uint32_t ifIndex = ipmib_be32_get(record.if_index);
    if (!probe.isValid(ifIndex)) {
        probe.broken(Promise::routerInterface, call,
                     which + (probe.isValid(swapped(ifIndex)) ? ", an existing one in the wrong byte order" : ""));
    }
    if (ipmib_be32_get(record.lead) >> 16 != 0) {
        probe.broken(Promise::routerLead, call, which);
    }
    if (ipmib_be32_get(record.learned_at_s) > now + 1) {
        probe.broken(Promise::routerTime, call,
                     which + " was learned at " + std::to_string(ipmib_be32_get(record.learned_at_s)) +
                         ", and now is " + std::to_string(now));
    }
}

Listing<GatewayRecord> listingOf(Probe &probe, RouterClass routerClass)
{
    const Services &services = probe.services();
    Listing<GatewayRecord> listing;
    listing.what = "default routers of class " + std::to_string(routerClass);
    listing.firstCall = "IP6Mib_GetFirstGatewayInVrf";
    listing.nextCall = "IP6Mib_GetNextGatewayInVrf";
    listing.ascend = Promise::routersAscend;
    listing.move = Promise::routersMove;
    listing.begin = Promise::routersBegin;
    listing.follow = Promise::routersFollow;
    listing.first = [&probe, &services, routerClass](GatewayRecord &row) {
        row = {};
        return probe.fill(callText("IP6Mib_GetFirstGatewayInVrf", routerClass), row, [&](GatewayRecord *filled) {
            return services.IP6Mib_GetFirstGatewayInVrf(defaultVrf, routerClass, filled);
        });
    };
    listing.next = [&probe, &services, routerClass](const Key &key, GatewayRecord &row) {
        row = {};
        const GatewayKey behind = gatewayKey(key);
        return probe.fill("IP6Mib_GetNextGatewayInVrf behind " + routerText(key), row, [&](GatewayRecord *filled) {
            return services.IP6Mib_GetNextGatewayInVrf(defaultVrf, routerClass, &behind, filled);
        });
    };
    listing.keyOf = keyOf;
    listing.text = routerText;
    listing.look = [&probe, routerClass, now = probe.secondsSinceBoot()](const GatewayRecord &row) {
        look(probe, routerClass, row, now);
    };
    return listing;
}

void checkExact(Probe &probe, const GatewayRecord &listed, const char *service,
                decltype(Services::IP6Mib_GetGatewayByKey) lookup)
{
    const GatewayKey key = gatewayKey(keyOf(listed));
    GatewayRecord found{};
    const bool succeeded = probe.fill(std::string(service) + " of " + routerText(keyOf(listed)), found,
                                      [&](GatewayRecord *filled) { return lookup(&key, filled); });
    if (!succeeded || !(keyOf(found) == keyOf(listed))) {
        probe.broken(Promise::routerExact, service,
                     routerText(keyOf(listed)) + (succeeded ? ": it answers another record" : ": it fails"));
    }
}

// How many routers the class has.
std::size_t checkClass(Probe &probe, RouterClass routerClass)
{
    const std::vector<GatewayRecord> routers = checkedRowsOf(listingOf(probe, routerClass), probe);
    for (const GatewayRecord &router : routers) {
        checkExact(probe, router, "IP6Mib_GetGatewayByKey", probe.services().IP6Mib_GetGatewayByKey);
        checkExact(probe, router, "IP6ADDR_DRVK_GetGatewayByKey", probe.services().IP6ADDR_DRVK_GetGatewayByKey);
    }
    return routers.size();
}

} // namespace

std::vector<GatewayRecord> routersOf(Probe &probe, RouterClass routerClass)
{
    return rowsOf(listingOf(probe, routerClass), probe);
}

void checkRouters(Probe &probe, host::Resolver &)
{
    const std::size_t count = checkClass(probe, globalRouters) + checkClass(probe, linkLocalRouters);
    probe.fact("default routers: " + std::to_string(count));
}

} // namespace ipmib::portcheck
