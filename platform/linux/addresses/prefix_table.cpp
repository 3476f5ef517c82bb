// SPDX-License-Identifier: BSD-3-Clause
// The prefixes of each interface, made from the addresses, the on-link routes and what routers advertise.
#include "addresses/prefix_table.h"

#include <linux/rtnetlink.h>

#include <algorithm>

namespace ipmib::platform
{

namespace
{

constexpr unsigned wholeIpv6Address = 128;
constexpr std::size_t mostChanges = 1024; // that wait for a reader

// What the on-link routes to a prefix say of it.
struct FromRoutes {
    bool any = false;
    bool configured = false;
    bool leased = false;
    bool advertised = false;
    Deadline until;

    void add(const OnLinkRoute &route)
    {
        any = true;
        configured = configured || route.protocol == RTPROT_BOOT || route.protocol == RTPROT_STATIC;
        leased = leased || route.protocol == RTPROT_DHCP;
        advertised = advertised || route.advertised;
        until = std::max(until, route.until);
    }
};

// What is configured stays when the router or the server is gone, and therefore outweighs what is learned.
PrefixOrigin originOf(const PrefixKey &key, const AddressTally::Sum &addresses, const FromRoutes &routes,
                      bool advertised)
{
    if (key.prefix.isLoopback() && key.length == wholeIpv6Address) {
        return PrefixOrigin::wellKnown;
    }
    if (addresses.manual || routes.configured) {
        return PrefixOrigin::manual;
    }
    if (advertised || routes.advertised || addresses.autoconfigured) {
        return PrefixOrigin::advertised;
    }
    if (addresses.leased || routes.leased) {
        return PrefixOrigin::leased;
    }
    // A route of the kernel's own, with no address, is the way to the peer of a configured address.
    return !addresses.any && routes.any ? PrefixOrigin::manual : PrefixOrigin::other;
}

} // namespace

void PrefixTable::addressChanged(const Ip6Address *before, const Ip6Address *now)
{
    if (before != nullptr) {
        addresses_.remove(*before);
        update(before->prefix());
    }
    if (now != nullptr) {
        addresses_.add(*now);
        update(now->prefix());
    }
}

void PrefixTable::update(const PrefixKey &key)
{
    if (!changed_.empty() && changed_.back() == key) {
        return;
    }
    changed_.push_back(key);
    if (changed_.size() == mostChanges) {
        settle();
    }
}

void PrefixTable::settle()
{
    std::sort(changed_.begin(), changed_.end()); // so that the longest prefix that begins with an address comes last
    changed_.erase(std::unique(changed_.begin(), changed_.end()), changed_.end());
    for (const PrefixKey &key : changed_) {
        put(key);
        // Whether an anycast address needs a prefix of its own depends on the others that begin with it.
        if (key.length < wholeIpv6Address && anycasts_.has(key.prefix, key.ifIndex)) {
            put({key.ifIndex, key.prefix, wholeIpv6Address});
        }
    }
    changed_.clear();
}

void PrefixTable::put(const PrefixKey &key)
{
    Prefix row;
    if (derive(key, row)) {
        rows_.put(row);
    } else {
        rows_.erase(key);
    }
}

bool PrefixTable::derive(const PrefixKey &key, Prefix &row) const
{
    if (key.prefix.isLinkLocal()) {
        return false;
    }
    const AddressTally::Sum addresses = addresses_.of(key);
    FromRoutes routes;
    routes_.eachOnLink(key, [&](const OnLinkRoute &route) { routes.add(route); });
    const bool anycastAlone = !addresses.any && !routes.any && key.length == wholeIpv6Address &&
                              anycasts_.has(key.prefix, key.ifIndex) &&
                              anycastLength(key.prefix, key.ifIndex) == wholeIpv6Address;
    if (!addresses.any && !routes.any && !anycastAlone) {
        return false;
    }
    const AdvertisedPrefix *advertised = advertised_.find(key);
    row = Prefix{};
    row.ifIndex = key.ifIndex;
    row.prefix = key.prefix;
    row.length = key.length;
    row.onLink = routes.any;
    row.autonomous = advertised != nullptr ? advertised->autonomous : addresses.autoconfigured;
    row.origin = originOf(key, addresses, routes, advertised != nullptr);
    if (anycastAlone) {
        row.validUntil = row.preferredUntil = Deadline::never();
        return true;
    }
    const bool learned = row.origin == PrefixOrigin::advertised;
    if (learned && advertised != nullptr) {
        row.validUntil = advertised->validUntil;
        row.preferredUntil = advertised->preferredUntil;
        return true;
    }
    // Of a learned prefix the kernel keeps the lifetime with the route, of a configured address with the address.
    row.validUntil = addresses.any && !(learned && routes.any) ? addresses.validUntil : routes.until;
    row.preferredUntil = addresses.any ? addresses.preferredUntil : row.validUntil;
    if (routes.configured) {
        row.validUntil = std::max(row.validUntil, routes.until);
        row.preferredUntil = std::max(row.preferredUntil, routes.until);
    }
    row.preferredUntil = std::min(row.preferredUntil, row.validUntil);
    return true;
}

std::uint8_t PrefixTable::anycastLength(const PackedAddress &address, std::uint32_t ifIndex) const
{
    std::uint8_t length = wholeIpv6Address;
    rows_.eachFrom(PrefixKey{ifIndex, address, 0}, [&](const Prefix &row) {
        const bool fits = row.ifIndex == ifIndex && row.prefix == address && row.length < wholeIpv6Address;
        length = fits ? row.length : length;
        return fits;
    });
    return length;
}

bool PrefixTable::mayBeAdvertised(const PrefixKey &key) const
{
    const AddressTally::Sum addresses = addresses_.of(key);
    return !addresses.manual && !addresses.autoconfigured;
}

void PrefixTable::advertise(const AdvertisedPrefix &prefix)
{
    if (prefix.withdrawn) {
        advertised_.erase(prefix.key);
    } else {
        makeRoomForAdvertised();
        if (advertised_.size() < advertisedLimit || advertised_.find(prefix.key) != nullptr) {
            advertised_.put(prefix);
        }
    }
    update(prefix.key);
}

// What adds to no row is dropped first: an advertised prefix that is neither on the link nor for addresses.
void PrefixTable::makeRoomForAdvertised()
{
    if (advertised_.size() < advertisedLimit) {
        return;
    }
    settle();
    std::vector<PrefixKey> idle;
    advertised_.each([&](const AdvertisedPrefix &prefix) {
        if (rows_.find(prefix.key) == nullptr) {
            idle.push_back(prefix.key);
        }
    });
    for (const PrefixKey &key : idle) {
        advertised_.erase(key);
    }
}

void PrefixTable::forgetAdvertised(std::uint32_t ifIndex)
{
    while (const AdvertisedPrefix *first = advertised_.atOrAfter(PrefixKey{ifIndex, {}, 0})) {
        if (first->key.ifIndex != ifIndex) {
            return;
        }
        const PrefixKey key = first->key;
        advertised_.erase(key);
        update(key);
    }
}

} // namespace ipmib::platform
