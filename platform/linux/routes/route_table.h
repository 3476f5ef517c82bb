// SPDX-License-Identifier: BSD-3-Clause
// What the routing tables tell of prefixes and default routers: the on-link routes and the default routes. All other
// routes, of which there may be a million, are looked at once and forgotten.
#pragma once

#include "core/kernel_table.h"
#include "ordered_table.h"
#include "routes/route_feed.h"
#include "routes/route_message.h"

#include <functional>
#include <tuple>

namespace ipmib::platform
{

struct OnLinkRoute {
    PackedAddress prefix;
    std::uint32_t ifIndex;
    std::uint32_t table;
    std::uint32_t metric;
    Deadline until;
    std::uint8_t length;
    std::uint8_t protocol; // RTPROT_*
    bool advertised;       // made by the kernel because a router advertised the prefix
    bool readAdvertised;   // the last reading says so

    PrefixKey key() const { return {ifIndex, prefix, length}; }
    bool operator==(const OnLinkRoute &) const = default;
};

struct DefaultRoute {
    PackedAddress gateway;
    PackedAddress source;
    std::uint32_t ifIndex;
    std::uint32_t metric;
    std::uint32_t nexthopId; // not 0: a nexthop object names gateway and interface
    Deadline until;
    std::uint8_t sourceLength;
    std::uint8_t preference; // as in an advertisement
    bool learned;            // from a router advertisement
    bool dead;

    // Routes that can replace each other stand together.
    auto key() const { return std::tie(metric, sourceLength, source, nexthopId, gateway, ifIndex); }
    struct ByKey {
        bool operator()(const DefaultRoute &a, const DefaultRoute &b) const { return a.key() < b.key(); }
    };
};
using DefaultRoutes = OrderedTable<DefaultRoute, DefaultRoute::ByKey>;

class RouteTable : public RouteFeed, private RouteConsumer
{
  public:
    RouteTable() : RouteFeed(AF_INET6) { add(*this); }

    struct Handlers {
        std::function<void(const PrefixKey &)> onLinkChanged;
        std::function<void(const AdvertisedPrefix &)> advertised;
        std::function<void()> defaultsChanged;
        // An anycast address was joined on an interface, or left.
        std::function<void(const PackedAddress &, std::uint32_t ifIndex, bool joined)> anycastChanged;
        // The announcement left open what became of some rows: the table has to be read again.
        std::function<void()> uncertain;
        // Whether it takes the routes to tell if a router advertised the prefix, since no address does.
        std::function<bool(const PrefixKey &)> mayBeAdvertised;
        std::function<void()> rebuilt;
        std::function<void(std::uint32_t ifIndex)> linkDown;
    };
    void connect(Handlers handlers) { handlers_ = std::move(handlers); }

    const DefaultRoutes &defaults() const { return defaults_; }
    // The kernel is silent about an advertisement that does no more than prolong a default route, or change its
    // preference. Reads both from the kernel now.
    void readLearnedDefaults(Rtnetlink &socket);
    // One message of that reading.
    void updateLearnedDefaults(const nlmsghdr &message, std::uint32_t now);

    template <class Visit>
    void eachOnLink(Visit visit) const
    {
        onLink_.each(visit);
    }
    // Calls visit(route) for each one to this prefix on the prefix's interface.
    template <class Visit>
    void eachOnLink(const PrefixKey &key, Visit visit) const
    {
        onLink_.eachFrom(At{key.prefix, key.length, key.ifIndex, 0, 0}, [&](const OnLinkRoute &row) {
            const bool inside = row.key() == key;
            if (inside) {
                visit(row);
            }
            return inside;
        });
    }

  private:
    // Routes to one prefix stand together, so that one that replaces others finds them.
    struct At {
        PackedAddress prefix;
        std::uint8_t length;
        std::uint32_t ifIndex;
        std::uint32_t table;
        std::uint32_t metric;

        static At of(const At &key) { return key; }
        static At of(const OnLinkRoute &row) { return {row.prefix, row.length, row.ifIndex, row.table, row.metric}; }
        friend auto operator<=>(const At &, const At &) = default;
    };
    struct ByPrefix {
        template <class Left, class Right>
        bool operator()(const Left &left, const Right &right) const
        {
            return At::of(left) < At::of(right);
        }
    };
    using OnLinkRoutes = OrderedTable<OnLinkRoute, ByPrefix>;

    void fillRoute(const Route &route, Generation generation) override;
    bool sweepRoutes(Generation generation) override;
    void applyNews(const RouteNews &news) override;
    void linkDown(std::uint32_t ifIndex, LinkLoss loss) override;
    void linkUp(std::uint32_t ifIndex) override;
    void nexthopsGone(const std::vector<std::uint32_t> &ids) override;
    void nexthopsChanged() override { tellDefaults(); }

    bool asksForAdvertised() const override;
    void fillAdvertised(const Route &route) override;
    void applyAdvertisedPrefix(const nlmsghdr &message) override;

    void applyOnLink(const RouteNews &news);
    void applyDefault(const RouteNews &news);
    void eraseReplaced(const Route &route);
    void eraseReplacedDefaults(const Route &route);
    void tellUncertain() const;
    void tellDefaults() const;
    void markAdvertised(const PrefixKey &key);
    void fillOnLink(OnLinkRoute row, Generation generation);
    void settleAdvertised();
    void tellOnLink(const OnLinkRoute &row) const;

    OnLinkRoutes onLink_;
    DefaultRoutes defaults_;
    Handlers handlers_;
};

} // namespace ipmib::platform
