// SPDX-License-Identifier: BSD-3-Clause
// The forwarding table of one version of IP: the rows of inetCidrRouteTable, one for each next hop of a route.
//
// A route is one small record; where it leads, and what else it has in common with others, is kept once for all of
// them. Rows are made when somebody asks, for one destination at a time, since what sets rows of one destination apart
// and in which order they stand depends on all of them.
#pragma once

#include "routes/hop_sets.h"
#include "routes/route_feed.h"
#include "routes/route_records.h"

#include <ipmib/platform_routes.h>

#include <functional>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace ipmib::platform
{

// Which of the kernel's routing tables are shown.
struct RouteTables {
    bool all = false;
    std::set<std::uint32_t> tables{RT_TABLE_MAIN};

    bool has(std::uint32_t table) const { return all || tables.count(table) != 0; }
};

// Of the rows of both versions of IP.
struct RouteLimit {
    std::uint64_t most = UINT64_MAX;
    std::uint64_t rows = 0;
    std::uint64_t discards = 0;
    bool said = false; // in the log
};

class ForwardingTable : public RouteConsumer
{
  public:
    ForwardingTable(std::uint8_t family, const NexthopTable &nexthops, const RouteTables &tables, RouteLimit &limit);

    // Called when an announcement leaves open what became of some routes, or when there is room again for those that
    // were discarded: the kernel's table has to be read again.
    void onUncertain(std::function<void()> handler) { uncertain_ = std::move(handler); }
    // Called when many routes have gone at once. They are no rows any more; their records are taken out by tidy().
    void onLitter(std::function<void()> handler) { litter_ = std::move(handler); }
    // One piece of that; false when none are left.
    bool tidy();

    std::uint64_t count();
    // Ages are up to the given time, in seconds since boot. False when there is none.
    bool find(const IpmibRouteKey &key, std::uint32_t now, IpmibRoute &row);
    bool first(std::uint32_t now, IpmibRoute &row);
    bool next(const IpmibRouteKey &key, std::uint32_t now, IpmibRoute &row);
    bool match(const std::uint8_t *address, std::uint32_t now, IpmibRoute &row);
    // Octets of all routes.
    std::size_t memory() const;

    void fillRoute(const Route &route, Generation generation) override;
    bool sweepRoutes(Generation generation) override;
    void applyNews(const RouteNews &news) override;
    void linkDown(std::uint32_t ifIndex, LinkLoss loss) override;
    void linkUp(std::uint32_t ifIndex) override { deadLinks_.erase(ifIndex); }
    void addressGone(std::uint32_t address) override;
    void nexthopsGone(const std::vector<std::uint32_t> &ids) override;
    void nexthopsChanged() override;

  private:
    struct Named { // what a route refers to
        RouteClass routeClass;
        HopSet hops;
    };
    bool shows(const Route &route) const { return tables_.has(route.table); }
    Named named(const Route &route) const;
    bool together(const RouteClass &routeClass, const HopSet &hops) const;
    // The records of the same identity, of the one kind or the other.
    std::vector<RouteRecord> rivals(const Route &route, const RouteClass &routeClass, bool together) const;
    void replaceBy(const Route &route, const Named &now);
    void put(const Route &route, const Named &named);
    void take(const Route &route, const Named &gone);
    void takeHops(const Route &route, const RouteRecord &record, const HopSet &gone);
    void eraseOthers(const std::vector<RouteRecord> &records, const Named &than);
    bool erase(const RouteRecord &record);
    void retire(const std::vector<std::uint32_t> &sets);
    bool eraseSome(RouteRecords::Place &from, const RouteRecords::Leaves &leaves);
    void forget(const RouteRecord &record);
    void noteRoom();
    void release(const RouteRecord &record);
    bool has(const RouteRecord &record) const;
    void discard(std::uint64_t rows);
    void wantReading();
    void noteDeadLinks(const Route &route);
    std::uint64_t rowsBehind(std::uint32_t object) const;
    std::uint64_t rowsOf(std::uint32_t hops) const;

    // All rows of one destination and length, in order.
    struct Group {
        std::uint64_t version = 0; // of the table that it was made of
        PackedAddress destination;
        std::uint8_t length = 0;
        std::vector<IpmibRoute> rows; // with the time of change in place of the age
    };
    const std::vector<IpmibRoute> &group(const PackedAddress &destination, std::uint8_t length);
    void addRows(const RouteRecord &record, std::vector<IpmibRoute> &rows) const;
    bool firstFrom(RouteRecord key, bool behind, std::uint32_t now, IpmibRoute &row);
    PackedAddress destinationOf(const std::uint8_t *octets) const;

    const std::uint8_t family_;
    const NexthopTable &nexthops_;
    const RouteTables &tables_;
    RouteLimit &limit_;
    std::unique_ptr<RouteRecords> records_;
    RouteClasses classes_;
    HopSets hops_;
    std::unordered_set<std::uint32_t> deadLinks_; // whose hops the kernel passes over
    std::uint64_t rows_ = 0;
    std::uint64_t litterRecords_ = 0; // those whose hops are retired
    RouteRecords::Place tidyFrom_;
    RouteRecords::Place sweepFrom_;
    Generation sweeping_ = 0;                                     // the reading that sweepFrom_ is of
    std::unordered_map<std::uint32_t, std::uint64_t> objectRows_; // of sets of hops that are objects
    bool objectsChanged_ = false;                                 // since these were counted
    bool discarded_ = false;                                      // since the last reading began
    Generation filling_ = 0;                                      // the reading that is under way, or was last
    Generation settled_ = 0;                                      // the last one that ended
    std::uint64_t version_ = 1;
    Group group_;
    std::function<void()> uncertain_;
    std::function<void()> litter_;
};

} // namespace ipmib::platform
