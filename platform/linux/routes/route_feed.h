// SPDX-License-Identifier: BSD-3-Clause
// The kernel's routes of one version of IP, read and followed once for all who want to know of them: default routers,
// prefixes on links, the forwarding table. With what takes routes along without a word: links, nexthop objects, IPv4
// addresses. All of it comes over one socket, so that it is in the order in which it happened.
#pragma once

#include "addresses/ipv4_address_table.h"
#include "core/kernel_table.h"
#include "routes/nexthop_table.h"
#include "routes/route_message.h"

#include <functional>
#include <vector>

namespace ipmib::platform
{

struct RouteNews {
    const Route &route;
    bool comes;    // or goes
    bool replaces; // with the same identity, destination and length; which of several the kernel does not say
};

class RouteConsumer
{
  public:
    enum class LinkLoss {
        down,
        gone,
        withoutIpv4 // it has lost its last IPv4 address
    };

    virtual ~RouteConsumer() = default;

    // As `applyDump`, `sweep` and `applyChange` of KernelTable.
    virtual void fillRoute(const Route &route, Generation generation) = 0;
    virtual bool sweepRoutes(Generation generation) = 0;
    virtual void applyNews(const RouteNews &news) = 0;

    // The kernel takes routes along without a word when none of their hops is left, and passes over those hops of the
    // others; when a link has gone for good it takes all routes that have a hop there. Links that are down already may
    // be told of again.
    virtual void linkDown(std::uint32_t ifIndex, LinkLoss loss) = 0;
    virtual void linkUp(std::uint32_t ifIndex) = 0;
    // The address is no more one of ours, and routes with this source are gone.
    virtual void addressGone(std::uint32_t) {}
    // Objects have gone, with all routes that name them.
    virtual void nexthopsGone(const std::vector<std::uint32_t> &ids) = 0;
    // Objects have come or changed.
    virtual void nexthopsChanged() = 0;
};

class RouteFeed : public KernelTable
{
  public:
    // Some 15,000 routes, which are read before anybody is answered; the others come between packets.
    static constexpr unsigned piecesAtStart = 64;

    // Of AF_INET or AF_INET6.
    explicit RouteFeed(std::uint8_t family) : family_(family) {}

    // Another reading has to follow for it to know the routes that are there.
    void add(RouteConsumer &consumer) { consumers_.push_back(&consumer); }
    const NexthopTable &nexthops() const { return nexthops_; }
    // Consumers want to know of all tables of the kernel, not only of the main one and those that rules name.
    void readAllTables() { readsAllTables_ = true; }

    const char *name() const override;
    std::vector<unsigned> groups() const override;
    std::size_t dumps() const override;
    RtnetlinkRequest dump(std::size_t which) override;
    void applyDump(const nlmsghdr &message, Generation generation) override;
    bool sweep(Generation generation) override;
    void applyChange(const nlmsghdr &message) override;
    // The kernel goes on with a dump of IPv6 routes at a place that it has counted, which is another one when routes in
    // front of it have gone.
    bool disturbs(const nlmsghdr &message) const override
    {
        return family_ == AF_INET6 && message.nlmsg_type == RTM_DELROUTE;
    }
    bool needsQuiet() const override { return family_ == AF_INET6; }

  protected:
    // Whether the routes that the kernel made because a router advertised the prefix are dumped once more: nothing else
    // tells these from the routes that it makes for configured addresses.
    virtual bool asksForAdvertised() const { return false; }
    virtual void fillAdvertised(const Route &) {}
    // Whether the last reading has done so.
    bool readsAdvertised() const { return dumping_ == Dump::advertised; }
    virtual void applyAdvertisedPrefix(const nlmsghdr &) {}
    // The first address with its prefix on its interface has come.
    virtual void applyNewPrefix(const Ipv4Address &) {}
    bool isPrefixOfAddress(const Ipv4AddressTable::PrefixKey &key) const
    {
        Ipv4AddressTable::PrefixKey found{};
        return addresses_.prefixAtOrAfter(key, found) && found == key;
    }

  private:
    enum class Dump { loopback, addresses, nexthops, rules, mainRoutes, defaultRoutes, routes, advertised };
    static RtnetlinkRequest routesOf(std::uint8_t family, std::uint8_t table, std::uint32_t flags);
    std::vector<Dump> plan() const;
    void fillRoute(const nlmsghdr &message, Generation generation);
    void fillLoopbackPrefix(const nlmsghdr &message, Generation generation);
    void applyLink(const nlmsghdr &message);
    void applyIpv4Address(const nlmsghdr &message);
    void linkDown(std::uint32_t ifIndex, RouteConsumer::LinkLoss loss);
    void nexthopsGone(const std::vector<std::uint32_t> &ids);

    const std::uint8_t family_;
    std::vector<RouteConsumer *> consumers_;
    NexthopTable nexthops_;
    Ipv4AddressTable addresses_; // of IPv4
    Dump dumping_ = Dump::routes;
    bool readsAllTables_ = false;
    bool hasRules_ = false; // others than every namespace begins with
    bool loopbackUp_ = false;
    Generation sweeping_ = 0; // the reading behind which rows are swept out; 0 for none
    std::size_t swept_ = 0;   // consumers
    Route route_;             // the last message's, so that its memory is used again
};

} // namespace ipmib::platform
