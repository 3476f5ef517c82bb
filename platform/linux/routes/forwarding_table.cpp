// SPDX-License-Identifier: BSD-3-Clause
// The forwarding table of one version of IP: how routes come, change and go.
#include "routes/forwarding_table.h"

#include "core/log.h"
#include "core/uptime.h"

#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <algorithm>

namespace ipmib::platform
{

ForwardingTable::ForwardingTable(std::uint8_t family, const NexthopTable &nexthops, const RouteTables &tables,
                                 RouteLimit &limit)
    : family_(family), nexthops_(nexthops), tables_(tables), limit_(limit), records_(RouteRecords::of(family))
{
}

ForwardingTable::Named ForwardingTable::named(const Route &route) const
{
    Named result;
    RouteClass &routeClass = result.routeClass;
    routeClass.table = route.table;
    routeClass.metric = route.metric;
    routeClass.rest = route.rest;
    routeClass.source = route.source;
    routeClass.sourceLength = route.sourceLength;
    routeClass.tos = route.tos;
    routeClass.type = route.type;
    routeClass.protocol = route.protocol;
    if (route.nexthopId != 0) {
        result.hops = HopSet::ofObject(route.nexthopId);
    } else {
        std::vector<Hop> hops;
        for (const RouteNexthop &nexthop : route.nexthops) {
            hops.push_back({nexthop.gateway, nexthop.ifIndex, nexthop.gatewayFamily});
        }
        result.hops = HopSet::of(std::move(hops));
    }
    result.hops.ownAddress = route.ownAddress;
    result.hops.withinHost = family_ == AF_INET && (route.type == RTN_LOCAL || route.scope >= RT_SCOPE_HOST);
    return result;
}

// Of IPv6 all routes with gateways are one multipath route, whose announcements tell of all its hops. Of IPv4 each
// route stands for itself.
bool ForwardingTable::together(const RouteClass &routeClass, const HopSet &hops) const
{
    return family_ == AF_INET6 && hops.object == 0 && hops.first.family != 0 && routeClass.protocol != RTPROT_RA &&
           routeClass.protocol != RTPROT_REDIRECT;
}

std::vector<RouteRecord> ForwardingTable::rivals(const Route &route, const RouteClass &routeClass, bool together) const
{
    std::vector<RouteRecord> found;
    RouteRecord record{route.destination, route.length, 0, 0, 0};
    for (bool more = records_->atOrAfter(record, record);
         more && record.destination == route.destination && record.length == route.length;
         more = records_->after(record, record)) {
        const RouteClass &other = classes_[record.routeClass];
        if (!hops_.isRetired(record.hops) && other.sameIdentity(routeClass) &&
            this->together(other, hops_[record.hops]) == together) {
            found.push_back(record);
        }
    }
    return found;
}

void ForwardingTable::fillRoute(const Route &route, Generation generation)
{
    if (generation != filling_) {
        filling_ = generation;
        discarded_ = false;
    }
    if (!shows(route)) {
        return;
    }
    noteDeadLinks(route);
    const Named now = named(route);
    if (together(now.routeClass, now.hops)) {
        eraseOthers(rivals(route, now.routeClass, true), now);
    }
    put(route, now);
}

bool ForwardingTable::sweepRoutes(Generation generation)
{
    filling_ = generation;
    if (std::exchange(sweeping_, generation) != generation) {
        sweepFrom_.reset();
    }
    const bool ended = !eraseSome(sweepFrom_, [this, generation](const RouteRecord &record, Generation last) {
        return last != generation || hops_.isRetired(record.hops);
    });
    if (ended) {
        sweeping_ = 0;
        settled_ = generation;
        ++version_;
    }
    return ended;
}

bool ForwardingTable::tidy()
{
    if (litterRecords_ != 0) {
        eraseSome(tidyFrom_, [this](const RouteRecord &record, Generation) { return hops_.isRetired(record.hops); });
    }
    return litterRecords_ != 0;
}

void ForwardingTable::applyNews(const RouteNews &news)
{
    const Route &route = news.route;
    if (!shows(route)) {
        return;
    }
    const Named now = named(route);
    if (!news.comes) {
        take(route, now);
        return;
    }
    noteDeadLinks(route);
    if (news.replaces) {
        replaceBy(route, now);
    } else if (together(now.routeClass, now.hops)) {
        eraseOthers(rivals(route, now.routeClass, true), now);
    }
    put(route, now);
}

// Of IPv6 routes the kernel replaces one of the same kind, a multipath route as a whole, and one of the other kind only
// when there is none. Of several it replaces the first, and which that is it does not say.
void ForwardingTable::replaceBy(const Route &route, const Named &now)
{
    const bool whole = together(now.routeClass, now.hops);
    std::vector<RouteRecord> replaced = rivals(route, now.routeClass, whole);
    if (replaced.empty() && family_ == AF_INET6) {
        replaced = rivals(route, now.routeClass, !whole);
    }
    eraseOthers(replaced, now);
    if (replaced.size() > 1) {
        wantReading();
    }
}

void ForwardingTable::eraseOthers(const std::vector<RouteRecord> &records, const Named &than)
{
    for (const RouteRecord &record : records) {
        if (!(classes_[record.routeClass] == than.routeClass && hops_[record.hops] == than.hops)) {
            erase(record);
        }
    }
}

void ForwardingTable::put(const Route &route, const Named &named)
{
    const RouteRecord record{route.destination, route.length, classes_.take(named.routeClass), hops_.take(named.hops),
                             secondsSinceBoot()};
    if (named.hops.object != 0) {
        objectRows_.try_emplace(record.hops, rowsBehind(named.hops.object));
    }
    const std::uint64_t rows = rowsOf(record.hops);
    const bool fits = record.routeClass < RouteRecords::mostClasses && limit_.rows + rows <= limit_.most;
    if (!fits && !has(record)) {
        release(record);
        discard(rows);
        return;
    }
    ++version_;
    if (records_->put(record, filling_)) {
        rows_ += rows;
        limit_.rows += rows;
    } else {
        release(record);
    }
}

bool ForwardingTable::has(const RouteRecord &record) const
{
    RouteRecord found;
    return records_->atOrAfter(record, found) && found.destination == record.destination &&
           found.length == record.length && found.routeClass == record.routeClass && found.hops == record.hops;
}

void ForwardingTable::take(const Route &route, const Named &gone)
{
    if (together(gone.routeClass, gone.hops)) {
        for (const RouteRecord &record : rivals(route, gone.routeClass, true)) {
            takeHops(route, record, gone.hops);
        }
        return;
    }
    const RouteRecord record{route.destination, route.length, classes_.find(gone.routeClass), hops_.find(gone.hops), 0};
    if (record.routeClass != RouteClasses::none && record.hops != HopSets::none && has(record)) {
        erase(record);
        return;
    }
    // One that has gone before, with its link; or one of which the kernel now says something else than when it came.
    for (const RouteRecord &each : rivals(route, gone.routeClass, false)) {
        if (hops_[each.hops].leadsSameWay(gone.hops) && classes_[each.routeClass].type == gone.routeClass.type) {
            erase(each);
            return;
        }
    }
}

void ForwardingTable::takeHops(const Route &route, const RouteRecord &record, const HopSet &gone)
{
    std::vector<Hop> left;
    hops_[record.hops].each([&](const Hop &hop) {
        if (gone.each([&](const Hop &other) { return other != hop; })) {
            left.push_back(hop);
        }
        return true;
    });
    if (left.size() == hops_[record.hops].size()) {
        return;
    }
    const Named rest{classes_[record.routeClass], HopSet::of(left)};
    erase(record);
    if (!left.empty()) {
        put(route, rest);
    }
}

bool ForwardingTable::erase(const RouteRecord &record)
{
    const bool erased = records_->erase(record);
    if (erased) {
        forget(record);
    }
    return erased;
}

// However many routes lead there.
void ForwardingTable::retire(const std::vector<std::uint32_t> &sets)
{
    for (const std::uint32_t number : sets) {
        const std::uint64_t rows = hops_.uses(number) * rowsOf(number);
        rows_ -= rows;
        limit_.rows -= rows;
        litterRecords_ += hops_.uses(number);
        objectRows_.erase(number);
        hops_.retire(number);
    }
    if (!sets.empty()) {
        ++version_;
        noteRoom();
        if (litter_) {
            litter_();
        }
    }
}

bool ForwardingTable::eraseSome(RouteRecords::Place &from, const RouteRecords::Leaves &leaves)
{
    return records_->eraseSome(from, [&](const RouteRecord &record, Generation last) {
        const bool leaving = leaves(record, last);
        if (leaving) {
            forget(record);
        }
        return leaving;
    });
}

// A record has gone.
void ForwardingTable::forget(const RouteRecord &record)
{
    if (hops_.isRetired(record.hops)) {
        --litterRecords_;
        release(record);
        return;
    }
    const std::uint64_t rows = rowsOf(record.hops);
    rows_ -= rows;
    limit_.rows -= rows;
    ++version_;
    release(record);
    noteRoom();
}

void ForwardingTable::noteRoom()
{
    const std::uint64_t enough = limit_.most / 100 + 1;
    if (discarded_ && limit_.rows + enough <= limit_.most) {
        discarded_ = false;
        wantReading();
    }
}

void ForwardingTable::release(const RouteRecord &record)
{
    classes_.leave(record.routeClass);
    if (hops_.uses(record.hops) == 1) {
        objectRows_.erase(record.hops);
    }
    hops_.leave(record.hops);
}

void ForwardingTable::discard(std::uint64_t rows)
{
    discarded_ = true;
    // What a later reading brings has been counted.
    limit_.discards += settled_ == 0 || filling_ == settled_ ? rows : 0;
    if (!std::exchange(limit_.said, true)) {
        logWarning("routes: there are more than the %llu rows that the configuration allows; the rest is left out",
                   static_cast<unsigned long long>(limit_.most));
    }
}

void ForwardingTable::wantReading()
{
    if (uncertain_) {
        uncertain_();
    }
}

std::uint64_t ForwardingTable::rowsBehind(std::uint32_t object) const
{
    std::uint64_t rows = 0;
    nexthops_.eachHop(object, [&](const NexthopObject &) { ++rows; });
    return rows;
}

std::uint64_t ForwardingTable::rowsOf(std::uint32_t hops) const
{
    const HopSet &set = hops_[hops];
    return set.object == 0 ? set.size() : objectRows_.at(hops);
}

std::uint64_t ForwardingTable::count()
{
    if (std::exchange(objectsChanged_, false)) {
        for (auto &[number, rows] : objectRows_) {
            const std::uint64_t now = rowsBehind(hops_[number].object);
            const std::uint64_t users = hops_.uses(number);
            rows_ = rows_ - users * rows + users * now;
            limit_.rows = limit_.rows - users * rows + users * now;
            rows = now;
        }
    }
    return rows_;
}

std::size_t ForwardingTable::memory() const
{
    return records_->memory() + classes_.memory() + hops_.memory();
}

} // namespace ipmib::platform
