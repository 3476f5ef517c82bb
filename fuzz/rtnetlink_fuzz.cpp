// SPDX-License-Identifier: BSD-3-Clause
// Messages of the kernel, or of what might pretend to be it, for the tables that follow it: what a datagram holds, one
// message behind the other. As on the wire, a message of several parts belongs to a dump, and NLMSG_DONE ends the dump.
#include "bytes.h"

#include "addresses/address_table.h"
#include "addresses/ipv4_address_table.h"
#include "addresses/prefix_table.h"
#include "core/datagram.h"
#include "links/ip6_link.h"
#include "links/link_table.h"
#include "neighbours/neighbour_table.h"
#include "routes/forwarding_table.h"
#include "routes/ipv4_route_table.h"
#include "routes/router_list.h"

#include <memory>

using namespace ipmib::fuzz;
using namespace ipmib::platform;

namespace
{

class Tables
{
  public:
    Tables()
    {
        addresses_.onChange(
            [this](const Ip6Address *before, const Ip6Address *now) { prefixes_.addressChanged(before, now); });
        anycasts_.onChange([this](const PackedAddress &address, std::uint32_t ifIndex) {
            prefixes_.update({ifIndex, address, 128});
        });
        links_.onDown([this](std::uint32_t ifIndex) { prefixes_.forgetAdvertised(ifIndex); });
        RouteTable::Handlers handlers;
        handlers.linkDown = [this](std::uint32_t ifIndex) { prefixes_.forgetAdvertised(ifIndex); };
        handlers.onLinkChanged = [this](const PrefixKey &key) { prefixes_.update(key); };
        handlers.advertised = [this](const AdvertisedPrefix &prefix) { prefixes_.advertise(prefix); };
        handlers.defaultsChanged = [this] { listRouters(); };
        handlers.anycastChanged = [](const PackedAddress &, std::uint32_t, bool) {};
        handlers.uncertain = [] {};
        handlers.rebuilt = [] {};
        routes_.connect(std::move(handlers));
        routes_.add(forwarding_);
        ipv4Routes_.add(ipv4Forwarding_);
    }

    void take(const nlmsghdr &message)
    {
        if (message.nlmsg_type == NLMSG_DONE) {
            endDumps(message.nlmsg_seq % 8 != 7); // some are interrupted
            return;
        }
        if (message.nlmsg_type == RTM_NEWLINK || message.nlmsg_type == RTM_DELLINK) {
            const Ip6LinkMessage counters(message);
            require(counters.elementCount <= counters.elements.size(), "counters beyond the known ones are left out");
        }
        for (KernelTable *table : tablesFor(message.nlmsg_type)) {
            if ((message.nlmsg_flags & NLM_F_MULTI) != 0) {
                routes_.dump(message.nlmsg_seq % routes_.dumps()); // the one that asks for several
                table->applyDump(message, generation_);
            } else {
                table->applyChange(message);
            }
        }
    }

    // What services read: rows ascend.
    void walk()
    {
        prefixes_.settle();
        std::uint32_t ifIndex = 0;
        while (const Link *link = links_.after(ifIndex)) {
            require(link->ifIndex > ifIndex && links_.find(link->ifIndex) == link, "links ascend");
            require(std::memchr(link->name, 0, sizeof link->name) != nullptr, "a name is terminated");
            ifIndex = link->ifIndex;
            addresses_.linkLocal(ifIndex);
            addresses_.usableOnLink(ifIndex);
        }
        const Prefix *prefix = prefixes_.atOrAfter(PrefixKey{0, PackedAddress{}, 0});
        while (prefix != nullptr) {
            require(prefix->length <= 128 && !prefix->prefix.isLinkLocal(), "a prefix is a global one");
            const Prefix *const next = prefixes_.after(prefix->key());
            require(next == nullptr || prefix->key() < next->key(), "prefixes ascend");
            prefix = next;
        }
        PackedAddress last{};
        while (const Ip6Address *address = addresses_.after(last)) {
            require(last < address->address && !address->address.isLinkLocal(), "addresses ascend");
            last = address->address;
        }
        std::uint32_t lastOfIpv4 = 0;
        while (const Ipv4Address *address = ipv4Addresses_.after(lastOfIpv4)) {
            require(lastOfIpv4 < address->address && address->length <= 32, "IPv4 addresses ascend");
            lastOfIpv4 = address->address;
        }
        ipv4Neighbours_.each([](const Neighbour &row) {
            require(row.high == 0 && row.low <= UINT32_MAX, "an IPv4 neighbour has an IPv4 address");
        });
        for (const auto of : {RouterList::Class::global, RouterList::Class::linkLocal}) {
            const Router *router = routers_.first(of);
            while (router != nullptr) {
                require(routers_.find(router->address, router->ifIndex) == router, "a router is found by its key");
                router = routers_.after(of, router->address, router->ifIndex);
            }
        }
        Ipv4Router lastRouter{};
        while (const Ipv4Router *router = ipv4Routes_.routerAfter(lastRouter)) {
            require(lastRouter < *router, "IPv4 routers ascend");
            lastRouter = *router;
        }
        Ipv4AddressTable::PrefixKey lastPrefix{};
        for (bool more = ipv4Addresses_.prefixAtOrAfter({}, lastPrefix); more;) {
            const Ipv4AddressTable::PrefixKey ipv4Prefix = lastPrefix;
            bool any = false;
            ipv4Addresses_.eachIn(ipv4Prefix, [&](const Ipv4Address &) { any = true; });
            require(any, "an IPv4 prefix is that of an address");
            more = ipv4Addresses_.prefixAfter(ipv4Prefix, lastPrefix);
            require(!more || ipv4Prefix < lastPrefix, "IPv4 prefixes ascend");
        }
        for (ForwardingTable *table : {&forwarding_, &ipv4Forwarding_}) {
            std::uint64_t rows = 0;
            IpmibRoute route{};
            for (bool more = table->first(0, route); more; more = table->next(route.key, 0, route)) {
                IpmibRoute found{};
                require(table->find(route.key, 0, found), "a route is found by its key");
                require(++rows <= table->count(), "routes ascend");
            }
            require(rows == table->count(), "the number of routes is that of a walk");
        }
        neighbours_.each([](const Neighbour &row) { require(row.ifIndex != 0, "a neighbour is on an interface"); });
    }

  private:
    void listRouters() { routers_.rebuild(routes_.defaults(), routes_.nexthops()); }

    std::vector<KernelTable *> tablesFor(std::uint16_t type)
    {
        switch (type) {
        case RTM_NEWLINK:
        case RTM_DELLINK:
            return {&links_, &routes_, &ipv4Routes_};
        case RTM_NEWADDR:
        case RTM_DELADDR:
            return {&addresses_, &ipv4Addresses_, &ipv4Routes_};
        case RTM_GETANYCAST:
            return {&anycasts_};
        case RTM_NEWROUTE:
        case RTM_DELROUTE:
        case RTM_NEWPREFIX:
            return {&routes_, &ipv4Routes_};
        case RTM_NEWNEXTHOP:
        case RTM_DELNEXTHOP:
            return {&routes_, &ipv4Routes_};
        case RTM_NEWNEIGH:
        case RTM_DELNEIGH:
            return {&neighbours_, &ipv4Neighbours_};
        default:
            return {};
        }
    }

    void endDumps(bool complete)
    {
        for (KernelTable *table : dumped_) { // not neighbours, whose end asks the kernel, which is not there
            if (complete) {
                while (!table->sweep(generation_)) {
                }
            }
        }
        ++generation_;
    }

    Generation generation_ = 1;
    KernelNeighbours nobody_{AF_INET6};
    KernelNeighbours nobodyOnIpv4_{AF_INET};
    LinkTable links_;
    AddressTable addresses_;
    AnycastTable anycasts_;
    RouteTable routes_;
    NeighbourTable neighbours_{nobody_};
    Ipv4AddressTable ipv4Addresses_;
    Ipv4RouteTable ipv4Routes_;
    NeighbourTable ipv4Neighbours_{nobodyOnIpv4_};
    RouteTables allTables_{true, {}};
    RouteLimit limit_{256, 0, 0, false};
    ForwardingTable forwarding_{AF_INET6, routes_.nexthops(), allTables_, limit_};
    ForwardingTable ipv4Forwarding_{AF_INET, ipv4Routes_.nexthops(), allTables_, limit_};
    PrefixTable prefixes_{anycasts_, routes_};
    RouterList routers_;
    KernelTable *dumped_[6] = {&links_, &addresses_, &anycasts_, &routes_, &ipv4Addresses_, &ipv4Routes_};
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::vector<std::uint8_t> datagram(data, data + size); // aligned, and exactly as long
    Tables tables;
    auto rest = static_cast<int>(size);
    for (const auto *message = reinterpret_cast<const nlmsghdr *>(datagram.data()); holdsMessage(message, rest);
         message = mnl_nlmsg_next(message, &rest)) {
        tables.take(*message);
    }
    tables.walk();
    return 0;
}
