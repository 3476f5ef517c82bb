// SPDX-License-Identifier: BSD-3-Clause
// What the routing tables tell of IPv4: the default routers, and which prefixes are on the link. All other routes are
// looked at once and forgotten.
#pragma once

#include "addressing/nexthop_table.h"
#include "core/mirror.h"
#include "ipv4/ipv4_route.h"
#include "ordered_table.h"

namespace ipmib::platform
{

struct Ipv4Router {
    std::uint32_t address;
    std::uint32_t ifIndex;
    friend auto operator<=>(const Ipv4Router &, const Ipv4Router &) = default;
};

class Ipv4RouteTable : public KernelTable
{
  public:
    explicit Ipv4RouteTable(const NexthopTable &nexthops) : nexthops_(nexthops) {}

    // Called when an announcement leaves open what becomes of some routes: the table has to be read again, in a moment.
    void onUncertain(std::function<void()> handler) { uncertain_ = std::move(handler); }

    // The gateways of the main table's default routes, ascending by address and interface; null for none. Pointers are
    // good until announcements are read.
    const Ipv4Router *findRouter(const Ipv4Router &key);
    const Ipv4Router *routerAfter(const Ipv4Router &key);
    // Whether a route leads to the prefix without a gateway.
    bool isOnLink(std::uint32_t ifIndex, std::uint32_t prefix, std::uint32_t length) const;

    const char *name() const override { return "IPv4 routes"; }
    std::vector<unsigned> groups() const override { return {RTNLGRP_IPV4_ROUTE, RTNLGRP_IPV4_IFADDR}; }
    RtnetlinkRequest dump(std::size_t which) override;
    void fill(const nlmsghdr &message, Generation generation) override;
    void sweep(Generation generation) override;
    void apply(const nlmsghdr &message) override;

  private:
    struct OnLink {
        std::uint32_t prefix;
        std::uint32_t length;
        std::uint32_t ifIndex;
        std::uint32_t table;
        std::uint32_t metric;
        std::uint32_t tos;
        friend auto operator<=>(const OnLink &, const OnLink &) = default;
    };
    using OnLinks = OrderedTable<OnLink, std::less<>>;
    struct Default {
        Ipv4Route route;
        Generation generation;
    };

    void add(const Ipv4Route &route, Generation generation);
    void eraseReplaced(const Ipv4Route::Identity &identity);
    const std::vector<Ipv4Router> &routers();

    const NexthopTable &nexthops_;
    std::vector<Default> defaults_; // a handful
    OnLinks onLinks_;
    std::vector<Ipv4Router> routers_; // made from the default routes when somebody asks
    bool listed_ = false;
    std::uint64_t listedNexthops_ = 0;
    std::function<void()> uncertain_;
};

} // namespace ipmib::platform
