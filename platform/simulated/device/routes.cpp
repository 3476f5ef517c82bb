// SPDX-License-Identifier: BSD-3-Clause
// Sorted once, when all rows are known; from then on a lookup is a binary search.
#include "device/routes.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <tuple>

namespace ipmib::simulated
{
namespace
{

// How keys compare behind their destinations.
std::strong_ordering compareWays(const IpmibRouteKey &a, const IpmibRouteKey &b)
{
    const auto rank = [](const IpmibRouteKey &key) { return std::tie(key.next_hop_type, key.next_hop_size); };
    // std::lexicographical_compare_three_way of GCC 12 looks at the first number alone on big-endian processors.
    const auto [mine, others] = std::mismatch(std::begin(a.policy), std::end(a.policy), std::begin(b.policy));
    if (mine != std::end(a.policy)) {
        return *mine <=> *others;
    }
    if (const auto order = rank(a) <=> rank(b); order != 0) {
        return order;
    }
    const std::size_t size = std::min<std::size_t>(a.next_hop_size, sizeof a.next_hop);
    return std::memcmp(a.next_hop, b.next_hop, size) <=> 0;
}

RouteDestination destinationOf(const IpmibRouteKey &key)
{
    return {key.version, platform::PackedAddress::of(key.destination), key.prefix_length};
}

} // namespace

void Routes::begin(const RouteWay &way)
{
    ways_.push_back(way);
}

void Routes::add(const RouteDestination &to, std::uint32_t name)
{
    const auto way = static_cast<std::uint32_t>(ways_.size() - 1);
    added_.push_back(
        {{to.prefix, way, static_cast<std::uint8_t>(to.version), static_cast<std::uint8_t>(to.length)}, name});
}

// Rows refer to their ways by place.
void Routes::sortWays()
{
    std::vector<std::uint32_t> order(ways_.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [this](std::uint32_t a, std::uint32_t b) {
        return compareWays(ways_[a].route.key, ways_[b].route.key) < 0;
    });
    std::vector<RouteWay> sorted(ways_.size());
    std::vector<std::uint32_t> places(ways_.size());
    for (std::uint32_t i = 0; i < order.size(); ++i) {
        sorted[i] = ways_[order[i]];
        places[order[i]] = i;
    }
    ways_.swap(sorted);
    for (Added &each : added_) {
        each.row.way = places[each.row.way];
    }
}

std::optional<std::uint32_t> Routes::complete()
{
    sortWays();
    const auto before = [](const Added &a, const Added &b) {
        const auto order = a.row.destination() <=> b.row.destination();
        return order != 0 ? order < 0 : a.row.way < b.row.way;
    };
    if (!std::is_sorted(added_.begin(), added_.end(), before)) {
        std::stable_sort(added_.begin(), added_.end(), before);
    }
    const auto twice = std::adjacent_find(added_.begin(), added_.end(), [this](const Added &a, const Added &b) {
        return a.row.destination() == b.row.destination() &&
               compareWays(ways_[a.row.way].route.key, ways_[b.row.way].route.key) == 0;
    });
    if (twice != added_.end()) {
        return std::max(twice->name, std::next(twice)->name);
    }
    rows_.reserve(added_.size());
    for (const Added &each : added_) {
        rows_.push_back(each.row);
        ++counts_[each.row.version == IPMIB_IPV6 ? 1 : 0][ways_[each.row.way].route.if_index];
    }
    added_ = {};
    return std::nullopt;
}

void Routes::cut(std::uint64_t rows)
{
    for (; rows_.size() > rows; ++thrownAway_) {
        const Row &last = rows_.back();
        --counts_[last.version == IPMIB_IPV6 ? 1 : 0][ways_[last.way].route.if_index];
        rows_.pop_back();
    }
}

template <class Before>
Routes::Place Routes::firstNot(Before before) const
{
    const auto isThere = [&](Place place) {
        return place <= rows_.size() && (place == 0 || before(rows_[place - 1])) &&
               (place == rows_.size() || !before(rows_[place]));
    };
    for (const Place place : {last_ + 1, last_}) {
        if (isThere(place)) {
            return last_ = place;
        }
    }
    const auto found = std::partition_point(rows_.begin(), rows_.end(), before);
    return last_ = static_cast<Place>(found - rows_.begin());
}

std::strong_ordering Routes::compare(const Row &row, const IpmibRouteKey &key) const
{
    const auto order = row.destination() <=> destinationOf(key);
    return order != 0 ? order : compareWays(ways_[row.way].route.key, key);
}

Routes::Place Routes::find(const IpmibRouteKey &key) const
{
    const Place place = firstNot([&](const Row &row) { return compare(row, key) < 0; });
    return place != end() && compare(rows_[place], key) == 0 ? place : end();
}

Routes::Place Routes::after(const IpmibRouteKey &key) const
{
    return firstNot([&](const Row &row) { return compare(row, key) <= 0; });
}

Routes::Place Routes::find(const RouteDestination &destination) const
{
    const Place place = firstNot([&](const Row &row) { return row.destination() < destination; });
    return place < rows_.size() && rows_[place].destination() == destination ? place : end();
}

Routes::Place Routes::sibling(Place place) const
{
    const Place next = place + 1;
    return next < rows_.size() && rows_[next].destination() == rows_[place].destination() ? next : end();
}

void Routes::fillRoute(Place place, IpmibRoute &row) const
{
    const Row &from = rows_[place];
    row = ways_[from.way].route;
    row.key.version = from.version;
    row.key.prefix_length = from.length;
    from.prefix.copyTo(row.key.destination);
}

} // namespace ipmib::simulated
