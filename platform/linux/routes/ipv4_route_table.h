// SPDX-License-Identifier: BSD-3-Clause
// What the routing tables tell of IPv4: the default routers, and which prefixes of addresses are on the link. All other
// routes are looked at once and forgotten.
#pragma once

#include "ordered_table.h"
#include "routes/route_feed.h"

namespace ipmib::platform
{

struct Ipv4Router {
    std::uint32_t address;
    std::uint32_t ifIndex;
    friend auto operator<=>(const Ipv4Router &, const Ipv4Router &) = default;
};

class Ipv4RouteTable : public RouteFeed, private RouteConsumer
{
  public:
    Ipv4RouteTable() : RouteFeed(AF_INET) { add(*this); }

    // Called when an announcement leaves open what becomes of some routes: the table has to be read again, in a moment.
    void onUncertain(std::function<void()> handler) { uncertain_ = std::move(handler); }

    // The gateways of the main table's default routes, ascending by address and interface; null for none. Pointers are
    // good until announcements are read.
    const Ipv4Router *findRouter(const Ipv4Router &key);
    const Ipv4Router *routerAfter(const Ipv4Router &key);
    // Whether a route leads to the prefix of an address without a gateway.
    bool isOnLink(std::uint32_t ifIndex, std::uint32_t prefix, std::uint32_t length) const;

  private:
    struct OnLink {
        std::uint32_t prefix;
        std::uint32_t length;
        std::uint32_t ifIndex;
        std::uint32_t table;
        std::uint32_t metric;
        std::uint32_t tos;
        std::uint32_t ownAddress; // of packets that take the route; 0 for any
        bool local;               // stays when the interface goes down
        friend auto operator<=>(const OnLink &, const OnLink &) = default;
    };
    using OnLinks = OrderedTable<OnLink, std::less<>>;
    struct Default {
        Route route;
        Generation generation;
    };

    void fillRoute(const Route &route, Generation generation) override;
    bool sweepRoutes(Generation generation) override;
    void applyNews(const RouteNews &news) override;
    void linkDown(std::uint32_t ifIndex, LinkLoss loss) override;
    void linkUp(std::uint32_t ifIndex) override;
    void addressGone(std::uint32_t address) override;
    void nexthopsGone(const std::vector<std::uint32_t> &ids) override;
    void nexthopsChanged() override { listed_ = false; }

    void applyNewPrefix(const Ipv4Address &address) override;

    static OnLink onLinkOf(const Route &route, const RouteNexthop &hop);
    void eraseReplaced(const Route &route);
    const std::vector<Ipv4Router> &routers();

    std::vector<Default> defaults_; // a handful
    OnLinks onLinks_;
    std::vector<Ipv4Router> routers_; // made from the default routes when somebody asks
    bool listed_ = false;
    std::function<void()> uncertain_;
};

} // namespace ipmib::platform
