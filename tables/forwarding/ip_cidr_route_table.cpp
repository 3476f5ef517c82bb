// SPDX-License-Identifier: BSD-3-Clause
// ipCidrRouteTable: a row for each next hop of each IPv4 route. Its index knows of no policy but the type of service,
// so rows that share the rest of it have multiples of 256 added there: none is left out.

#include "tables/forwarding/routes.h"

#include <tuple>
#include <vector>

namespace ipmib::tables
{
namespace
{

constexpr host::SubId ipCidrRouteEntry[] = {1, 3, 6, 1, 2, 1, 4, 24, 4, 1};
constexpr std::uint32_t allTypesOfService = 256;

Cell cidrType(std::uint32_t type)
{
    return integer(type == IPMIB_ROUTE_BLACKHOLE ? +IPMIB_ROUTE_REJECT : type);
}

class CidrRows
{
  public:
    struct Row {
        IpmibRoute route;
        std::uint32_t tos; // as the index has it
        Ipv4Octets destination;
        Ipv4Octets mask;
        Ipv4Octets nextHop;
    };
    using Index = std::array<host::SubId, 13>;
    static constexpr host::SubIdRange shape[] = {
        host::anyOctet, host::anyOctet, host::anyOctet, host::anyOctet, host::anyOctet, host::anyOctet, host::anyOctet,
        host::anyOctet, {0, INT32_MAX}, host::anyOctet, host::anyOctet, host::anyOctet, host::anyOctet};

    explicit CidrRows(const IpmibRouteHooks &routes) : routes_(routes) {}

    void start() const { follow(routes_); }
    bool areRead() const { return tables::areRead(routes_); }
    std::span<const host::RowColumn<Row>> columns() const { return list; }
    bool find(const Index &index, Row &row) const
    {
        const std::uint32_t mask = addressAt(index, maskPlace);
        const std::uint32_t length = lengthUpTo(mask);
        if (maskOf(length) != mask || !readPrefix(addressAt(index, 0), length)) {
            return false;
        }
        const auto found = std::ranges::lower_bound(rows_, rankIn(index), {}, rankOf);
        return found != rows_.end() && rankOf(*found) == rankIn(index) && fillFrom(*found, row);
    }
    bool next(const Index *behind, Row &row) const
    {
        IpmibRouteKey from{};
        if (behind != nullptr) {
            const std::uint32_t mask = addressAt(*behind, maskPlace);
            const std::uint32_t length = lengthUpTo(mask);
            if (maskOf(length) == mask && readPrefix(addressAt(*behind, 0), length)) {
                const auto found = std::ranges::upper_bound(rows_, rankIn(*behind), {}, rankOf);
                if (found != rows_.end()) {
                    return fillFrom(*found, row);
                }
            }
            from = tables::behind(ipv4Key(addressAt(*behind, 0), length));
        }
        IpmibRoute first;
        if (routes_.next(&from, &first) != 0 || first.key.version != IPMIB_IPV4) {
            return false;
        }
        readRows(first);
        return fillFrom(rows_.front(), row);
    }
    Index indexOf(const Row &row) const
    {
        Index index{};
        std::ranges::copy(row.destination, index.begin());
        std::ranges::copy(row.mask, index.begin() + maskPlace);
        index[tosPlace] = row.tos;
        std::ranges::copy(row.nextHop, index.begin() + nextHopPlace);
        return index;
    }

  private:
    enum : std::size_t { maskPlace = 4, tosPlace = 8, nextHopPlace = 9 };
    static constexpr std::uint32_t lastProtocol = 16;
    static constexpr host::RowColumn<Row> list[] = {
        {1, [](const Row &row) { return ipAddress(row.destination); }},        // ipCidrRouteDest
        {2, [](const Row &row) { return ipAddress(row.mask); }},               // ipCidrRouteMask
        {3, [](const Row &row) { return integer(row.tos); }},                  // ipCidrRouteTos
        {4, [](const Row &row) { return ipAddress(row.nextHop); }},            // ipCidrRouteNextHop
        {5, [](const Row &row) { return integer(row.route.if_index); }},       // ipCidrRouteIfIndex
        {6, [](const Row &row) { return cidrType(row.route.type); }},          // ipCidrRouteType
        {7, [](const Row &row) { return protocol(row.route, lastProtocol); }}, // ipCidrRouteProto
        {8, [](const Row &row) { return age(row.route); }},                    // ipCidrRouteAge
        {9, [](const Row &) { return objectId(zeroDotZero); }},                // ipCidrRouteInfo
        {10, [](const Row &row) { return integer(row.route.next_hop_as); }},   // ipCidrRouteNextHopAS
        {11,
         [](const Row &row) { return integer(static_cast<std::uint32_t>(row.route.metric)); }}, // ipCidrRouteMetric1
        {12, [](const Row &row) { return noSuchMetric(row.route); }},                           // ipCidrRouteMetric2
        {13, [](const Row &row) { return noSuchMetric(row.route); }},                           // ipCidrRouteMetric3
        {14, [](const Row &row) { return noSuchMetric(row.route); }},                           // ipCidrRouteMetric4
        {15, [](const Row &row) { return noSuchMetric(row.route); }},                           // ipCidrRouteMetric5
        {16, [](const Row &) { return integer(rowActive); }},                                   // ipCidrRouteStatus
    };

    // A route with what its index has behind destination and mask.
    struct Ranked {
        std::uint32_t tos;
        Ipv4Octets nextHop;
        IpmibRoute route;
    };
    using Rank = std::tuple<std::uint32_t, Ipv4Octets>;
    static Rank rankOf(const Ranked &row) { return {row.tos, row.nextHop}; }
    static Rank rankIn(const Index &index) { return {index[tosPlace], octetsOf(addressAt(index, nextHopPlace))}; }

    // Reads all rows with this prefix; false when there is none.
    bool readPrefix(std::uint32_t destination, std::uint32_t length) const
    {
        const IpmibRouteKey key = ipv4Key(destination, length);
        IpmibRoute first;
        if (routes_.find(&key, &first) != 0 && (routes_.next(&key, &first) != 0 || !isSamePrefix(first.key, key))) {
            return false;
        }
        readRows(first);
        return true;
    }

    // The rows with the prefix of this one, which is the first of them.
    void readRows(IpmibRoute route) const
    {
        const IpmibRouteKey prefix = route.key;
        rows_.clear();
        do {
            rows_.push_back({route.tos, ipv4NextHop(route.key), route});
        } while (routes_.next(&route.key, &route) == 0 && isSamePrefix(route.key, prefix));
        if (rows_.size() == 1) {
            return;
        }
        std::ranges::stable_sort(rows_, {}, rankOf);
        std::uint32_t repeated = 0;
        for (std::size_t i = 1; i < rows_.size(); ++i) {
            const bool isSame = rankOf(rows_[i]) == Rank(rows_[i - 1].route.tos, rows_[i - 1].nextHop);
            repeated = isSame ? repeated + 1 : 0;
            rows_[i].tos += repeated * allTypesOfService;
        }
        std::ranges::sort(rows_, {}, rankOf);
    }

    static bool isSamePrefix(const IpmibRouteKey &left, const IpmibRouteKey &right)
    {
        return left.version == right.version && ipv4Destination(left) == ipv4Destination(right) &&
               left.prefix_length == right.prefix_length;
    }

    static bool fillFrom(const Ranked &from, Row &row)
    {
        row.route = from.route;
        row.tos = from.tos;
        row.destination = octetsOf(ipv4Destination(from.route.key));
        row.mask = octetsOf(maskOf(from.route.key.prefix_length));
        row.nextHop = from.nextHop;
        return true;
    }

    const IpmibRouteHooks &routes_;
    mutable std::vector<Ranked> rows_; // of one prefix, in order; keeps its room
};

} // namespace

SourcePointer ipCidrRouteTable(const IpmibRouteHooks &routes)
{
    return std::make_unique<host::RowSource<CidrRows>>(ipCidrRouteEntry, CidrRows(routes));
}

} // namespace ipmib::tables
