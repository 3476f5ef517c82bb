// SPDX-License-Identifier: BSD-3-Clause
// The IPv6 addresses, prefixes and default routers of this network namespace, as services see them.
#include "addressing.h"

#include "core/dump_queue.h"
#include "core/uptime.h"

#include <linux/rtnetlink.h>

#include <algorithm>
#include <utility>

namespace ipmib::platform
{

std::string Addressing::start(PlatformLoop &loop, int receiveBuffer)
{
    connect();
    for (Mirror *mirror : {&addressMirror_, &anycastMirror_}) {
        if (const std::string error = mirror->start(loop, receiveBuffer); !error.empty()) {
            return error;
        }
    }
    return routeMirror_.start(loop, receiveBuffer, RouteFeed::piecesAtStart);
}

void Addressing::connect()
{
    constexpr std::uint8_t wholeAddress = 128;
    addresses_.onChange(
        [this](const Ip6Address *before, const Ip6Address *now) { prefixes_.addressChanged(before, now); });
    anycasts_.onChange([this](const PackedAddress &address, std::uint32_t ifIndex) {
        prefixes_.update({ifIndex, address, wholeAddress});
    });

    RouteTable::Handlers handlers;
    handlers.onLinkChanged = [this](const PrefixKey &key) { prefixes_.update(key); };
    handlers.advertised = [this](const AdvertisedPrefix &prefix) { prefixes_.advertise(prefix); };
    handlers.defaultsChanged = [this] { routersChanged_ = true; };
    handlers.anycastChanged = [this](const PackedAddress &address, std::uint32_t ifIndex, bool joined) {
        applyAnycast(address, ifIndex, joined);
    };
    handlers.uncertain = [this] { routeMirror_.refreshSoon(); };
    handlers.mayBeAdvertised = [this](const PrefixKey &key) { return prefixes_.mayBeAdvertised(key); };
    handlers.rebuilt = [this] { anycastMirror_.refresh(); }; // whose announcements are among those of the routes
    // What is announced of links is read first, and of routes later: an advertisement may have come before.
    handlers.linkDown = [this](std::uint32_t ifIndex) { linkDown(ifIndex); };
    routes_.connect(std::move(handlers));
}

void Addressing::applyAnycast(const PackedAddress &address, std::uint32_t ifIndex, bool joined)
{
    constexpr std::uint64_t tick = 10; // ms
    if (joined) {
        anycasts_.joined(address, ifIndex, static_cast<std::uint32_t>(monotonicMilliseconds() / tick));
    } else {
        anycasts_.left(address, ifIndex);
    }
    if (anycastMirror_.refreshing()) {
        anycastMirror_.refresh(); // what is being read may be older
    }
}

bool Addressing::programFormed(const Ip6Address &address)
{
    routeMirror_.readForPacket();
    bool learned = false;
    routes_.eachOnLink(address.prefix(),
                       [&](const OnLinkRoute &route) { learned = learned || route.protocol == RTPROT_RA; });
    return learned;
}

bool Addressing::isOfAllRouters(const Anycast &anycast)
{
    constexpr std::uint8_t wholeAddress = 128;
    return prefixes().anycastLength(anycast.address, anycast.ifIndex) < wholeAddress;
}

const RouterList &Addressing::refreshedRouters()
{
    constexpr std::uint64_t shortestRest = 100; // ms
    constexpr std::uint64_t restRatio = 100;    // long tables take longer to read, and are read less often

    routeMirror_.readForPacket();
    listRouters();
    if (std::exchange(routersAsked_, true)) {
        return routers_;
    }
    const std::uint64_t begin = millisecondsSinceBoot();
    if (begin >= nextReadMs_ && routers_.hasLearned() && advertisementCame()) {
        routes_.readLearnedDefaults(requests_);
        ++kernelReads_;
        const std::uint64_t end = millisecondsSinceBoot();
        nextReadMs_ = begin + std::max(shortestRest, (end - begin) * restRatio);
        listRouters();
    }
    return routers_;
}

// The kernel looks through all routes for the learned ones, which takes 40 ms when there are 200,000: only where
// something may have changed. It counts an advertisement before it acts on it, so one more reading follows.
bool Addressing::advertisementCame()
{
    constexpr std::size_t routerAdvertisement = 134;
    const Snmp6Counters *const counters = counters_.read();
    if (counters == nullptr) {
        return true;
    }
    const std::uint64_t counted = counters->icmp6.inType[routerAdvertisement];
    if (std::exchange(advertisements_, counted) != counted) {
        readOnceMore_ = true;
        return true;
    }
    return std::exchange(readOnceMore_, false);
}

void Addressing::listRouters()
{
    if (routersChanged_) {
        routersChanged_ = false;
        routers_.rebuild(routes_.defaults(), routes_.nexthops());
    }
}

} // namespace ipmib::platform
